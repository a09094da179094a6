#include "aravis/eventpacket.h"

#include "aravis/bigendian.h"

namespace Orlix::Aravis {
namespace {

constexpr std::uint8_t key = 0x42;
constexpr std::uint8_t acknowledgeFlag = 0x01;
constexpr std::uint8_t longIdFlag = 0x10;
constexpr std::uint64_t eventCommand = 0x00C0;
constexpr std::uint64_t eventDataCommand = 0x00C2;

constexpr std::size_t shortEvent = 16;  // padding, id, stream channel, block id, time stamp
constexpr std::size_t longEvent = 24;   // the same with a block id of 64 bits behind two bytes
constexpr std::size_t timestampSize = 8;

// Data of the old form are one event up to the end of the packet.
std::size_t sizeOf(const EventHeader& header, std::span<const std::uint8_t> rest) {
    const std::size_t told = header.hasLongIds ? GetNumber(rest.data(), 2) : 0;
    if (told != 0) {
        return told;
    }
    return header.hasData ? rest.size() : (header.hasLongIds ? longEvent : shortEvent);
}

}  // namespace

std::optional<EventHeader> ReadEventHeader(std::span<const std::uint8_t> packet) {
    if (packet.size() < eventHeaderSize || packet[0] != key) {
        return std::nullopt;
    }
    const std::uint64_t command = GetNumber(packet.data() + 2, 2);
    EventHeader header;
    header.hasData = command == eventDataCommand;
    header.wantsAnswer = (packet[1] & acknowledgeFlag) != 0;
    header.hasLongIds = (packet[1] & longIdFlag) != 0;
    header.length = GetNumber(packet.data() + 4, 2);
    header.requestId = static_cast<std::uint16_t>(GetNumber(packet.data() + 6, 2));
    if ((command != eventCommand && !header.hasData) ||
        header.length > packet.size() - eventHeaderSize) {
        return std::nullopt;
    }
    return header;
}

EventList ReadEvents(const EventHeader& header, std::span<const std::uint8_t> packet) {
    const std::size_t smallest = header.hasLongIds ? longEvent : shortEvent;
    EventList list;
    std::span<const std::uint8_t> rest = packet.subspan(eventHeaderSize, header.length);
    while (!rest.empty()) {
        const std::size_t size = rest.size() < smallest ? 0 : sizeOf(header, rest);
        if (size < smallest || size > rest.size()) {
            list.isWhole = false;
            break;
        }
        Transport::EventMessage event;
        event.eventId = static_cast<std::uint16_t>(GetNumber(rest.data() + 2, 2));
        event.timestamp = GetNumber(rest.data() + smallest - timestampSize, timestampSize);
        event.data = rest.data();
        event.size = size;
        list.events.push_back(event);
        rest = rest.subspan(size);
    }
    return list;
}

std::array<std::uint8_t, eventHeaderSize> MakeEventAnswer(const EventHeader& header) {
    std::array<std::uint8_t, eventHeaderSize> answer{};
    PutNumber(answer.data() + 2, 2, (header.hasData ? eventDataCommand : eventCommand) + 1);
    PutNumber(answer.data() + 6, 2, header.requestId);
    return answer;
}

}  // namespace Orlix::Aravis
