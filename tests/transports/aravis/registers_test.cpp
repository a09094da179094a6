// By which commands the memory of a camera is reached.
#include <gmock/gmock.h>

#include "aravis/support/commandlistener.h"
#include "aravis/support/fakecameratest.h"
#include "aravis/support/simulatedcameratest.h"
#include "orlixcamera/transport/transport.h"

namespace Orlix::Aravis {
namespace {

using testing::Contains;
using testing::Field;
using testing::Not;
using Listener = Testing::CommandListener;

auto OfCommand(Listener::Command command) {
    return Field(&Listener::Access::command, std::uint64_t{command});
}

using OldSchema = Testing::FakeCameraTest;

// The camera's description is of schema 1.0. Registers have their highest byte first.
TEST_F(OldSchema, WordsTravelByTheRegisterCommands) {
    const auto process = StartCamera("127.0.0.1", "T1");
    const auto device = FindDevice("T1");
    CInstantCamera camera(device.get());
    camera.Open();
    CIntegerParameter width(camera.GetNodeMap(), "Width");
    constexpr std::int64_t place = 0x100;
    const Listener listener;
    width.SetValue(0x154);
    const auto writes = listener.Take();
    EXPECT_THAT(writes, Contains(Listener::Access{Listener::WriteRegister, place, 0x154}));
    EXPECT_THAT(writes, Not(Contains(OfCommand(Listener::WriteMemory))));
    std::uint8_t word[4] = {};
    device->GetTransportDevice()->Read(place, word, sizeof word);
    EXPECT_EQ(GetNumber(word, sizeof word), 0x154U);
    const auto reads = listener.Take();
    EXPECT_THAT(reads, Contains(Listener::Access{Listener::ReadRegister, place, 0}));
    // A look for cameras reads their names meanwhile.
    EXPECT_THAT(reads, Not(Contains(AllOf(OfCommand(Listener::ReadMemory),
                                          Field(&Listener::Access::address, place)))));
}

// Two words, or bytes of one, have no command of their own.
TEST_F(OldSchema, OtherLengthsTravelAsMemory) {
    const auto process = StartCamera("127.0.0.1", "T1");
    const auto device = FindDevice("T1");
    CInstantCamera camera(device.get());
    camera.Open();
    const Listener listener;
    std::uint8_t words[8] = {};
    device->GetTransportDevice()->Read(0x100, words, sizeof words);
    EXPECT_THAT(listener.Take(), Contains(OfCommand(Listener::ReadMemory)));
    EXPECT_GT(GetNumber(words, 4), 0U);
    EXPECT_LT(GetNumber(words, 4), 10000U);
}

using NewSchema = Testing::SimulatedCameraTest;

TEST_F(NewSchema, WordsTravelAsMemory) {
    Start();
    Open();
    const Listener listener;
    Set("Width", 0x140);
    const auto accesses = listener.Take();
    EXPECT_THAT(accesses, Contains(OfCommand(Listener::WriteMemory)));
    EXPECT_THAT(accesses, Not(Contains(OfCommand(Listener::WriteRegister))));
}

}  // namespace
}  // namespace Orlix::Aravis
