// Any datagram on the message channel of a real camera. Events lie in it one behind the other, from
// its header on, and a message that is whole has nothing else.
#include "aravis/eventpacket.h"

namespace {

using namespace Orlix::Aravis;

void require(bool holds) {
    if (!holds) {
        __builtin_trap();
    }
}

void check(const EventHeader& header, std::span<const std::uint8_t> packet) {
    constexpr std::size_t smallest = 16;
    const EventList list = ReadEvents(header, packet);
    const std::uint8_t* place = packet.data() + eventHeaderSize;
    for (const Orlix::Transport::EventMessage& event : list.events) {
        require(event.data == place && event.size >= smallest);
        place += event.size;
    }
    const auto read = static_cast<std::size_t>(place - packet.data()) - eventHeaderSize;
    require(read <= header.length && (read == header.length) == list.isWhole);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::span<const std::uint8_t> packet(data, size);
    if (const auto header = ReadEventHeader(packet)) {
        require(header->length <= size - eventHeaderSize);
        require(MakeEventAnswer(*header)[6] == packet[6]);
        check(*header, packet);
    }
    return 0;
}
