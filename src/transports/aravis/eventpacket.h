// The packets of GigE Vision's message channel. Plain functions over bytes that come from a
// network: whatever they hold, nothing beyond them is read.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "orlixcamera/transport/transport.h"

namespace Orlix::Aravis {

inline constexpr std::size_t eventHeaderSize = 8;

// What is in front of the events of a packet.
struct EventHeader {
    std::uint16_t requestId = 0;
    bool wantsAnswer = false;
    bool hasData = false;     // EVENTDATA_CMD
    bool hasLongIds = false;  // 64-bit block ids, and a size in front of each event
    std::size_t length = 0;   // of the events
};

// None for a packet that is no message of events, or that is cut off.
[[nodiscard]] std::optional<EventHeader> ReadEventHeader(std::span<const std::uint8_t> packet);

// The events of such a packet. Data begin at the event's own first byte, its size or padding, since
// that is address 0 of an event port in descriptions of GigE Vision. Those behind a damaged one are
// left out; then `isWhole` is false.
struct EventList {
    std::vector<Transport::EventMessage> events;
    bool isWhole = true;
};
[[nodiscard]] EventList ReadEvents(const EventHeader& header, std::span<const std::uint8_t> packet);

[[nodiscard]] std::array<std::uint8_t, eventHeaderSize> MakeEventAnswer(const EventHeader& header);

}  // namespace Orlix::Aravis
