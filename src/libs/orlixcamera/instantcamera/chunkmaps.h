// Node maps for the chunks of frames, all of one device, kept for reuse: a frame costs no parsing
// and, once each buffer of a set has brought one with chunks, no making of a map.
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "genapi/chunkadapter.h"
#include "genapi/nodemapfactory.h"
#include "orlixcamera/transport/transport.h"

namespace Orlix::Detail {

// One map with the means to give it the chunks of a frame. One thread at a time.
class ChunkMap {
public:
    explicit ChunkMap(GenApi::CNodeMapRef map);

    [[nodiscard]] GenApi::INodeMap& Get() const { return *map_; }
    // The frame's memory must stay until Detach.
    void Attach(const Transport::StreamBuffer& frame);
    void Detach();

private:
    const GenApi::CNodeMapRef map_;
    std::unique_ptr<GenApi::CChunkAdapter> adapter_;  // of the byte order met last
    Transport::ChunkByteOrder order_ = Transport::ChunkByteOrder::BigEndian;
};

// Whether the frame's bytes can be taken apart into chunks.
[[nodiscard]] bool HasChunkLayout(const Transport::StreamBuffer& frame);

// Any thread may call.
class ChunkMaps {
public:
    explicit ChunkMaps(std::shared_ptr<const std::string> description);

    [[nodiscard]] std::unique_ptr<ChunkMap> Take();
    void Give(std::unique_ptr<ChunkMap> map) noexcept;
    // A map of the same description for another use.
    [[nodiscard]] GenApi::CNodeMapRef CreateNodeMap(const char* name);

private:
    std::mutex mutex_;
    GenApi::CNodeMapFactory factory_;
    std::vector<std::unique_ptr<ChunkMap>> free_;
};

}  // namespace Orlix::Detail
