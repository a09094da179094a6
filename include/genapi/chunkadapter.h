// CChunkAdapter, which finds the chunks in the buffer of a frame and gives each to its port of a
// node map, so that the features of the chunks tell about that frame. Open chunkport.h for what a
// port makes of its chunk.
#pragma once

#include <memory>
#include <span>

#include "genapi/chunkport.h"
#include "genapi/nodemapref.h"

namespace GenApi {

// All counts of one AttachBuffer.
struct AttachStatistics_t {
    int NumChunkPorts = 0;
    int NumChunks = 0;
    int NumAttachedChunks = 0;
};

// One chunk of a buffer whose layout the caller knows; offset and length in bytes.
struct SingleChunkData_t {
    std::uint64_t ChunkID = 0;
    std::int64_t ChunkOffset = 0;
    std::int64_t ChunkLength = 0;
};

// Base of the adapters, one for each layout. Keeps its map alive. One thread at a time; readers of
// the map may run at the same time and see one frame or the other, never both, since a change takes
// the map's lock once. Once warm, nothing is allocated for a frame.
class GENAPI_API CChunkAdapter {
public:
    CChunkAdapter(const CChunkAdapter&) = delete;
    CChunkAdapter& operator=(const CChunkAdapter&) = delete;
    virtual ~CChunkAdapter();

    // Connects a port of its own to each chunk port of the map; null detaches only.
    void AttachNodeMap(INodeMap* pNodeMap);
    // Disconnects them.
    void DetachNodeMap();

    // Whether AttachBuffer would take the buffer. Needs no map.
    [[nodiscard]] bool CheckBufferLayout(const std::uint8_t* pBuffer,
                                         std::int64_t BufferLength) const;
    // Gives each chunk to the ports of its id and invalidates their nodes; ports whose chunk is
    // missing lose theirs. Of two chunks with one id the later one counts. A buffer that can not be
    // taken apart is a RuntimeException that tells where it is wrong, and no chunk is attached
    // then. The buffer must stay until DetachBuffer or the next AttachBuffer.
    void AttachBuffer(std::uint8_t* pBuffer, std::int64_t BufferLength,
                      AttachStatistics_t* pAttachStatistics = nullptr);
    // No chunk is available from now on, but for those of which the description asks to keep a copy
    // (CacheChunkData): these stay until the next AttachBuffer.
    void DetachBuffer();
    // The same layout in another buffer.
    void UpdateBuffer(std::uint8_t* pBuffer);

protected:
    CChunkAdapter();
    // Receives the chunks of a buffer, last to first.
    class ChunkSink {
    public:
        virtual void take(const SingleChunkData_t& chunk) = 0;

    protected:
        ~ChunkSink() = default;
    };
    // Tells all chunks of a buffer; false where it is wrong, with the offset of the wrong place.
    virtual bool walk(const std::uint8_t* buffer, std::int64_t length, ChunkSink& sink,
                      std::int64_t& wrongAt) const = 0;

private:
    struct Slot;
    class Matcher;

    void loseAll();

    CNodeMapRef map_;
    std::unique_ptr<Slot[]> slots_;
    std::size_t slotCount_ = 0;
};

// Chunks that end with a trailer of two numbers of 32 bits, id and length, each chunk directly
// behind the one before it: the last trailer is at the end of the buffer.
class GENAPI_API CChunkAdapterTrailer : public CChunkAdapter {
protected:
    explicit CChunkAdapterTrailer(EEndianess order) : order_(order) {}
    bool walk(const std::uint8_t* buffer, std::int64_t length, ChunkSink& sink,
              std::int64_t& wrongAt) const override;

private:
    EEndianess order_;
};

// The payload of GigE Vision: big endian.
class GENAPI_API CChunkAdapterGEV final : public CChunkAdapterTrailer {
public:
    explicit CChunkAdapterGEV(INodeMap* pNodeMap = nullptr);
};

// The payload of USB3 Vision: little endian.
class GENAPI_API CChunkAdapterU3V final : public CChunkAdapterTrailer {
public:
    explicit CChunkAdapterU3V(INodeMap* pNodeMap = nullptr);
};

// A layout that the caller tells, as a transport layer reports it.
class GENAPI_API CChunkAdapterGeneric final : public CChunkAdapter {
public:
    explicit CChunkAdapterGeneric(INodeMap* pNodeMap = nullptr);

    using CChunkAdapter::AttachBuffer;
    // As above, with the chunks as told; one beyond the buffer is a RuntimeException.
    void AttachBuffer(std::uint8_t* pBuffer, std::int64_t BufferLength,
                      const SingleChunkData_t* pChunkData, std::int64_t NumChunks,
                      AttachStatistics_t* pAttachStatistics = nullptr);

protected:
    bool walk(const std::uint8_t* buffer, std::int64_t length, ChunkSink& sink,
              std::int64_t& wrongAt) const override;

private:
    std::span<const SingleChunkData_t> chunks_;
};

}  // namespace GenApi
