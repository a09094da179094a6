// What the kernel makes of the filter, with two sockets that share an address as a stream's do.
#include "aravis/packetfilter.h"

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>

#include "aravis/bigendian.h"

namespace Orlix::Aravis {
namespace {

class PacketFilter : public testing::Test {
protected:
    // Frames of 3000 bytes in packets of 1000 of payload: three, or with long ids four.
    static constexpr std::uint64_t packetSize = 1036;
    static constexpr std::size_t payloadSize = 3000;

    enum class Ids : std::uint8_t { Short, Long };
    struct Packet {
        std::uint16_t status = 0;
        std::uint8_t format = 0;
        std::uint32_t number = 0;
        std::size_t size = 0;  // of what is behind the header
    };

    void SetUp() override {
        for (int& descriptor : sockets_) {
            descriptor = ::socket(AF_INET, SOCK_DGRAM | SOCK_NONBLOCK, 0);
            const int on = 1;
            ASSERT_EQ(::setsockopt(descriptor, SOL_SOCKET, SO_REUSEPORT, &on, sizeof on), 0);
            ASSERT_EQ(::bind(descriptor, Plain(), sizeof name_), 0);
            socklen_t length = sizeof name_;
            ASSERT_EQ(::getsockname(descriptor, Plain(), &length), 0);
        }
    }
    void TearDown() override {
        for (const int descriptor : sockets_) {
            ::close(descriptor);
        }
    }
    void Attach(Buffers buffers) {
        filter_ = MakePacketFilter(StreamShape(payloadSize, packetSize), buffers);
        const sock_fprog program{static_cast<unsigned short>(filter_.size()), filter_.data()};
        ASSERT_EQ(::setsockopt(sockets_[0], SOL_SOCKET, SO_ATTACH_REUSEPORT_CBPF, &program,
                               sizeof program),
                  0);
    }
    // 0 for Aravis' socket, 1 for the witness.
    int WhoGets(const Packet& packet, Ids ids) {
        const std::size_t header = ids == Ids::Long ? Gvsp::longHeader : Gvsp::shortHeader;
        std::vector<std::uint8_t> bytes(header + packet.size);
        PutNumber(bytes.data(), 2, packet.status);
        bytes[4] = packet.format;
        PutNumber(bytes.data() + 5, 3, packet.number);
        if (ids == Ids::Long) {
            bytes[4] = static_cast<std::uint8_t>(packet.format | Gvsp::longIdsBit);
            PutNumber(bytes.data() + 5, 3, 0);
            PutNumber(bytes.data() + 16, 4, packet.number);
        }
        EXPECT_EQ(::sendto(sockets_[1], bytes.data(), bytes.size(), 0, Plain(), sizeof name_),
                  static_cast<ssize_t>(bytes.size()));
        for (int index = 0; index < 2; ++index) {
            if (::recv(sockets_.at(static_cast<std::size_t>(index)), bytes.data(), bytes.size(),
                       0) > 0) {
                return index;
            }
        }
        return -1;
    }

private:
    sockaddr* Plain() { return reinterpret_cast<sockaddr*>(&name_); }

    sockaddr_in name_ = [] {
        sockaddr_in name{};
        name.sin_family = AF_INET;
        name.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        return name;
    }();
    std::array<int, 2> sockets_{-1, -1};
    std::vector<sock_filter> filter_;
};

constexpr std::uint16_t dataOverrun = 0x8015;
constexpr std::array<std::uint16_t, 4> noMore = {0x800C, 0x8010, 0x8011, 0x8012};

TEST_F(PacketFilter, SoundFramesPassTheWitnessBy) {
    Attach(Buffers::Queued);
    for (const Ids ids : {Ids::Short, Ids::Long}) {
        EXPECT_EQ(WhoGets({0, Gvsp::leader, 0, 36}, ids), 0);
        EXPECT_EQ(WhoGets({0, Gvsp::payload, 1, 900}, ids), 0);
    }
    EXPECT_EQ(WhoGets({0, Gvsp::payload, 3, 1000}, Ids::Short), 0);
    EXPECT_EQ(WhoGets({0, Gvsp::trailer, 4, 8}, Ids::Short), 0);
    EXPECT_EQ(WhoGets({0, Gvsp::payload, 4, 36}, Ids::Long), 0);
    EXPECT_EQ(WhoGets({0, Gvsp::trailer, 5, 8}, Ids::Long), 0);
}

TEST_F(PacketFilter, BadTrailersAndWhatHasNoRoomGoToTheWitness) {
    Attach(Buffers::Queued);
    for (const Ids ids : {Ids::Short, Ids::Long}) {
        EXPECT_EQ(WhoGets({dataOverrun, Gvsp::trailer, 3, 8}, ids), 1);
        EXPECT_EQ(WhoGets({0, Gvsp::payload, 5, 10}, ids), 1);
        EXPECT_EQ(WhoGets({0, Gvsp::trailer, 6, 8}, ids), 1);
    }
    EXPECT_EQ(WhoGets({0, Gvsp::payload, 3, 1001}, Ids::Short), 1);
    EXPECT_EQ(WhoGets({0, Gvsp::payload, 4, 37}, Ids::Long), 1);
}

TEST_F(PacketFilter, AnswersOfNothingToSendAgainStayWithAravis) {
    for (const Buffers buffers : {Buffers::Queued, Buffers::None}) {
        Attach(buffers);
        for (const std::uint16_t status : noMore) {
            for (const Ids ids : {Ids::Short, Ids::Long}) {
                EXPECT_EQ(WhoGets({status, Gvsp::leader, 0, 0}, ids), 0);
                EXPECT_EQ(WhoGets({status, Gvsp::payload, 2, 0}, ids), 0);
                EXPECT_EQ(WhoGets({status, Gvsp::payload, 9, 0}, ids), 0);
                EXPECT_EQ(WhoGets({status, Gvsp::trailer, 4, 0}, ids), 0);
            }
        }
    }
}

TEST_F(PacketFilter, WithoutABufferTheWitnessHearsOfEveryFrame) {
    Attach(Buffers::None);
    for (const Ids ids : {Ids::Short, Ids::Long}) {
        EXPECT_EQ(WhoGets({0, Gvsp::leader, 0, 36}, ids), 1);
        EXPECT_EQ(WhoGets({0, Gvsp::payload, 1, 900}, ids), 0);
        EXPECT_EQ(WhoGets({0, Gvsp::trailer, 4, 8}, ids), 1);
        // What it sends on doesn't come back to it.
        EXPECT_EQ(WhoGets({Gvsp::seen, Gvsp::leader, 0, 36}, ids), 0);
        EXPECT_EQ(WhoGets({Gvsp::seen, Gvsp::trailer, 4, 8}, ids), 0);
    }
}

TEST_F(PacketFilter, PacketsThatAreCutOffAreLeftToAravis) {
    Attach(Buffers::Queued);
    EXPECT_EQ(WhoGets({0, Gvsp::payload, 0, 0}, Ids::Short), 0);
}

}  // namespace
}  // namespace Orlix::Aravis
