// Who controls the device, and what a write into its registers sets off.
#include "device.h"

#include "camsim/support/devicefixture.h"

namespace Orlix::Camsim::Testing {
namespace {

using std::chrono::milliseconds;

class DeviceTest : public DeviceFixture {
protected:
    void takeControl(std::uint32_t bits = Bit::controlled) {
        ASSERT_EQ(write(Reg::control, bits), Status::Success);
    }
    std::string readText(std::int64_t address, std::uint16_t size) {
        const Ack ack = readMemory(at(address), size);
        EXPECT_EQ(ack.status, Status::Success);
        return std::string(reinterpret_cast<const char*>(ack.body.data()) + 4);
    }
    // As a program does it that may not send more than that in one command.
    Status writeText(std::int64_t address, std::size_t size, const std::string& text) {
        constexpr std::size_t piece = 512;
        Buffer bytes(size);
        std::copy(text.begin(), text.end(), bytes.begin());
        Status status = Status::Success;
        for (std::size_t done = 0; done < size && status == Status::Success; done += piece) {
            const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(done);
            status = writeMemory(at(address) + static_cast<std::uint32_t>(done),
                                 Buffer(begin, begin + static_cast<std::ptrdiff_t>(
                                                           std::min(piece, size - done))))
                         .status;
        }
        return status;
    }
};

TEST_F(DeviceTest, ASecondControllerIsRefusedAndMayStillRead) {
    takeControl();
    EXPECT_EQ(write(Reg::control, Bit::controlled, second), Status::AccessDenied);
    EXPECT_EQ(write(Reg::control, 0, second), Status::AccessDenied);
    EXPECT_EQ(write(Reg::heartbeat, 1000, second), Status::AccessDenied);
    EXPECT_EQ(read(Reg::heartbeat, second), 3000U);
    EXPECT_EQ(read(Reg::primaryPort, second), first.port);
    EXPECT_EQ(read(Reg::primaryAddress, second), first.address);
}

TEST_F(DeviceTest, ControlThatIsGivenBackIsFree) {
    takeControl();
    ASSERT_EQ(write(Reg::control, 0), Status::Success);
    EXPECT_EQ(read(Reg::control), 0U);
    EXPECT_EQ(write(Reg::control, Bit::controlled, second), Status::Success);
    EXPECT_EQ(write(Reg::control, Bit::controlled), Status::AccessDenied);
}

TEST_F(DeviceTest, AnExclusiveControllerIsTheOnlyOneWhoReads) {
    takeControl(Bit::exclusive);
    EXPECT_EQ(readRegister(Reg::heartbeat, second).status, Status::AccessDenied);
    EXPECT_EQ(readMemory(Reg::vendor, 32, second).status, Status::AccessDenied);
    EXPECT_EQ(read(Reg::control, second), Bit::exclusive);
    EXPECT_EQ(read(Reg::heartbeat), 3000U);
    EXPECT_EQ(run(Command::Discovery, {}, second).status, Status::Success);
}

TEST_F(DeviceTest, ControlIsSwitchedOverWithTheRightKeyOnly) {
    takeControl(Bit::controlled | Bit::mayBeSwitchedOver);
    ASSERT_EQ(write(Reg::switchoverKey, 0x1234), Status::Success);
    EXPECT_EQ(write(Reg::control, 0x43210000 | Bit::controlled, second), Status::AccessDenied);
    EXPECT_EQ(write(Reg::control, 0x12340000 | Bit::controlled, second), Status::Success);
    EXPECT_EQ(read(Reg::primaryPort), second.port);
    EXPECT_EQ(write(Reg::heartbeat, 1000), Status::AccessDenied);
    EXPECT_EQ(write(Reg::heartbeat, 1000, second), Status::Success);
}

TEST_F(DeviceTest, AControlWithoutAPrivilegeIsAnInvalidParameter) {
    EXPECT_EQ(write(Reg::control, Bit::mayBeSwitchedOver), Status::InvalidParameter);
    takeControl();
    EXPECT_EQ(write(Reg::control, Bit::mayBeSwitchedOver), Status::InvalidParameter);
}

TEST_F(DeviceTest, ControlIsLostWithoutAHeartbeat) {
    takeControl();
    ASSERT_EQ(write(Reg::heartbeat, 700), Status::Success);
    ASSERT_EQ(write(Reg::streamAddress, first.address), Status::Success);
    ASSERT_EQ(write(Reg::streamPort, 6000), Status::Success);
    const auto deadline = device->GetDeadline();
    ASSERT_TRUE(deadline);
    device->CheckHeartbeat(*deadline - milliseconds(1));
    EXPECT_EQ(read(Reg::control, second), Bit::controlled);
    device->CheckHeartbeat(*deadline);
    EXPECT_EQ(read(Reg::control, second), 0U);
    EXPECT_EQ(statistics.controlLosses, 1U);
    EXPECT_EQ(channels.stream.destination.port, 0U);
    EXPECT_EQ(write(Reg::control, Bit::controlled, second), Status::Success);
}

TEST_F(DeviceTest, EveryCommandOfTheControllerIsAHeartbeatAndThatOfOthersIsNot) {
    takeControl();
    const auto before = device->GetDeadline();
    static_cast<void>(read(Reg::version, second));
    EXPECT_EQ(device->GetDeadline(), before);
    static_cast<void>(read(Reg::version));
    EXPECT_GT(device->GetDeadline(), before);
}

TEST_F(DeviceTest, TheHeartbeatCanBeSwitchedOffAndHasAShortestTime) {
    takeControl();
    ASSERT_EQ(write(Reg::heartbeat, 3), Status::Success);
    EXPECT_EQ(read(Reg::heartbeat), 500U);
    ASSERT_EQ(write(Reg::gvcpConfiguration, Bit::heartbeatOff), Status::Success);
    EXPECT_FALSE(device->GetDeadline());
    ASSERT_EQ(write(Reg::control, 0), Status::Success);
    EXPECT_EQ(read(Reg::gvcpConfiguration), 0U) << "the next program has a heartbeat again";
}

TEST_F(DeviceTest, TheUserDefinedNameIsThatOfTheCamera) {
    takeControl();
    Buffer name(16);
    std::copy_n("Right", 5, name.begin());
    ASSERT_EQ(writeMemory(Reg::userName, name).status, Status::Success);
    EXPECT_EQ(readText(Emulated::At::userDefinedName, 64), "Right");
    ASSERT_EQ(writeText(Emulated::At::userDefinedName, 64, "A name that is far too long here"),
              Status::Success);
    const Ack ack = run(Command::Discovery, {});
    EXPECT_STREQ(reinterpret_cast<const char*>(&ack.body[0xE8]), "A name that is ");
}

TEST_F(DeviceTest, ALongTextComesInPieces) {
    takeControl();
    std::string script = "frame 3: missing packets 2\n";
    script += "#" + std::string(1500, 'x') + "\nframe 4: late 5 ms";
    ASSERT_EQ(writeText(Emulated::At::faultScript, 4096, script), Status::Success);
    std::string back;
    for (std::uint32_t done = 0; done < 4096; done += 512) {
        const Ack ack = readMemory(at(Emulated::At::faultScript) + done, 512);
        back.append(ack.body.begin() + 4, ack.body.end());
    }
    EXPECT_EQ(back.substr(0, back.find('\0')), script);
}

TEST_F(DeviceTest, AMistakeInAFaultScriptIsRefusedAndTheOneOfBeforeStays) {
    takeControl();
    ASSERT_EQ(writeText(Emulated::At::faultScript, 4096, "frame 3: lost end"), Status::Success);
    EXPECT_EQ(writeText(Emulated::At::faultScript, 4096, "frame 3: nonsense"),
              Status::InvalidParameter);
    EXPECT_EQ(readText(Emulated::At::faultScript, 512), "frame 3: lost end");
}

TEST_F(DeviceTest, ANumberOfTheCameraCanBeWrittenByItsHalves) {
    takeControl();
    ASSERT_EQ(write(at(Emulated::At::width), 0x80020000), Status::Success);  // 640, turned round
    EXPECT_EQ(read(at(Emulated::At::width)), 0x80020000U);
    EXPECT_EQ(read(at(Emulated::At::width) + 4), 0U);
}

TEST_F(DeviceTest, RegistersOfTheCameraHaveTheirErrors) {
    takeControl();
    const Buffer one = registerBytes(std::int64_t{1});
    EXPECT_EQ(writeMemory(at(Emulated::At::payloadSize), one).status, Status::WriteProtect);
    EXPECT_EQ(writeMemory(at(Emulated::At::width), registerBytes(std::int64_t{99999})).status,
              Status::InvalidParameter);
    EXPECT_EQ(readMemory(at(Emulated::At::acquisitionStart), 8).status, Status::AccessDenied);
    EXPECT_EQ(readMemory(at(0x0800), 8).status, Status::InvalidAddress);
    ASSERT_EQ(writeMemory(at(Emulated::At::acquisitionStart), one).status, Status::Success);
    EXPECT_EQ(writeMemory(at(Emulated::At::width), one).status, Status::AccessDenied);
}

TEST_F(DeviceTest, TheStreamChannelIsToldOfItsSettings) {
    takeControl();
    ASSERT_EQ(write(Reg::packetSize, Bit::doNotFragment | 8000), Status::Success);
    ASSERT_EQ(write(Reg::packetDelay, 1200), Status::Success);
    ASSERT_EQ(write(Reg::gvspConfiguration, Bit::longBlockIds), Status::Success);
    ASSERT_EQ(write(Reg::streamAddress, 0x7F000001), Status::Success);
    ASSERT_EQ(write(Reg::streamPort, 6000), Status::Success);
    EXPECT_NE(channels.session, 0U);
    EXPECT_EQ(channels.stream.destination, (Endpoint{0x7F000001, 6000}));
    EXPECT_EQ(channels.stream.packetSize, 8000U);
    EXPECT_EQ(channels.stream.packetDelay, 1200U);
    EXPECT_TRUE(channels.stream.doNotFragment);
    EXPECT_TRUE(channels.stream.longIds);
    ASSERT_EQ(write(Reg::packetSize, Bit::fireTestPacket | 4000), Status::Success);
    ASSERT_EQ(channels.testPackets.size(), 1U);
    EXPECT_EQ(channels.testPackets[0].packetSize, 4000U);
    EXPECT_EQ(read(Reg::packetSize), 4000U) << "the bit is none that stays";
}

TEST_F(DeviceTest, TheMessageChannelIsToldOfItsSettings) {
    takeControl();
    ASSERT_EQ(write(Reg::messageTimeout, 50), Status::Success);
    ASSERT_EQ(write(Reg::messageRetries, 4), Status::Success);
    ASSERT_EQ(write(Reg::messageAddress, 0x7F000001), Status::Success);
    ASSERT_EQ(write(Reg::messagePort, 6001), Status::Success);
    EXPECT_EQ(channels.messages.destination, (Endpoint{0x7F000001, 6001}));
    EXPECT_EQ(channels.messages.timeout, 50U);
    EXPECT_EQ(channels.messages.retries, 4U);
}

TEST_F(DeviceTest, TheClockIsLatchedAndReset) {
    takeControl();
    const auto latched = [this] {
        EXPECT_EQ(write(Reg::timestampControl, Bit::latchTimestamp), Status::Success);
        return std::uint64_t{read(Reg::timestampHigh)} << 32 | read(Reg::timestampLow);
    };
    const std::uint64_t before = latched();
    EXPECT_GT(latched(), before);
    ASSERT_EQ(write(Reg::timestampControl, Bit::resetTimestamp), Status::Success);
    EXPECT_LT(latched(), before);
}

TEST_F(DeviceTest, ACameraInUseIsDeniedAndOneThatCanNotBeReachedIsSilent) {
    camera->LoadFaults("once open: in use by \"line 4\"");
    EXPECT_EQ(write(Reg::control, Bit::controlled), Status::AccessDenied);
    camera->LoadFaults("once open: time out 1 ms");
    const Buffer body = Writer().add(Reg::control).add(Bit::controlled).bytes();
    EXPECT_TRUE(handle(commandOf(Command::WriteReg, body, 900)).empty());
    EXPECT_EQ(write(Reg::control, Bit::controlled), Status::Success);
}

TEST_F(DeviceTest, RegistersThatAFaultScriptBreaksAreRefusedOrSilent) {
    takeControl();
    camera->LoadFaults("read Width: time out 1 ms; write Width: refuse");
    const std::uint32_t width = at(Emulated::At::width);
    const Buffer body = Writer().add(width).add(std::uint16_t{0}).add(std::uint16_t{8}).bytes();
    EXPECT_TRUE(handle(commandOf(Command::ReadMem, body, 900)).empty());
    EXPECT_EQ(writeMemory(width, registerBytes(std::int64_t{64})).status, Status::AccessDenied);
}

TEST_F(DeviceTest, ALossOfPowerLeavesNothingOfWhatWasSet) {
    takeControl();
    ASSERT_EQ(write(Reg::heartbeat, 900), Status::Success);
    ASSERT_EQ(write(Reg::packetSize, 8000), Status::Success);
    camera->Unplug();
    EXPECT_TRUE(channels.isLost);
    EXPECT_FALSE(device->HasPower());
    device->LosePower();
    camera->Plug();
    EXPECT_TRUE(device->HasPower());
    EXPECT_EQ(read(Reg::control), 0U);
    EXPECT_EQ(read(Reg::heartbeat), 3000U);
    EXPECT_EQ(read(Reg::packetSize), 1500U);
    EXPECT_EQ(read(Reg::address), 0x7F000001U) << "it keeps who it is";
}

}  // namespace
}  // namespace Orlix::Camsim::Testing
