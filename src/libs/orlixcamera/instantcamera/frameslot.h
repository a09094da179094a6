// One buffer of a stream with all that belongs to it: the memory, the result that shows it, the
// place for the result's control block, and a chunk map. A frame allocates nothing.
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <mutex>

#include "orlixcamera/grabresultptr.h"
#include "orlixcamera/instantcamera/chunkmaps.h"
#include "orlixcamera/transport/transport.h"

namespace Orlix::Detail {

class BufferSet;

// What the camera adds to a frame when it hands it over.
struct FrameNumbers {
    std::uint64_t run = 0;
    std::uint64_t imageNumber = 0;
    std::size_t skipped = 0;
};

// What frames show by the settings of the camera; undefined where these tell nothing.
struct FrameGeometry {
    EPixelType pixelType = PixelType_Undefined;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t offsetX = 0;
    std::uint32_t offsetY = 0;
};

// Belongs to a BufferSet, which says who may touch it: the stream, one thread of the camera, or the
// holders of the result.
class FrameSlot {
public:
    FrameSlot(std::size_t capacity, std::shared_ptr<ChunkMaps> chunkMaps);
    ~FrameSlot();
    FrameSlot(const FrameSlot&) = delete;
    FrameSlot& operator=(const FrameSlot&) = delete;

    [[nodiscard]] static FrameSlot& Of(Transport::StreamBuffer& buffer) {
        return *static_cast<FrameSlot*>(buffer.user);
    }

    [[nodiscard]] static const FrameSlot& Of(const CGrabResultData& result) { return result.slot_; }

    Transport::StreamBuffer buffer;

    // Checks what the stream has said of the frame against what is in the buffer; a frame that
    // doesn't hold what it says failed, whatever the stream made of it.
    void Examine();
    // Of a frame that came in part, and of which the stream doesn't know what it shows.
    void Assume(const FrameGeometry& geometry) noexcept;
    // The result; when its last holder lets go, the slot goes back to the set.
    [[nodiscard]] CGrabResultPtr HandOut(std::shared_ptr<BufferSet> set, FrameNumbers numbers);

    [[nodiscard]] const FrameNumbers& GetNumbers() const noexcept { return numbers_; }
    [[nodiscard]] bool HasChunks() const noexcept { return hasChunks_; }
    [[nodiscard]] GenApi::INodeMap& GetChunkMap();

private:
    template <class T>
    struct ControlBlockAllocator;

    void giveBack() noexcept;
    void fail(Transport::FrameFate fate, std::string why);

    const std::shared_ptr<void> memory_;
    const std::shared_ptr<ChunkMaps> chunkMaps_;
    CGrabResultData result_{*this};
    FrameNumbers numbers_;
    bool hasChunks_ = false;

    std::mutex chunkMutex_;  // several holders may ask for the map
    std::unique_ptr<ChunkMap> chunkMap_;
    bool chunksAttached_ = false;

    std::shared_ptr<BufferSet> set_;  // while the result has holders
    alignas(std::max_align_t) std::array<std::byte, 64> controlBlock_;
};

}  // namespace Orlix::Detail
