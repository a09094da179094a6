// Frames of the real program over the loopback network, packet by packet.
#include <gtest/gtest.h>

#include <numeric>

#include "bootstrap.h"
#include "camsim/support/camsim.h"
#include "camsim/support/gevclient.h"
#include "orlixcamera/emulated/picture.h"
#include "orlixcamera/emulated/registertable.h"

namespace Orlix::Camsim::Testing {
namespace {

namespace At = Emulated::At;

// All frames of a test have room in a socket of the usual size, however late they are read.
constexpr std::int64_t width = 160;
constexpr std::int64_t height = 100;
constexpr std::uint32_t packetSize = 1500;
constexpr std::uint32_t perPacket = packetSize - 36;
constexpr std::uint32_t payloadPackets = (width * height + perPacket - 1) / perPacket;
constexpr std::uint32_t packetsOfFrame = payloadPackets + 2;

// A program in control of a device with small frames.
class Grab {
public:
    explicit Grab(const std::vector<std::string>& arguments = {})
        : process(arguments), client(process.port()) {
        client.takeControl();
        client.set(At::width, width);
        client.set(At::height, height);
        client.set(At::testPattern, static_cast<std::int64_t>(Emulated::Pattern::GreyDiagonalRamp));
        client.set(At::exposureTime, 100.0);
    }
    // That many frames, then the acquisition ends by itself.
    void start(std::int64_t frames) {
        constexpr std::int64_t multiFrame = 2;
        client.set(At::acquisitionMode, multiFrame);
        client.set(At::acquisitionFrameCount, frames);
        client.set(At::acquisitionStart, std::int64_t{1});
    }
    // All packets up to the one that is the last.
    std::vector<Packet> receiveUntil(std::uint64_t block, std::uint32_t last) {
        std::vector<Packet> packets;
        do {
            packets.push_back(receiver.receive());
        } while (packets.back().block != block || packets.back().id != last);
        return packets;
    }
    void askAgain(std::uint16_t block, std::uint32_t from, std::uint32_t to) {
        client.send(commandOf(Command::PacketResend,
                              Writer().add(std::uint16_t{0}).add(block).add(from).add(to).bytes(),
                              7000, 0));
    }

    CamsimProcess process;
    GevClient client;
    StreamReceiver receiver;
};

std::vector<std::uint32_t> allIds() {
    std::vector<std::uint32_t> ids(packetsOfFrame);
    std::iota(ids.begin(), ids.end(), 0U);
    return ids;
}

Buffer expectedPicture() {
    Emulated::PictureSettings settings;
    settings.region = {width, height, 0, 0};
    settings.pattern = Emulated::Pattern::GreyDiagonalRamp;
    settings.exposureMicroseconds = 100;
    Emulated::Picture picture;
    picture.Prepare(settings, 0);
    Buffer bytes(picture.GetSize());
    picture.Write(bytes.data(), 0);
    return bytes;
}

TEST(CamsimStream, FramesComeAsLeaderPayloadAndTrailer) {
    Grab grab;
    grab.receiver.open(grab.client, packetSize);
    grab.start(3);
    const Buffer picture = expectedPicture();
    for (std::uint64_t number = 1; number <= 3; ++number) {
        const Frame frame = grab.receiver.receiveFrame();
        EXPECT_EQ(frame.ids(), allIds());
        for (const Packet& packet : frame.packets) {
            EXPECT_EQ(packet.block, number);
            EXPECT_EQ(packet.status, Status::Success);
            EXPECT_FALSE(packet.longIds);
        }
        EXPECT_EQ(frame.payload(), picture);
        const Buffer& leader = frame.leader();
        ASSERT_EQ(leader.size(), 36U);
        EXPECT_EQ(Get<std::uint16_t>(&leader[2]), payloadImage);
        EXPECT_EQ(Get<std::uint32_t>(&leader[12]), std::uint32_t{PixelType_Mono8});
        EXPECT_EQ(Get<std::uint32_t>(&leader[16]), width);
        EXPECT_EQ(Get<std::uint32_t>(&leader[20]), height);
        EXPECT_EQ(frame.trailer(),
                  Writer().add(std::uint32_t{payloadImage}).add(std::uint32_t{height}).bytes());
    }
    const nlohmann::json statistics = grab.process.stop();
    EXPECT_EQ(statistics["frames"], 3);
    EXPECT_EQ(statistics["packets"], 3 * packetsOfFrame);
}

TEST(CamsimStream, ChunksFollowThePictureWithTheirHighestByteFirst) {
    Grab grab;
    grab.client.set(At::chunkModeActive, std::int64_t{1});
    grab.client.set(At::chunkEnable + Emulated::bankStep, std::int64_t{1});  // FrameID
    grab.receiver.open(grab.client, packetSize);
    grab.start(1);
    const Frame frame = grab.receiver.receiveFrame();
    EXPECT_EQ(Get<std::uint16_t>(&frame.leader()[2]), payloadImageWithChunks);
    const Buffer payload = frame.payload();
    const std::size_t pictureSize = width * height;
    ASSERT_EQ(payload.size(), pictureSize + 8 + 16);
    EXPECT_EQ(Get<std::uint32_t>(&payload[pictureSize]), 0x00010000U);
    EXPECT_EQ(Get<std::uint32_t>(&payload[pictureSize + 4]), pictureSize);
    EXPECT_EQ(Get<std::uint32_t>(&payload[payload.size() - 8]), 0x00010001U);
    EXPECT_EQ(Get<std::uint32_t>(&payload[payload.size() - 4]), 8U);
    ASSERT_EQ(frame.trailer().size(), 16U);
    EXPECT_EQ(Get<std::uint32_t>(&frame.trailer()[4]), payload.size());
    EXPECT_EQ(Get<std::uint32_t>(&frame.trailer()[8]), height);
}

TEST(CamsimStream, FramesOfChunksOnlyHaveNoPicture) {
    Grab grab({"--chunks-only"});
    grab.client.set(At::chunkModeActive, std::int64_t{1});
    grab.client.set(At::chunkEnable + Emulated::bankStep, std::int64_t{1});  // FrameID
    grab.receiver.open(grab.client, packetSize);
    grab.start(1);
    const Frame frame = grab.receiver.receiveFrame();
    EXPECT_EQ(frame.leader().size(), 12U) << "it tells no geometry";
    EXPECT_EQ(Get<std::uint16_t>(&frame.leader()[2]), payloadChunks);
    const Buffer payload = frame.payload();
    ASSERT_EQ(payload.size(), 8U + 8);
    EXPECT_EQ(Get<std::uint32_t>(&payload[8]), 0x00010001U);
    EXPECT_EQ(Get<std::uint32_t>(&payload[12]), 8U);
    const Buffer& trailer = frame.trailer();
    ASSERT_EQ(trailer.size(), 12U) << "kind, size and layout";
    EXPECT_EQ(Get<std::uint16_t>(&trailer[2]), payloadChunks);
    EXPECT_EQ(Get<std::uint32_t>(&trailer[4]), payload.size());
}

TEST(CamsimStream, WithoutChunksThereIsAPictureEvenIfChunksComeAlone) {
    Grab grab({"--chunks-only"});
    grab.receiver.open(grab.client, packetSize);
    grab.start(1);
    const Frame frame = grab.receiver.receiveFrame();
    EXPECT_EQ(Get<std::uint16_t>(&frame.leader()[2]), payloadImage);
    EXPECT_EQ(frame.payload(), expectedPicture());
}

TEST(CamsimStream, LongIdsHaveLongHeaders) {
    Grab grab({"--first-block", "5000000000"});
    ASSERT_EQ(grab.client.write(Reg::gvspConfiguration, Bit::longBlockIds), Status::Success);
    grab.receiver.open(grab.client, packetSize);
    grab.start(1);
    const Frame frame = grab.receiver.receiveFrame();
    EXPECT_EQ(frame.packets.size(), (width * height + packetSize - 49) / (packetSize - 48) + 2);
    EXPECT_EQ(frame.payload(), expectedPicture());
    for (const Packet& packet : frame.packets) {
        EXPECT_TRUE(packet.longIds);
        EXPECT_EQ(packet.block, 5'000'000'000U);
        EXPECT_LE(packet.content.size() + longPacketHeader + ipAndUdpHeader, packetSize);
    }
}

TEST(CamsimStream, TheNumbersOfFramesLeaveOutZero) {
    Grab grab({"--first-block", "65535"});
    grab.receiver.open(grab.client, packetSize);
    grab.start(2);
    EXPECT_EQ(grab.receiver.receiveFrame().packets[0].block, 65535U);
    EXPECT_EQ(grab.receiver.receiveFrame().packets[0].block, 1U);
}

TEST(CamsimStream, AChannelThatIsOpenedAgainCountsFromTheStart) {
    Grab grab;
    for (int round = 0; round < 2; ++round) {
        grab.receiver.open(grab.client, packetSize);
        grab.start(1);
        EXPECT_EQ(grab.receiver.receiveFrame().packets[0].block, 1U);
        ASSERT_EQ(grab.client.write(Reg::streamPort, 0), Status::Success);
    }
}

TEST(CamsimStream, TheSystemMayCutThePackets) {
    Grab grab({"--segment", "--link-speed", "0"});
    grab.receiver.open(grab.client, packetSize);
    grab.start(2);
    EXPECT_EQ(grab.receiver.receiveFrame().payload(), expectedPicture());
    EXPECT_EQ(grab.receiver.receiveFrame().ids(), allIds());
}

TEST(CamsimStream, ATestPacketHasTheSizeThatWasAskedFor) {
    Grab grab;
    grab.receiver.open(grab.client, packetSize);
    ASSERT_EQ(grab.client.write(Reg::packetSize, Bit::fireTestPacket | 4000), Status::Success);
    EXPECT_EQ(grab.receiver.receiveRaw().size(), 4000 - ipAndUdpHeader);
    EXPECT_EQ(grab.process.stop()["testPackets"], 1);
}

TEST(CamsimStream, PacketsAreSentAgain) {
    Grab grab;
    grab.receiver.open(grab.client, packetSize);
    grab.start(1);
    const Frame frame = grab.receiver.receiveFrame();
    grab.askAgain(1, 3, 4);
    for (std::uint32_t id = 3; id <= 4; ++id) {
        const Packet packet = grab.receiver.receive();
        EXPECT_EQ(packet.status, Status::Resent);
        EXPECT_EQ(packet.id, id);
        EXPECT_EQ(packet.content, frame.packets[id].content);
    }
    grab.askAgain(1, payloadPackets, lastPacketId);
    EXPECT_EQ(grab.receiver.receive().id, payloadPackets);
    EXPECT_EQ(grab.receiver.receive().kind, PacketKind::Trailer);
    const nlohmann::json statistics = grab.process.stop();
    EXPECT_EQ(statistics["resendRequests"], 2);
    EXPECT_EQ(statistics["resentPackets"], 4);
}

TEST(CamsimStream, WhatIsNotKeptAnyMoreIsNotAvailable) {
    Grab grab({"--keep", "2"});
    grab.receiver.open(grab.client, packetSize);
    grab.start(3);
    for (int frame = 0; frame < 3; ++frame) {
        static_cast<void>(grab.receiver.receiveFrame());
    }
    grab.askAgain(1, 2, 5);
    Packet packet = grab.receiver.receive();
    EXPECT_EQ(packet.status, Status::PacketUnavailable);
    EXPECT_EQ(packet.block, 1U);
    EXPECT_EQ(packet.id, 2U);
    EXPECT_TRUE(packet.content.empty());
    grab.askAgain(2, 2, 2);
    EXPECT_EQ(grab.receiver.receive().status, Status::Resent);
    grab.askAgain(3, packetsOfFrame, packetsOfFrame);
    EXPECT_EQ(grab.receiver.receive().status, Status::PacketUnavailable);
}

Buffer longRequest(std::uint64_t block, std::uint32_t from, std::uint32_t to) {
    const Buffer body = Writer().add(std::uint32_t{0}).add(from).add(to).add(block).bytes();
    return commandOf(Command::PacketResend, body, 7001, hasLongIds);
}

// Whatever the number of the packet: a header tells that it is gone, and nothing is made for it.
TEST(CamsimStream, PacketsOfBlocksThatNeverWereAreDeniedWithNothingButAHeader) {
    constexpr std::int64_t tolerated = 64 * 1024;
    Grab grab;
    grab.receiver.open(grab.client, packetSize);
    const std::int64_t before = grab.process.peakMemory();
    for (const std::uint32_t packet : {0U, 1U, 0x00FFFFFFU, 0x7FFFFFFFU, lastLongPacketId}) {
        grab.client.send(longRequest(99, packet, lastLongPacketId));
        const Packet answer = grab.receiver.receive();
        EXPECT_EQ(answer.status, Status::PacketUnavailable);
        EXPECT_TRUE(answer.longIds);
        EXPECT_EQ(answer.block, 99U);
        EXPECT_EQ(answer.id, packet);
        EXPECT_EQ(answer.kind, packet == 0 ? PacketKind::Leader : PacketKind::Payload);
        EXPECT_TRUE(answer.content.empty());
    }
    EXPECT_LT(grab.process.peakMemory() - before, tolerated) << "kB";
    EXPECT_EQ(grab.process.stop()["deniedPackets"], 5);
}

TEST(CamsimStream, ATrailerThatTellsOfDamageTellsItEachTime) {
    Grab grab({"--fault", "frame 1: bad trailer"});
    grab.receiver.open(grab.client, packetSize);
    grab.start(2);
    const Packet trailer = grab.receiver.receiveFrame().packets.back();
    EXPECT_EQ(trailer.status, Status::DataOverrun);
    static_cast<void>(grab.receiver.receiveFrame());
    grab.askAgain(1, payloadPackets, lastPacketId);
    EXPECT_EQ(grab.receiver.receive().status, Status::Resent);
    const Packet again = grab.receiver.receive();
    EXPECT_EQ(again.status, Status::DataOverrun);
    EXPECT_EQ(again.kind, PacketKind::Trailer);
    EXPECT_EQ(again.content, trailer.content);
    grab.askAgain(2, payloadPackets + 1, lastPacketId);
    EXPECT_EQ(grab.receiver.receive().status, Status::Resent);
}

TEST(CamsimStream, ResendsAreDeniedOrIgnoredAsTheScriptSays) {
    Grab grab({"--wire", "frame 1: deny resends; frame 2: ignore resends"});
    grab.receiver.open(grab.client, packetSize);
    grab.start(3);
    for (int frame = 0; frame < 3; ++frame) {
        static_cast<void>(grab.receiver.receiveFrame());
    }
    grab.askAgain(1, 1, 1);
    EXPECT_EQ(grab.receiver.receive().status, Status::PacketUnavailable);
    grab.askAgain(2, 1, 1);
    grab.askAgain(3, 1, 1);
    const Packet packet = grab.receiver.receive();
    EXPECT_EQ(packet.block, 3U) << "the second request had no answer";
    EXPECT_EQ(packet.status, Status::Resent);
}

TEST(CamsimStream, EveryPacketIsAccountedForUnderLoss) {
    constexpr std::int64_t frames = 10;
    Grab grab({"--loss", "5", "--duplicate", "2", "--reorder", "5", "--seed", "7", "--wire",
               "frame 3: delay trailer by 1 us"});
    grab.receiver.open(grab.client, packetSize);
    grab.start(frames);
    // The last frame's end may be lost, so the device tells when it was sent.
    std::int64_t received = 0;
    const auto drain = [&](int milliseconds) {
        while (grab.receiver.tryReceive(milliseconds)) {
            ++received;
        }
    };
    do {
        drain(20);
    } while (grab.client.get(At::framesSent) < frames);
    drain(0);
    const nlohmann::json statistics = grab.process.stop();
    EXPECT_EQ(statistics["frames"], frames);
    EXPECT_EQ(statistics["sendErrors"], 0);
    const std::int64_t packets = statistics["packets"];
    const std::int64_t dropped = statistics["droppedPackets"];
    const std::int64_t duplicated = statistics["duplicatedPackets"];
    EXPECT_EQ(packets, frames * static_cast<std::int64_t>(packetsOfFrame) - dropped + duplicated);
    EXPECT_GT(dropped, 0);
    EXPECT_GT(duplicated, 0);
    EXPECT_GT(statistics["movedPackets"], 0);
    EXPECT_EQ(received, packets);
}

TEST(CamsimStream, LeadersAndTrailersGetLostByTheScript) {
    Grab grab({"--wire", "frame 1: drop leader; frame 2: drop trailer, duplicate packet 2"});
    grab.receiver.open(grab.client, packetSize);
    grab.start(3);
    const Frame first = grab.receiver.receiveFrame();
    EXPECT_EQ(first.packets.front().id, 1U);
    const std::vector<Packet> rest = grab.receiveUntil(3, packetsOfFrame - 1);
    EXPECT_EQ(rest.size(), packetsOfFrame - 1 + 1 + packetsOfFrame);
    EXPECT_EQ(rest[3].id, 2U);
    EXPECT_EQ(rest[packetsOfFrame - 1].id, payloadPackets);
    EXPECT_EQ(rest[packetsOfFrame].id, 0U);
}

TEST(CamsimStream, TheCamerasFaultsComeOverTheWire) {
    Grab grab({"--fault",
               "frame 1: missing packets 3; frame 2: resent packets 2; frame 3: wrong size -100;"
               "frame 4: wrong size +3000; frame 5: bad trailer; frame 6: lost end"});
    grab.receiver.open(grab.client, packetSize);
    grab.start(7);
    const Frame missing = grab.receiver.receiveFrame();
    EXPECT_EQ(missing.packets.size(), packetsOfFrame - 3);
    const Frame resent = grab.receiver.receiveFrame();
    EXPECT_EQ(resent.packets.size(), packetsOfFrame - 2);
    EXPECT_EQ(grab.receiver.receiveFrame().payload().size(), width * height - 100);
    EXPECT_EQ(grab.receiver.receiveFrame().payload().size(), width * height + 3000);
    EXPECT_EQ(grab.receiver.receiveFrame().packets.back().status, Status::DataOverrun);
    const std::vector<Packet> rest = grab.receiveUntil(7, packetsOfFrame - 1);
    EXPECT_EQ(rest.size(), packetsOfFrame - 1 + packetsOfFrame);

    const auto firstGap = [](const Frame& frame) {
        std::uint32_t id = 0;
        while (frame.packets[id].id == id) {
            ++id;
        }
        return id;
    };
    grab.askAgain(1, firstGap(missing), firstGap(missing));
    EXPECT_EQ(grab.receiver.receive().status, Status::PacketUnavailable);
    grab.askAgain(2, firstGap(resent), firstGap(resent));
    EXPECT_EQ(grab.receiver.receive().status, Status::Resent);
}

TEST(CamsimStream, FramesEndWithControl) {
    Grab grab;
    grab.receiver.open(grab.client, packetSize);
    grab.client.set(At::acquisitionStart, std::int64_t{1});
    static_cast<void>(grab.receiver.receiveFrame());
    ASSERT_EQ(grab.client.write(Reg::control, 0), Status::Success);
    const std::uint64_t frames = grab.process.statistics()["frames"];
    EXPECT_EQ(grab.client.get(At::acquiring), 0);
    EXPECT_EQ(grab.process.stop()["frames"], frames);
}

}  // namespace
}  // namespace Orlix::Camsim::Testing
