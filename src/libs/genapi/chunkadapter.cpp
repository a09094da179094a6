#include "genapi/chunkadapter.h"

#include <string>

#include "genapi/engineerror.h"
#include "genapi/iportconstruct.h"
#include "genapi/nodemap.h"

namespace GenApi {

namespace {

using Detail::NodeMap;

constexpr std::int64_t trailerLength = 8;

std::uint32_t number(const std::uint8_t* bytes, EEndianess order) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < sizeof value; ++i) {
        value = value << 8 | bytes[order == BigEndian ? i : sizeof value - 1 - i];
    }
    return value;
}

}  // namespace

// One chunk port of the map, and what the buffer at hand has for it.
struct CChunkAdapter::Slot {
    IPortConstruct* node = nullptr;
    CChunkPort port;
    std::uint64_t id = 0;
    bool hasId = false;
    bool found = false;
    SingleChunkData_t chunk;
};

// Remembers for each port the first chunk told, which is the last in the buffer.
class CChunkAdapter::Matcher final : public ChunkSink {
public:
    explicit Matcher(std::span<Slot> slots) : slots_(slots) {
        statistics.NumChunkPorts = static_cast<int>(slots.size());
    }
    void take(const SingleChunkData_t& chunk) override {
        ++statistics.NumChunks;
        bool wanted = false;
        for (Slot& slot : slots_) {
            if (slot.hasId && slot.id == chunk.ChunkID && !slot.found) {
                slot.found = wanted = true;
                slot.chunk = chunk;
            }
        }
        statistics.NumAttachedChunks += wanted ? 1 : 0;
    }

    AttachStatistics_t statistics;

private:
    std::span<Slot> slots_;
};

CChunkAdapter::CChunkAdapter() = default;

CChunkAdapter::~CChunkAdapter() {
    DetachNodeMap();
}

void CChunkAdapter::AttachNodeMap(INodeMap* pNodeMap) {
    DetachNodeMap();
    if (NodeMap* const map = NodeMap::share(pNodeMap, map_)) {
        const NodeMap::Call call(*map);
        const auto& ports = map->description().portNodes;
        slots_ = std::make_unique<Slot[]>(ports.size());
        for (const Detail::NodeId port : ports) {
            auto* node = dynamic_cast<IPortConstruct*>(map->nodeOf(port));
            if (node->IsChunkPort()) {
                Slot& slot = slots_[slotCount_++];
                slot.node = node;
                node->SetPortImpl(&slot.port);
            }
        }
    }
}

void CChunkAdapter::DetachNodeMap() {
    // The ports disconnect themselves.
    slots_.reset();
    slotCount_ = 0;
    map_._Destroy();
}

void CChunkAdapter::loseAll() {
    for (std::size_t i = 0; i < slotCount_; ++i) {
        slots_[i].port.DetachChunk();
    }
}

void CChunkAdapter::AttachBuffer(std::uint8_t* pBuffer, std::int64_t BufferLength,
                                 AttachStatistics_t* pAttachStatistics) {
    if (pBuffer == nullptr || BufferLength < 0) {
        GENAPI_THROW(InvalidArgumentException, "Chunk adapter: no buffer passed.");
    }
    if (!map_) {
        GENAPI_THROW(RuntimeException, "Chunk adapter: no node map is attached.");
    }
    // Everything is one change of the map.
    const NodeMap::Call call(NodeMap::behind(map_));
    const std::span slots(slots_.get(), slotCount_);
    for (Slot& slot : slots) {
        slot.found = false;
        slot.hasId = slot.node->GetChunkID(slot.id);
    }
    Matcher matcher(slots);
    std::int64_t wrongAt = 0;
    if (!walk(pBuffer, BufferLength, matcher, wrongAt)) {
        loseAll();
        GENAPI_THROW(RuntimeException,
                     "Chunk adapter: the buffer of " + std::to_string(BufferLength) +
                         " bytes is no sequence of chunks, it is wrong at offset " +
                         std::to_string(wrongAt) + ".");
    }
    for (Slot& slot : slots) {
        if (slot.found) {
            slot.port.AttachChunk(pBuffer, slot.chunk.ChunkOffset, slot.chunk.ChunkLength);
        } else {
            slot.port.DetachChunk();
        }
    }
    if (pAttachStatistics != nullptr) {
        *pAttachStatistics = matcher.statistics;
    }
}

void CChunkAdapter::DetachBuffer() {
    if (map_) {
        const NodeMap::Call call(NodeMap::behind(map_));
        for (std::size_t i = 0; i < slotCount_; ++i) {
            slots_[i].port.ReleaseBuffer();
        }
    }
}

void CChunkAdapter::UpdateBuffer(std::uint8_t* pBuffer) {
    if (map_) {
        const NodeMap::Call call(NodeMap::behind(map_));
        for (std::size_t i = 0; i < slotCount_; ++i) {
            slots_[i].port.UpdateBuffer(pBuffer);
        }
    }
}

bool CChunkAdapter::CheckBufferLayout(const std::uint8_t* pBuffer,
                                      std::int64_t BufferLength) const {
    struct Deaf final : ChunkSink {
        void take(const SingleChunkData_t&) override {}
    } deaf;
    std::int64_t wrongAt = 0;
    return pBuffer != nullptr && BufferLength >= 0 && walk(pBuffer, BufferLength, deaf, wrongAt);
}

// ---- Layouts.

bool CChunkAdapterTrailer::walk(const std::uint8_t* buffer, std::int64_t length, ChunkSink& sink,
                                std::int64_t& wrongAt) const {
    for (std::int64_t end = length; end > 0;) {
        wrongAt = end < trailerLength ? 0 : end - trailerLength;
        if (end < trailerLength) {
            return false;
        }
        const std::uint8_t* trailer = buffer + wrongAt;
        const std::int64_t size = number(trailer + 4, order_);
        if (size > wrongAt) {
            return false;
        }
        end = wrongAt - size;
        sink.take({number(trailer, order_), end, size});
    }
    return true;
}

bool CChunkAdapterGeneric::walk(const std::uint8_t*, std::int64_t length, ChunkSink& sink,
                                std::int64_t& wrongAt) const {
    for (std::size_t i = chunks_.size(); i > 0; --i) {
        const SingleChunkData_t& chunk = chunks_[i - 1];
        wrongAt = chunk.ChunkOffset;
        if (chunk.ChunkOffset < 0 || chunk.ChunkOffset > length || chunk.ChunkLength < 0 ||
            chunk.ChunkLength > length - chunk.ChunkOffset) {
            return false;
        }
        sink.take(chunk);
    }
    return true;
}

void CChunkAdapterGeneric::AttachBuffer(std::uint8_t* pBuffer, std::int64_t BufferLength,
                                        const SingleChunkData_t* pChunkData, std::int64_t NumChunks,
                                        AttachStatistics_t* pAttachStatistics) {
    if (NumChunks < 0 || (pChunkData == nullptr && NumChunks != 0)) {
        GENAPI_THROW(InvalidArgumentException, "Chunk adapter: no list of chunks passed.");
    }
    struct Telling {
        CChunkAdapterGeneric& self;
        ~Telling() { self.chunks_ = {}; }
    } const telling{*this};
    chunks_ = {pChunkData, static_cast<std::size_t>(NumChunks)};
    AttachBuffer(pBuffer, BufferLength, pAttachStatistics);
}

CChunkAdapterGEV::CChunkAdapterGEV(INodeMap* pNodeMap) : CChunkAdapterTrailer(BigEndian) {
    AttachNodeMap(pNodeMap);
}

CChunkAdapterU3V::CChunkAdapterU3V(INodeMap* pNodeMap) : CChunkAdapterTrailer(LittleEndian) {
    AttachNodeMap(pNodeMap);
}

CChunkAdapterGeneric::CChunkAdapterGeneric(INodeMap* pNodeMap) {
    AttachNodeMap(pNodeMap);
}

}  // namespace GenApi
