#include "aravis/eventpacket.h"

#include <gtest/gtest.h>

#include "aravis/bigendian.h"

namespace Orlix::Aravis {
namespace {

using Bytes = std::vector<std::uint8_t>;

void append(Bytes& bytes, std::size_t count, std::uint64_t value) {
    bytes.resize(bytes.size() + count);
    PutNumber(bytes.data() + bytes.size() - count, count, value);
}

Bytes makePacket(std::uint8_t flags, std::uint16_t command, std::uint16_t request,
                 const Bytes& events) {
    Bytes packet = {0x42, flags};
    append(packet, 2, command);
    append(packet, 2, events.size());
    append(packet, 2, request);
    packet.insert(packet.end(), events.begin(), events.end());
    return packet;
}

void appendShortEvent(Bytes& bytes, std::uint16_t id, std::uint64_t timestamp) {
    append(bytes, 2, 0);
    append(bytes, 2, id);
    append(bytes, 2, 0xFFFF);
    append(bytes, 2, 7);
    append(bytes, 8, timestamp);
}

TEST(EventPacket, HasSeveralEvents) {
    Bytes events;
    appendShortEvent(events, 0x9001, 11);
    appendShortEvent(events, 0x9002, 22);
    const Bytes packet = makePacket(0x01, 0x00C0, 5, events);
    const auto header = ReadEventHeader(packet);
    ASSERT_TRUE(header);
    EXPECT_TRUE(header->wantsAnswer);
    EXPECT_EQ(header->requestId, 5);
    const EventList list = ReadEvents(*header, packet);
    EXPECT_TRUE(list.isWhole);
    ASSERT_EQ(list.events.size(), 2U);
    EXPECT_EQ(list.events[0].eventId, 0x9001);
    EXPECT_EQ(list.events[0].timestamp, 11U);
    EXPECT_EQ(list.events[0].size, 16U);
    EXPECT_EQ(list.events[1].eventId, 0x9002);
    EXPECT_EQ(list.events[1].timestamp, 22U);
    EXPECT_EQ(list.events[1].data, packet.data() + 24);
}

TEST(EventPacket, OldEventDataReachToTheEndOfThePacket) {
    Bytes events;
    appendShortEvent(events, 0x9003, 33);
    append(events, 4, 0xABCD);
    const Bytes packet = makePacket(0x00, 0x00C2, 6, events);
    const auto header = ReadEventHeader(packet);
    ASSERT_TRUE(header);
    EXPECT_FALSE(header->wantsAnswer);
    const EventList list = ReadEvents(*header, packet);
    ASSERT_EQ(list.events.size(), 1U);
    EXPECT_EQ(list.events[0].size, 20U);
    EXPECT_EQ(GetNumber(list.events[0].data + 16, 4), 0xABCDU);
}

TEST(EventPacket, ExtendedEventsTellTheirSizes) {
    Bytes events;
    for (const std::uint16_t id : {std::uint16_t{0x9001}, std::uint16_t{0x9002}}) {
        append(events, 2, 28);
        append(events, 2, id);
        append(events, 2, 0);
        append(events, 2, 0);
        append(events, 8, 0x100000001);
        append(events, 8, 44);
        append(events, 4, id);
    }
    const Bytes packet = makePacket(0x11, 0x00C2, 7, events);
    const auto header = ReadEventHeader(packet);
    ASSERT_TRUE(header);
    const EventList list = ReadEvents(*header, packet);
    EXPECT_TRUE(list.isWhole);
    ASSERT_EQ(list.events.size(), 2U);
    EXPECT_EQ(list.events[1].eventId, 0x9002);
    EXPECT_EQ(list.events[1].timestamp, 44U);
    EXPECT_EQ(GetNumber(list.events[1].data + 24, 4), 0x9002U);
}

TEST(EventPacket, EventsBeforeADamagedOneCount) {
    Bytes events;
    appendShortEvent(events, 0x9001, 1);
    append(events, 4, 0);
    const Bytes packet = makePacket(0x00, 0x00C0, 8, events);
    const EventList list = ReadEvents(*ReadEventHeader(packet), packet);
    EXPECT_FALSE(list.isWhole);
    EXPECT_EQ(list.events.size(), 1U);
}

TEST(EventPacket, EventThatTellsTooSmallASizeIsDamaged) {
    Bytes events;
    append(events, 2, 3);
    events.resize(24);
    const Bytes packet = makePacket(0x10, 0x00C0, 9, events);
    const EventList list = ReadEvents(*ReadEventHeader(packet), packet);
    EXPECT_FALSE(list.isWhole);
    EXPECT_TRUE(list.events.empty());
}

TEST(EventPacket, OtherPacketsAreNone) {
    EXPECT_FALSE(ReadEventHeader({}));
    EXPECT_FALSE(ReadEventHeader(Bytes(7, 0x42)));
    EXPECT_FALSE(ReadEventHeader(makePacket(0x01, 0x0080, 1, {})));
    Bytes wrongKey = makePacket(0x01, 0x00C0, 1, {});
    wrongKey[0] = 0x43;
    EXPECT_FALSE(ReadEventHeader(wrongKey));
    Bytes events;
    appendShortEvent(events, 1, 1);
    Bytes cut = makePacket(0x01, 0x00C0, 1, events);
    cut.pop_back();
    EXPECT_FALSE(ReadEventHeader(cut));
}

TEST(EventPacket, AnswerNamesCommandAndRequest) {
    const Bytes events = makePacket(0x01, 0x00C2, 0x1234, {});
    const auto answer = MakeEventAnswer(*ReadEventHeader(events));
    EXPECT_EQ(Bytes(answer.begin(), answer.end()), (Bytes{0, 0, 0, 0xC3, 0, 0, 0x12, 0x34}));
}

}  // namespace
}  // namespace Orlix::Aravis
