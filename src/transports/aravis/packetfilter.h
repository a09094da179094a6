// Which packets of a stream Aravis doesn't get at first hand, as a program for the kernel.
#pragma once

#include <linux/filter.h>

#include <array>
#include <cstdint>
#include <vector>

namespace Orlix::Aravis {

// The places of a GVSP packet that are looked at; numbers have their highest byte first.
namespace Gvsp {
inline constexpr std::size_t shortHeader = 8;
inline constexpr std::size_t longHeader = 20;
inline constexpr std::size_t formatPlace = 4;
inline constexpr std::uint8_t formatMask = 0x0F;
inline constexpr std::uint8_t longIdsBit = 0x80;
inline constexpr std::uint8_t leader = 1;
inline constexpr std::uint8_t trailer = 2;
inline constexpr std::uint8_t payload = 3;
inline constexpr std::uint16_t errorBit = 0x8000;
// What says that a packet can't be sent again: at all, yet, with those before, any more.
inline constexpr std::array<std::uint16_t, 4> unavailable = {0x800C, 0x8010, 0x8011, 0x8012};
// The status of a packet that was looked at already; no device sends it.
inline constexpr std::uint16_t seen = 0x0001;
}  // namespace Gvsp

// The packets of a frame that fills its buffer.
struct FrameShape {
    FrameShape(std::uint64_t payloadSize, std::uint64_t packetSize, std::size_t header);

    std::uint32_t count = 0;  // of payload; the trailer's number is one more
    std::uint32_t last = 0;   // bytes of payload in the last of them
};

struct StreamShape {
    StreamShape(std::uint64_t payloadSize, std::uint64_t packetSize)
        : ofShortIds(payloadSize, packetSize, Gvsp::shortHeader),
          ofLongIds(payloadSize, packetSize, Gvsp::longHeader) {}

    FrameShape ofShortIds;
    FrameShape ofLongIds;
};

// Returns 1 for trailers that the device marks as bad and for what has no room in the buffer, 0 for
// all others; while no buffer is queued 1 also for what tells that there is a frame.
enum class Buffers : std::uint8_t { Queued, None };
[[nodiscard]] std::vector<sock_filter> MakePacketFilter(const StreamShape& shape, Buffers buffers);

}  // namespace Orlix::Aravis
