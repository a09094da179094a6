// The events of the emulated camera and how their messages are laid out. Plain values.
//
// A message has two numbers of 64 bits, lowest byte first, at the addresses of its event port:
//     0  time, in ticks of the device's clock (nanoseconds)
//     8  number of the frame; a test event, and one about events, has none
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace Orlix::Emulated {

// In the order of the entries of EventSelector.
enum class EventKind : std::uint8_t {
    FrameStart,
    ExposureEnd,
    FrameEnd,
    Overrun,       // a frame found no buffer at the receiver
    EventOverrun,  // events came faster than they were taken
    Test,
};

struct Event {
    EventKind kind = EventKind::Test;
    std::uint64_t timestamp = 0;
    std::uint64_t frameId = 0;
};

// The EventID of its port in the description.
[[nodiscard]] constexpr std::uint16_t EventIdOf(EventKind kind) noexcept {
    constexpr std::uint16_t first = 0x9001;
    return static_cast<std::uint16_t>(first + static_cast<std::uint16_t>(kind));
}

// The bytes of a message, as the description addresses them.
struct EventBytes {
    std::array<std::uint8_t, 16> data{};
    std::size_t size = 0;
};

[[nodiscard]] inline EventBytes EncodeEvent(const Event& event) noexcept {
    constexpr std::size_t numberSize = 8;
    const bool hasFrame = event.kind < EventKind::EventOverrun;
    EventBytes bytes;
    bytes.size = hasFrame ? 2 * numberSize : numberSize;
    for (std::size_t index = 0; index < numberSize; ++index) {
        bytes.data[index] = static_cast<std::uint8_t>(event.timestamp >> 8 * index);
        bytes.data[numberSize + index] = static_cast<std::uint8_t>(event.frameId >> 8 * index);
    }
    return bytes;
}

}  // namespace Orlix::Emulated
