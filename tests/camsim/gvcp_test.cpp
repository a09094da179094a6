// Commands and their answers, byte for byte, without a network.
#include "gvcp.h"

#include <random>

#include "camsim/support/devicefixture.h"

namespace Orlix::Camsim::Testing {
namespace {

using GvcpTest = DeviceFixture;

std::string textAt(const Buffer& bytes, std::size_t offset) {
    return reinterpret_cast<const char*>(&bytes[offset]);
}

Buffer forceIp(std::uint16_t macHigh, std::uint32_t macLow) {
    Buffer body(56);
    Put(&body[2], macHigh);
    Put(&body[4], macLow);
    return body;
}

TEST_F(GvcpTest, DiscoveryTellsWhoTheDeviceIs) {
    const Ack ack = run(Command::Discovery, {});
    EXPECT_EQ(ack.status, Status::Success);
    EXPECT_EQ(ack.command, 0x0003);
    ASSERT_EQ(ack.body.size(), 0xF8U);
    EXPECT_EQ(Get<std::uint32_t>(&ack.body[0]), 0x00020000U);
    EXPECT_EQ(Get<std::uint32_t>(&ack.body[0x24]), 0x7F000001U);
    EXPECT_EQ(textAt(ack.body, 0x48), "Orlix");
    EXPECT_EQ(textAt(ack.body, 0x68), "EmulatedCamera");
    EXPECT_EQ(textAt(ack.body, 0xD8), "SN-7");
    EXPECT_EQ(textAt(ack.body, 0xE8), "Left");
}

TEST_F(GvcpTest, DiscoveryIsAnsweredWhenBroadcastAndOtherCommandsAreNot) {
    EXPECT_FALSE(handle(commandOf(Command::Discovery, {}, 1), first, Arrival::Broadcast).empty());
    const Buffer body = Writer().add(Reg::version).bytes();
    EXPECT_TRUE(handle(commandOf(Command::ReadReg, body, 2), first, Arrival::Broadcast).empty());
    EXPECT_EQ(statistics.ignoredDatagrams, 1U);
}

TEST_F(GvcpTest, DiscoveryFromAnotherSubnetIsBroadcastOnlyIfThatIsAllowed) {
    const Endpoint far{0x0A000001, 5000};
    const auto toEveryone = [&](std::uint8_t flags, const Endpoint& client) {
        return gvcp->Handle(commandOf(Command::Discovery, {}, 1, flags), client, Arrival::Broadcast)
            .toEveryone;
    };
    EXPECT_TRUE(toEveryone(wantsAnswer | mayBroadcastAnswer, far));
    EXPECT_FALSE(toEveryone(wantsAnswer, far));
    EXPECT_FALSE(toEveryone(wantsAnswer | mayBroadcastAnswer, first));
}

TEST_F(GvcpTest, ForceIpIsRefusedByTheDeviceThatIsMeantAndIgnoredByOthers) {
    const Buffer own = forceIp(0x0200, 0x7F000001);
    EXPECT_EQ(run(Command::ForceIp, own).status, Status::NotImplemented);
    EXPECT_TRUE(handle(commandOf(Command::ForceIp, forceIp(0x0200, 5), 9)).empty());
    Buffer cut = own;
    cut.resize(20);
    EXPECT_EQ(run(Command::ForceIp, cut).status, Status::InvalidParameter);
}

TEST_F(GvcpTest, SeveralRegistersAreReadInOneCommand) {
    const Ack ack =
        run(Command::ReadReg,
            Writer().add(Reg::version).add(Reg::heartbeat).add(Reg::interfaces).bytes());
    EXPECT_EQ(ack.status, Status::Success);
    EXPECT_EQ(ack.body, Writer().add(0x00020000U).add(3000U).add(1U).bytes());
}

TEST_F(GvcpTest, AReadThatFailsAnswersWhatCameBefore) {
    const Ack ack =
        run(Command::ReadReg, Writer().add(Reg::heartbeat).add(0x0500U + 0x7000U).bytes());
    EXPECT_EQ(ack.status, Status::InvalidAddress);
    EXPECT_EQ(ack.body, Writer().add(3000U).bytes());
}

TEST_F(GvcpTest, ReadsOfRegistersHaveTheirErrors) {
    EXPECT_EQ(readRegister(Reg::heartbeat + 2).status, Status::BadAlignment);
    EXPECT_EQ(readRegister(0xFFFFFFFC).status, Status::InvalidAddress);
    EXPECT_EQ(readRegister(0x0000B000).status, Status::InvalidAddress);
    EXPECT_EQ(readRegister(Reg::timestampControl).status, Status::AccessDenied);
    EXPECT_EQ(run(Command::ReadReg, {}).status, Status::InvalidParameter);
    EXPECT_EQ(run(Command::ReadReg, Buffer(7)).status, Status::InvalidParameter);
    EXPECT_EQ(run(Command::ReadReg, Buffer(544)).status, Status::InvalidParameter);
}

TEST_F(GvcpTest, ADeviceThatNobodyControlsCanNotBeWritten) {
    EXPECT_EQ(write(Reg::heartbeat, 1000), Status::AccessDenied);
    EXPECT_EQ(writeMemory(at(Emulated::At::width), registerBytes(std::int64_t{64})).status,
              Status::AccessDenied);
}

TEST_F(GvcpTest, WritesOfRegistersTellHowManyWereWritten) {
    ASSERT_EQ(write(Reg::control, Bit::controlled), Status::Success);
    const Buffer body = Writer()
                            .add(Reg::heartbeat)
                            .add(1000U)
                            .add(Reg::packetDelay)
                            .add(7U)
                            .add(Reg::version)
                            .add(1U)
                            .bytes();
    const Ack ack = run(Command::WriteReg, body);
    EXPECT_EQ(ack.status, Status::WriteProtect);
    EXPECT_EQ(ack.body, Writer().add(2U).bytes());
    EXPECT_EQ(read(Reg::heartbeat), 1000U);
    EXPECT_EQ(read(Reg::packetDelay), 7U);
}

TEST_F(GvcpTest, WritesOfRegistersHaveTheirErrors) {
    ASSERT_EQ(write(Reg::control, Bit::controlled), Status::Success);
    EXPECT_EQ(write(Reg::heartbeat + 1, 0), Status::BadAlignment);
    EXPECT_EQ(write(0x00008000, 0), Status::InvalidAddress);
    EXPECT_EQ(write(fileBase, 0), Status::WriteProtect);
    EXPECT_EQ(write(0x7FFFFFFC, 0), Status::InvalidAddress);
    EXPECT_EQ(write(Reg::packetSize, 10), Status::InvalidParameter);
    EXPECT_EQ(write(Reg::packetSize, 1502), Status::InvalidParameter);
    EXPECT_EQ(run(Command::WriteReg, Buffer(12)).status, Status::InvalidParameter);
    EXPECT_EQ(run(Command::WriteReg, {}).status, Status::InvalidParameter);
}

TEST_F(GvcpTest, MemoryIsReadAndWrittenInWholeWords) {
    ASSERT_EQ(write(Reg::control, Bit::controlled), Status::Success);
    EXPECT_EQ(readMemory(Reg::vendor, 30).status, Status::BadAlignment);
    EXPECT_EQ(readMemory(Reg::vendor + 1, 32).status, Status::BadAlignment);
    EXPECT_EQ(readMemory(Reg::vendor, 0).status, Status::InvalidParameter);
    EXPECT_EQ(readMemory(Reg::firstUrl, 540).status, Status::InvalidParameter);
    EXPECT_EQ(run(Command::ReadMem, Buffer(4)).status, Status::InvalidParameter);
    EXPECT_EQ(writeMemory(Reg::userName, Buffer(3)).status, Status::BadAlignment);
    EXPECT_EQ(writeMemory(Reg::userName, {}).status, Status::InvalidParameter);
    EXPECT_EQ(writeMemory(Reg::userName, Buffer(20)).status, Status::InvalidAddress);
    EXPECT_EQ(writeMemory(Reg::serial, Buffer(4)).status, Status::WriteProtect);
    const Ack ack = readMemory(Reg::vendor, 32);
    EXPECT_EQ(Get<std::uint32_t>(ack.body.data()), Reg::vendor);
    EXPECT_EQ(textAt(ack.body, 4), "Orlix");
    const Ack written = writeMemory(at(Emulated::At::width), registerBytes(std::int64_t{640}));
    EXPECT_EQ(written.status, Status::Success);
    EXPECT_EQ(written.body, Writer().add(8U).bytes());
    EXPECT_EQ(readMemory(at(Emulated::At::width), 8).body,
              Writer().add(at(Emulated::At::width)).add(registerBytes(std::int64_t{640})).bytes());
}

TEST_F(GvcpTest, AnUnknownCommandIsNotImplemented) {
    EXPECT_EQ(run(static_cast<Command>(0x0100), {}).status, Status::NotImplemented);
}

TEST_F(GvcpTest, WhatIsNoCommandGetsNoAnswer) {
    EXPECT_TRUE(handle({}).empty());
    EXPECT_TRUE(handle(Buffer(7, commandKey)).empty());
    Buffer wrongKey = commandOf(Command::Discovery, {}, 1);
    wrongKey[0] = 0x43;
    EXPECT_TRUE(handle(wrongKey).empty());
    EXPECT_EQ(statistics.ignoredDatagrams, 3U);
    EXPECT_EQ(statistics.commands, 0U);
}

TEST_F(GvcpTest, ALengthThatLiesAndTheNumberZeroAreInvalidHeaders) {
    Buffer longer = commandOf(Command::ReadReg, Writer().add(Reg::version).bytes(), 1);
    longer[5] = 200;
    EXPECT_EQ(parseAck(handle(longer)).status, Status::InvalidHeader);
    longer[5] = 0;
    EXPECT_EQ(parseAck(handle(longer)).status, Status::InvalidHeader);
    const Buffer zero = commandOf(Command::Discovery, {}, 0);
    EXPECT_EQ(parseAck(handle(zero)).status, Status::InvalidHeader);
    EXPECT_EQ(statistics.failedCommands, 3U);
}

TEST_F(GvcpTest, ACommandThatWantsNoAnswerIsExecutedSilently) {
    const Buffer body = Writer().add(Reg::control).add(Bit::controlled).bytes();
    EXPECT_TRUE(handle(commandOf(Command::WriteReg, body, 5, 0)).empty());
    EXPECT_EQ(read(Reg::control), Bit::controlled);
}

TEST_F(GvcpTest, ACommandThatComesAgainIsAnsweredButNotExecutedAgain) {
    ASSERT_EQ(write(Reg::control, Bit::controlled), Status::Success);
    const auto test = static_cast<std::int64_t>(Emulated::EventKind::Test);
    ASSERT_EQ(writeMemory(at(Emulated::At::eventNotification + test * Emulated::bankStep),
                          registerBytes(std::int64_t{1}))
                  .status,
              Status::Success);
    const Buffer body = Writer()
                            .add(at(Emulated::At::testEventGenerate))
                            .add(registerBytes(std::int64_t{1}))
                            .bytes();
    const Buffer fire = commandOf(Command::WriteMem, body, 77);
    const Buffer answer = handle(fire);
    EXPECT_EQ(handle(fire), answer);
    EXPECT_EQ(channels.events.size(), 1U);
    EXPECT_EQ(statistics.repeatedCommands, 1U);
    static_cast<void>(handle(commandOf(Command::WriteMem, body, 78)));
    EXPECT_EQ(channels.events.size(), 2U);
}

TEST_F(GvcpTest, ResendRequestsAreTakenFromTheControllersMachineOnly) {
    const Buffer body =
        Writer().add(std::uint16_t{0}).add(std::uint16_t{9}).add(3U).add(0x00FFFFFFU).bytes();
    EXPECT_TRUE(handle(commandOf(Command::PacketResend, body, 1, 0)).empty());
    EXPECT_TRUE(channels.resends.empty());
    ASSERT_EQ(write(Reg::control, Bit::controlled), Status::Success);
    static_cast<void>(handle(commandOf(Command::PacketResend, body, 2, 0), second));
    ASSERT_EQ(channels.resends.size(), 1U);
    EXPECT_EQ(channels.resends[0].blockId, 9U);
    EXPECT_EQ(channels.resends[0].firstPacket, 3U);
    EXPECT_EQ(channels.resends[0].lastPacket, lastLongPacketId);
    static_cast<void>(handle(commandOf(Command::PacketResend, body, 3, 0), {0x0A000001, 1}));
    EXPECT_EQ(channels.resends.size(), 1U);
}

TEST_F(GvcpTest, ResendRequestsMayHaveLongIds) {
    ASSERT_EQ(write(Reg::control, Bit::controlled), Status::Success);
    const Buffer body = Writer()
                            .add(std::uint32_t{0})
                            .add(0x01000003U)
                            .add(0x01000004U)
                            .add(std::uint64_t{0x123456789A})
                            .bytes();
    static_cast<void>(handle(commandOf(Command::PacketResend, body, 2, hasLongIds)));
    ASSERT_EQ(channels.resends.size(), 1U);
    EXPECT_EQ(channels.resends[0].blockId, 0x123456789AU);
    EXPECT_EQ(channels.resends[0].firstPacket, 0x01000003U);
    EXPECT_EQ(channels.resends[0].lastPacket, 0x01000004U);
    static_cast<void>(handle(commandOf(Command::PacketResend, body, 3, 0)));
    EXPECT_EQ(channels.resends.size(), 1U) << "the short form has another length";
}

// Whatever comes: an answer of a possible size, or none.
TEST_F(GvcpTest, AnyDatagramIsSurvived) {
    std::mt19937 random(5);
    const auto byte = [&] { return static_cast<std::uint8_t>(random()); };
    ASSERT_EQ(write(Reg::control, Bit::controlled), Status::Success);
    constexpr Command commands[] = {Command::Discovery, Command::ForceIp,  Command::PacketResend,
                                    Command::ReadReg,   Command::WriteReg, Command::ReadMem,
                                    Command::WriteMem,  Command::Event};
    for (int round = 0; round < 30'000; ++round) {
        Buffer body(random() % (round % 50 == 0 ? 2000 : 24));
        std::generate(body.begin(), body.end(), byte);
        if (body.size() >= 4 && round % 3 != 0) {
            constexpr std::uint32_t bases[] = {0, cameraBase, fileBase, 0xFFFFFFF0};
            const auto offset = static_cast<std::uint32_t>(random() % 0x4000);
            Put(body.data(), bases[random() % 4] + (round % 5 != 0 ? offset & ~3U : offset));
        }
        Buffer datagram =
            commandOf(commands[random() % 8], body, static_cast<std::uint16_t>(random()), byte());
        if (round % 4 == 0) {
            datagram[random() % datagram.size()] = byte();
        }
        if (round % 16 == 0) {
            datagram.resize(random() % datagram.size());
        }
        ASSERT_LE(handle(datagram).size(), commandHeaderSize + mostCommandBytes);
    }
}

}  // namespace
}  // namespace Orlix::Camsim::Testing
