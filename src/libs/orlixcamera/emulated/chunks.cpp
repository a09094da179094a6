#include "orlixcamera/emulated/chunks.h"

#include <algorithm>
#include <cstring>

namespace Orlix::Emulated {
namespace {

constexpr std::size_t trailerSize = 8;
constexpr std::size_t sceneNameSize = 64;
constexpr std::size_t unknownSize = 12;
constexpr std::uint32_t unknownId = 0xDEAD0001;

constexpr std::array<std::size_t, chunkCount> chunkSizes = {0, 8, 8, 8, 32, 8, sceneNameSize, 4};

bool isEnabled(const ChunkSettings& settings, Chunk chunk) {
    return (settings.enabled >> static_cast<unsigned>(chunk) & 1U) != 0;
}

void writeNumber(std::uint8_t* out, std::uint32_t value, Transport::ChunkByteOrder order) {
    constexpr std::size_t size = sizeof value;
    for (std::size_t index = 0; index < size; ++index) {
        const bool big = order == Transport::ChunkByteOrder::BigEndian;
        out[index] = static_cast<std::uint8_t>(value >> 8 * (big ? size - 1 - index : index));
    }
}

std::uint8_t* writeTrailer(std::uint8_t* out, std::uint32_t id, std::size_t size,
                           Transport::ChunkByteOrder order) {
    writeNumber(out, id, order);
    writeNumber(out + sizeof id, static_cast<std::uint32_t>(size), order);
    return out + trailerSize;
}

// The machine has its lowest byte first, too.
template <typename Value>
void put(std::uint8_t* out, const Value& value) {
    std::memcpy(out, &value, sizeof value);
}

void writeContent(Chunk chunk, const ChunkValues& values, const std::string& sceneName,
                  std::uint8_t* out) {
    switch (chunk) {
        case Chunk::Image:
            break;
        case Chunk::FrameId:
            put(out, values.frameId);
            break;
        case Chunk::Timestamp:
            put(out, values.timestamp);
            break;
        case Chunk::ExposureTime:
            put(out, values.exposureMicroseconds);
            break;
        case Chunk::Gain:
            put(out, values.gainDecibels);
            break;
        case Chunk::LineStatusAll:
            put(out, values.lineStatus);
            break;
        case Chunk::SceneName:
            std::memset(out, 0, sceneNameSize);
            std::memcpy(out, sceneName.data(), std::min(sceneName.size(), sceneNameSize));
            break;
        case Chunk::Triggered:
            put(out, std::uint32_t{values.triggered ? 1U : 0U});
            break;
    }
}

}  // namespace

std::size_t GetChunkBytes(const ChunkSettings& settings) noexcept {
    std::size_t bytes = 0;
    for (std::size_t chunk = 0; settings.active && chunk < chunkCount; ++chunk) {
        bytes +=
            isEnabled(settings, static_cast<Chunk>(chunk)) ? chunkSizes[chunk] + trailerSize : 0;
    }
    return bytes + (settings.active && settings.unknown ? unknownSize + trailerSize : 0);
}

void WriteChunks(const ChunkSettings& settings, const ChunkValues& values,
                 const std::string& sceneName, std::uint8_t* buffer,
                 std::size_t pictureSize) noexcept {
    std::uint8_t* out = buffer + pictureSize;
    for (std::size_t index = 0; settings.active && index < chunkCount; ++index) {
        const auto chunk = static_cast<Chunk>(index);
        if (!isEnabled(settings, chunk)) {
            continue;
        }
        writeContent(chunk, values, sceneName, out);
        out += chunkSizes[index];
        const std::size_t size = chunk == Chunk::Image ? pictureSize : chunkSizes[index];
        out = writeTrailer(out, ChunkIdOf(chunk), size, settings.byteOrder);
    }
    if (settings.active && settings.unknown) {
        std::memset(out, 0xEE, unknownSize);
        writeTrailer(out + unknownSize, unknownId, unknownSize, settings.byteOrder);
    }
}

void CutChunk(const ChunkSettings& settings, std::uint8_t* buffer, std::size_t size) noexcept {
    constexpr std::uint32_t tooMuch = 0x7FFFFFFF;
    constexpr std::size_t lengthSize = sizeof tooMuch;
    if (settings.active && size >= trailerSize) {
        writeNumber(buffer + size - lengthSize, tooMuch, settings.byteOrder);
    }
}

}  // namespace Orlix::Emulated
