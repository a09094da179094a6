// The chunks that an emulated camera puts behind the picture of a frame. The layout is that of
// trailers: each chunk is followed by its id and its length, two numbers of 32 bits, and the
// picture is the first chunk. Cameras differ in the byte order of these two: the adapter for GigE
// Vision parses the one kind, that for USB3 Vision the other. Numbers within chunks have their
// lowest byte first in all cameras.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "orlixcamera/api.h"
#include "orlixcamera/transport/transport.h"

namespace Orlix::Emulated {

// In the order of the entries of ChunkSelector, and of the chunks in a frame.
enum class Chunk : std::uint8_t {
    Image,
    FrameId,
    Timestamp,
    ExposureTime,
    Gain,  // of all, red, green and blue
    LineStatusAll,
    SceneName,
    Triggered,
};
inline constexpr std::size_t chunkCount = 8;

// The ChunkID of its port in the description; that of the picture has no port.
[[nodiscard]] constexpr std::uint32_t ChunkIdOf(Chunk chunk) noexcept {
    constexpr std::uint32_t first = 0x00010000;
    return first + static_cast<std::uint32_t>(chunk);
}

struct ChunkSettings {
    bool active = false;
    std::uint32_t enabled = 0;  // a bit for each chunk, none if not active
    bool unknown = false;       // one more, that no description knows
    Transport::ChunkByteOrder byteOrder = Transport::ChunkByteOrder::BigEndian;
};

// What the chunks of one frame tell.
struct ChunkValues {
    std::uint64_t frameId = 0;
    std::uint64_t timestamp = 0;
    double exposureMicroseconds = 0;
    std::array<double, 4> gainDecibels{};
    std::uint64_t lineStatus = 0;
    bool triggered = false;
};

// The bytes behind the picture, with its own trailer; 0 if the chunk mode is off.
[[nodiscard]] ORLIXCAMERA_API std::size_t GetChunkBytes(const ChunkSettings& settings) noexcept;

// Writes them behind the `pictureSize` bytes at `buffer`. A long scene name is cut.
ORLIXCAMERA_API void WriteChunks(const ChunkSettings& settings, const ChunkValues& values,
                                 const std::string& sceneName, std::uint8_t* buffer,
                                 std::size_t pictureSize) noexcept;

// Damages the chunks of a frame of `size` bytes: the last one says that it began before the frame.
ORLIXCAMERA_API void CutChunk(const ChunkSettings& settings, std::uint8_t* buffer,
                              std::size_t size) noexcept;

}  // namespace Orlix::Emulated
