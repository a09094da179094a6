#include "orlixcamera/instantcamera/chunkmaps.h"

#include <utility>

namespace Orlix::Detail {

using Transport::ChunkByteOrder;
using Transport::StreamBuffer;

ChunkMap::ChunkMap(GenApi::CNodeMapRef map) : map_(std::move(map)) {}

void ChunkMap::Attach(const StreamBuffer& frame) {
    if (adapter_ == nullptr || order_ != frame.chunkByteOrder) {
        adapter_.reset();
        order_ = frame.chunkByteOrder;
        if (order_ == ChunkByteOrder::BigEndian) {
            adapter_ = std::make_unique<GenApi::CChunkAdapterGEV>(map_._Ptr());
        } else {
            adapter_ = std::make_unique<GenApi::CChunkAdapterU3V>(map_._Ptr());
        }
    }
    adapter_->AttachBuffer(static_cast<std::uint8_t*>(frame.data),
                           static_cast<std::int64_t>(frame.filled));
}

void ChunkMap::Detach() {
    if (adapter_ != nullptr) {
        adapter_->DetachBuffer();
    }
}

bool HasChunkLayout(const StreamBuffer& frame) {
    static const GenApi::CChunkAdapterGEV bigEndian;
    static const GenApi::CChunkAdapterU3V littleEndian;
    const auto* const bytes = static_cast<const std::uint8_t*>(frame.data);
    const auto length = static_cast<std::int64_t>(frame.filled);
    return frame.chunkByteOrder == ChunkByteOrder::BigEndian
               ? bigEndian.CheckBufferLayout(bytes, length)
               : littleEndian.CheckBufferLayout(bytes, length);
}

ChunkMaps::ChunkMaps(std::shared_ptr<const std::string> description)
    : factory_(
          description->starts_with("PK") ? GenApi::ContentType_ZippedXml : GenApi::ContentType_Xml,
          description->data(), description->size()) {}

std::unique_ptr<ChunkMap> ChunkMaps::Take() {
    {
        const std::scoped_lock lock(mutex_);
        if (!free_.empty()) {
            std::unique_ptr<ChunkMap> map = std::move(free_.back());
            free_.pop_back();
            return map;
        }
    }
    return std::make_unique<ChunkMap>(CreateNodeMap("ChunkData"));
}

void ChunkMaps::Give(std::unique_ptr<ChunkMap> map) noexcept {
    try {
        const std::scoped_lock lock(mutex_);
        free_.push_back(std::move(map));
    } catch (...) {
        map.reset();  // no memory to keep it
    }
}

GenApi::CNodeMapRef ChunkMaps::CreateNodeMap(const char* name) {
    const std::scoped_lock lock(mutex_);
    return factory_.CreateNodeMap(name);
}

}  // namespace Orlix::Detail
