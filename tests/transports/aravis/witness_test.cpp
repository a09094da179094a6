// What the witness makes of packets, with sockets of the test in place of a stream's.
#include "aravis/witness.h"

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>

#include "aravis/bigendian.h"

namespace Orlix::Aravis {
namespace {

constexpr std::uint16_t dataOverrun = 0x8015;

class WitnessTest : public testing::Test {
protected:
    // Frames of 2500 bytes in packets of 1000 of payload, with short ids: three.
    static constexpr std::uint64_t packetSize = 1036;
    static constexpr std::size_t payloadSize = 2500;

    struct Packet {
        std::uint16_t status = 0;
        std::uint16_t block = 0;
        std::uint8_t format = 0;
        std::uint32_t number = 0;
        std::size_t size = 0;  // with the header
    };
    static constexpr std::uint32_t lastPacket = 3;
    static Packet Leader(std::uint16_t block) { return {0, block, Gvsp::leader, 0, 44}; }
    static Packet Trailer(std::uint16_t block, std::uint16_t status = 0) {
        return {status, block, Gvsp::trailer, lastPacket + 1, 16};
    }

    void SetUp() override {
        for (int& sender : senders_) {
            sender = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
            ASSERT_GE(sender, 0);
        }
        MakeStream();
    }
    void TearDown() override {
        witness_ = nullptr;
        for (const int sender : senders_) {
            ::close(sender);
        }
    }
    void MakeStream() {
        witness_ = nullptr;
        const int descriptor = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        // A packet that never comes is a failure, and no endless wait.
        const timeval longest{20, 0};
        ASSERT_EQ(::setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &longest, sizeof longest), 0);
        name_.sin_port = 0;
        socklen_t length = sizeof name_;
        ASSERT_EQ(::bind(descriptor, Plain(), length), 0);
        ASSERT_EQ(::getsockname(descriptor, Plain(), &length), 0);
        stream_ = StreamSocket(descriptor);
    }
    void OpenWitness() {
        witness_ = Witness::Open(stream_, StreamShape(payloadSize, packetSize));
        ASSERT_NE(witness_, nullptr);
    }
    void Send(const Packet& packet, std::size_t sender = 0) {
        std::vector<std::uint8_t> bytes(packet.size);
        PutNumber(bytes.data(), 2, packet.status);
        PutNumber(bytes.data() + 2, 2, packet.block);
        bytes[Gvsp::formatPlace] = packet.format;
        PutNumber(bytes.data() + 5, 3, packet.number);
        EXPECT_EQ(
            ::sendto(senders_.at(sender), bytes.data(), bytes.size(), 0, Plain(), sizeof name_),
            static_cast<ssize_t>(bytes.size()));
    }
    // The next packet that Aravis would get; what the witness sends on it has noted before.
    [[nodiscard]] Packet Receive() {
        std::array<std::uint8_t, 2000> bytes{};
        const ssize_t size = ::recv(stream_.Get(), bytes.data(), bytes.size(), 0);
        if (size <= 0) {
            ADD_FAILURE() << "a packet didn't come";
            return {};
        }
        return {static_cast<std::uint16_t>(GetNumber(bytes.data(), 2)),
                static_cast<std::uint16_t>(GetNumber(bytes.data() + 2, 2)),
                bytes[Gvsp::formatPlace],
                static_cast<std::uint32_t>(GetNumber(bytes.data() + 5, 3)),
                static_cast<std::size_t>(size)};
    }
    void Pass(const Packet& packet) {
        Send(packet);
        EXPECT_EQ(Receive().block, packet.block);
    }
    // A frame that nobody had a buffer for.
    void PassWithoutBuffer(std::uint16_t block) {
        Pass(Leader(block));
        Pass(Trailer(block));
    }
    // One that has a buffer and is taken at once; the frames before it that were missed.
    [[nodiscard]] std::uint64_t TakeFrame(std::uint16_t block, std::uint64_t underruns = 0) {
        witness_->NoteStart(underruns);
        return witness_->TakeMissedBefore(block);
    }

    std::unique_ptr<Witness> witness_;
    static constexpr std::size_t senderCount = 16;

private:
    sockaddr* Plain() { return reinterpret_cast<sockaddr*>(&name_); }

    StreamSocket stream_;
    std::array<int, senderCount> senders_{};
    sockaddr_in name_ = [] {
        sockaddr_in name{};
        name.sin_family = AF_INET;
        name.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        return name;
    }();
};

TEST_F(WitnessTest, EndOfAFrameComesBeforeTheBeginningOfTheNext) {
    OpenWitness();
    constexpr std::uint16_t rounds = 500;
    for (std::uint16_t block = 1; block <= rounds; ++block) {
        witness_->SetBuffers(Buffers::None);
        Send(Trailer(block));
        witness_->SetBuffers(Buffers::Queued);
        Send(Leader(static_cast<std::uint16_t>(block + 1)));
        ASSERT_EQ(Receive().format, Gvsp::trailer) << block;
        ASSERT_EQ(Receive().format, Gvsp::leader) << block;
    }
}

// The filter comes a moment after the second socket; until then the kernel divides the packets.
TEST_F(WitnessTest, PacketsThatComeWhileItBeginsReachAravisWhole) {
    constexpr int rounds = 300;
    constexpr std::size_t packets = 64;
    constexpr std::size_t size = 1008;
    for (int round = 0; round < rounds; ++round) {
        MakeStream();
        std::thread camera([&] {
            for (std::size_t packet = 0; packet < packets; ++packet) {
                Send({0, 1, Gvsp::payload, 1, size}, packet % senderCount);
            }
        });
        OpenWitness();
        camera.join();
        for (std::size_t packet = 0; packet < packets; ++packet) {
            ASSERT_EQ(Receive().size, size);
        }
        ASSERT_EQ(witness_->TakeEvidence(1), Evidence::None);
    }
}

TEST_F(WitnessTest, FramesThatAreLongerThanTheirBufferAreToldAndCut) {
    OpenWitness();
    Send({0, 3, Gvsp::payload, lastPacket, 508 + 100});
    EXPECT_EQ(Receive().size, 508U);
    EXPECT_EQ(witness_->TakeEvidence(3), Evidence::TooLong);
    EXPECT_EQ(witness_->TakeEvidence(3), Evidence::None);
}

TEST_F(WitnessTest, TrailersThatAreNumberedOneTooHighGetTheirPlaceAndAreNoEvidence) {
    OpenWitness();
    Send({0, 3, Gvsp::trailer, lastPacket + 2, 16});
    EXPECT_EQ(Receive().number, lastPacket + 1);
    EXPECT_EQ(witness_->TakeEvidence(3), Evidence::None);
    Send({0, 4, Gvsp::trailer, lastPacket + 3, 16});
    EXPECT_EQ(Receive().number, lastPacket + 1);
    EXPECT_EQ(witness_->TakeEvidence(4), Evidence::TooLong);
}

// Short ids come again after 65535 frames.
TEST_F(WitnessTest, WhatWasSeenOfAFrameIsNotToldOfALaterOne) {
    OpenWitness();
    Pass(Trailer(7, dataOverrun));
    Pass(Trailer(9, dataOverrun));
    EXPECT_EQ(witness_->TakeEvidence(8), Evidence::None);
    EXPECT_EQ(witness_->TakeEvidence(7), Evidence::None);
    EXPECT_EQ(witness_->TakeEvidence(9), Evidence::BadTrailer);
}

TEST_F(WitnessTest, GapIsOfMissedFramesIfPacketsFoundNoBufferBetweenItsEnds) {
    OpenWitness();
    witness_->NoteStart(0);   // frame 1
    witness_->NoteStart(0);   // frame 2, with the last buffer
    witness_->NoteStart(40);  // frame 4: the packets of frame 3 found none
    EXPECT_EQ(witness_->TakeMissedBefore(1), 0U);
    EXPECT_EQ(witness_->TakeMissedBefore(2), 0U);
    EXPECT_EQ(witness_->TakeMissedBefore(4), 1U);
    EXPECT_EQ(TakeFrame(6, 40), 0U) << "frame 5 was lost on the way";
}

TEST_F(WitnessTest, FrameWithoutALeaderComesBehindThoseThatEndedWithoutABuffer) {
    OpenWitness();
    EXPECT_EQ(TakeFrame(7), 0U);
    witness_->SetBuffers(Buffers::None);
    PassWithoutBuffer(8);
    PassWithoutBuffer(9);
    witness_->SetBuffers(Buffers::Queued);
    EXPECT_EQ(TakeFrame(0, 10), 0U);
    EXPECT_EQ(TakeFrame(11, 10), 2U);
}

TEST_F(WitnessTest, FrameThatGetsItsBufferInItsMidstIsNotMissed) {
    OpenWitness();
    EXPECT_EQ(TakeFrame(7), 0U);
    witness_->SetBuffers(Buffers::None);
    PassWithoutBuffer(8);
    Pass(Leader(9));
    witness_->SetBuffers(Buffers::Queued);
    EXPECT_EQ(TakeFrame(0, 10), 0U);
    EXPECT_EQ(witness_->CountMissed({}), 1U);
    EXPECT_EQ(TakeFrame(10, 10), 1U);
    EXPECT_EQ(witness_->CountMissed({}), 0U);
}

// The stream still receives for a moment.
TEST_F(WitnessTest, FrameThatGetsItsBufferAfterTheEndOfTheWitnessIsNotMissed) {
    OpenWitness();
    EXPECT_EQ(TakeFrame(7), 0U);
    witness_->SetBuffers(Buffers::None);
    PassWithoutBuffer(8);
    Pass(Leader(9));
    witness_->End();
    const std::array<std::uint64_t, 1> withoutLeader = {0};
    EXPECT_EQ(witness_->CountMissed(withoutLeader), 1U);
}

TEST_F(WitnessTest, FrameWhoseLeaderWasLostHidesNoneOfThoseThatAreMissedBehindIt) {
    OpenWitness();
    EXPECT_EQ(TakeFrame(0), 0U);
    witness_->SetBuffers(Buffers::None);
    PassWithoutBuffer(8);
    PassWithoutBuffer(9);
    PassWithoutBuffer(10);
    witness_->End();
    EXPECT_EQ(witness_->CountMissed({}), 3U);
}

// Sent on by the witness, it comes when a buffer has been queued.
TEST_F(WitnessTest, FrameThatGetsItsBufferWithItsEndIsNotMissed) {
    OpenWitness();
    EXPECT_EQ(TakeFrame(7), 0U);
    witness_->SetBuffers(Buffers::None);
    PassWithoutBuffer(8);
    Send(Leader(9));
    Send(Trailer(9));
    witness_->SetBuffers(Buffers::Queued);
    EXPECT_EQ(Receive().format, Gvsp::leader);
    EXPECT_EQ(Receive().format, Gvsp::trailer);
    EXPECT_EQ(TakeFrame(0, 10), 0U);
    EXPECT_EQ(witness_->CountMissed({}), 1U);
    EXPECT_EQ(TakeFrame(10, 10), 1U);
}

}  // namespace
}  // namespace Orlix::Aravis
