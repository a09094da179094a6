// Event ports and the adapters that take the messages of a device apart.
#include <gtest/gtest.h>

#include "genapi/testmap.h"

using namespace GenApiTest;

namespace {

const std::string nodes =
    "<IntReg Name=\"Stamp\"><Address>8</Address><Length>8</Length><AccessMode>RO</AccessMode>"
    "<pPort>E</pPort><Endianess>BigEndian</Endianess></IntReg>"
    "<IntReg Name=\"Data\"><Address>16</Address><Length>2</Length><AccessMode>RW</AccessMode>"
    "<pPort>E</pPort><Endianess>BigEndian</Endianess></IntReg>"
    "<IntReg Name=\"Little\"><Address>4</Address><Length>8</Length><AccessMode>RO</AccessMode>"
    "<pPort>E</pPort><Endianess>LittleEndian</Endianess></IntReg>"
    "<Integer Name=\"Count\"><EventID>9AbC</EventID><pValue>R</pValue></Integer>" +
    std::string(Reg{"R", 0, "RO", ""}) + "<Port Name=\"E\"><EventID>9abc</EventID></Port>";

using Bytes = std::vector<std::uint8_t>;

std::int64_t sizeOf(const Bytes& bytes) {
    return static_cast<std::int64_t>(bytes.size());
}

Bytes operator+(Bytes a, const Bytes& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

// An event of GigE Vision with its time stamp.
Bytes item(std::uint8_t high, std::uint8_t low, std::uint8_t stamp) {
    return {0, 0, high, low, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, stamp};
}

Bytes gvcp(std::uint8_t flags, std::uint8_t command, const Bytes& rest) {
    const auto length = static_cast<std::uint8_t>(rest.size());
    return Bytes{0x42, flags, 0, command, 0, length, 0, 1} + rest;
}

}  // namespace

TEST(Event, Rule18AMessageServesTheRegistersOfItsPort) {
    TestMap t(nodes);
    CEventAdapterGEV adapter(t.map._Ptr());
    EXPECT_EQ(t.mode("Stamp"), NA);
    {
        Bytes message = gvcp(0, 0xC2, item(0x9A, 0xBC, 5) + Bytes{1, 2});
        EXPECT_EQ(adapter.DeliverMessage(message.data(), sizeOf(message)), 1);
        message.assign(message.size(), 0xFF);
    }
    EXPECT_EQ(t.integer("Stamp")->GetValue(), 5);
    EXPECT_EQ(t.integer("Data")->GetValue(), 0x102);
    EXPECT_EQ(t.mode("Data"), RO);
    const Bytes next = gvcp(0, 0xC0, item(0x9A, 0xBC, 6));
    EXPECT_EQ(adapter.DeliverMessage(next.data(), sizeOf(next)), 1);
    EXPECT_EQ(t.integer("Stamp")->GetValue(), 6);
    EXPECT_THROW((void)t.integer("Data")->GetValue(), GenICam::OutOfRangeException);
}

TEST(Event, Rule18AnEventIdOnAPlainNodeInvalidatesIt) {
    TestMap t(nodes);
    CEventAdapterGeneric adapter(t.map._Ptr());
    int fired = 0;
    Register(t.node("Count"), [&](INode*) { ++fired; });
    EXPECT_EQ(t.integer("Count")->GetValue(), 0);
    t.port.poke(0, 3);
    EXPECT_EQ(t.integer("Count")->GetValue(), 0);
    EXPECT_TRUE(adapter.DeliverMessage(0x9ABC, nullptr, 0));
    EXPECT_EQ(fired, 1);
    EXPECT_EQ(t.integer("Count")->GetValue(), 3);
    EXPECT_FALSE(adapter.DeliverMessage(0x9ABD, nullptr, 0));
    EXPECT_EQ(fired, 1);
}

TEST(Event, OneMessageMayTellOfSeveralEvents) {
    TestMap t(nodes);
    CEventAdapterGEV adapter(t.map._Ptr());
    const Bytes message = gvcp(0, 0xC0, item(0, 1, 2) + item(0x9A, 0xBC, 7) + item(0, 3, 4));
    EXPECT_EQ(adapter.DeliverMessage(message.data(), sizeOf(message)), 1);
    EXPECT_EQ(t.integer("Stamp")->GetValue(), 7);
}

TEST(Event, BlockIdsOf64BitsMakeEventsLonger) {
    TestMap t(nodes);
    CEventAdapterGEV adapter(t.map._Ptr());
    const Bytes tail(8, 0);
    const Bytes sized = Bytes{0, 26, 0x9A, 0xBC} + Bytes(12, 0) + Bytes{7, 8} + tail;
    const Bytes message = gvcp(0x10, 0xC2, sized + Bytes{0, 0, 0, 1} + Bytes(20, 0));
    EXPECT_EQ(adapter.DeliverMessage(message.data(), sizeOf(message)), 1);
    EXPECT_EQ(t.integer("Data")->GetValue(), 0x708);
}

TEST(Event, AMessageThatIsCutOffDeliversNothing) {
    TestMap t(nodes);
    CEventAdapterGEV gev(t.map._Ptr());
    const Bytes events = item(0x9A, 0xBC, 1) + item(0x9A, 0xBC, 2);
    const Bytes message = gvcp(0, 0xC0, events);
    for (std::int64_t length = 0; length < sizeOf(message); ++length) {
        EXPECT_THROW(gev.DeliverMessage(message.data(), length), GenICam::RuntimeException);
    }
    Bytes shortItem = gvcp(0, 0xC0, Bytes(events.begin(), events.end() - 1));
    EXPECT_EQ(errorOf<GenICam::RuntimeException>(
                  [&] { gev.DeliverMessage(shortItem.data(), sizeOf(shortItem)); }),
              "GigE Vision event message: the event at offset 24 is cut off.");
    const Bytes tiny = gvcp(0x10, 0xC2, Bytes{0, 1} + Bytes(30, 0));
    EXPECT_THROW(gev.DeliverMessage(tiny.data(), sizeOf(tiny)), GenICam::RuntimeException);
    const Bytes other = gvcp(0, 0x80, events);
    EXPECT_THROW(gev.DeliverMessage(other.data(), sizeOf(other)), GenICam::RuntimeException);
    EXPECT_EQ(t.mode("Stamp"), NA);
}

TEST(Event, AMessageOfUsb3VisionIsLittleEndian) {
    TestMap t(nodes);
    CEventAdapterU3V adapter(t.map._Ptr());
    const Bytes event = {0, 0, 0xBC, 0x9A, 9, 0, 0, 0, 0, 0, 0, 0, 1};
    const Bytes message = Bytes{0x55, 0x33, 0x56, 0x45, 0, 0, 0x00, 0x0C, 13, 0, 1, 0} + event;
    EXPECT_EQ(adapter.DeliverMessage(message.data(), sizeOf(message)), 1);
    EXPECT_EQ(t.integer("Little")->GetValue(), 9);
    for (std::int64_t length = 0; length < sizeOf(message); ++length) {
        EXPECT_THROW(adapter.DeliverMessage(message.data(), length), GenICam::RuntimeException);
    }
}

TEST(Event, APortConnectedByHandServesOneMessage) {
    TestMap t(nodes);
    CEventPort port;
    t.map->Connect(&port, "E");
    const Bytes bytes(18, 1);
    EXPECT_THROW(port.AttachEvent(nullptr, 3), GenICam::InvalidArgumentException);
    port.AttachEvent(bytes.data(), sizeOf(bytes));
    EXPECT_EQ(t.integer("Data")->GetValue(), 0x101);
    EXPECT_THROW(t.integer("Data")->SetValue(1), GenICam::AccessException);
    port.DetachEvent();
    EXPECT_EQ(t.mode("Data"), NA);
}
