// The channel of a camera's events, with messages that no sound camera on a sound network sends.
#include <arpa/inet.h>

#include <array>
#include <condition_variable>
#include <mutex>

#include "aravis/bigendian.h"
#include "aravis/bootstrap.h"
#include "aravis/eventpacket.h"
#include "aravis/support/simulatedcameratest.h"
#include "aravis/support/toldmessages.h"
#include "orlixcamera/transport/transport.h"

namespace Orlix::Aravis {
namespace {

class MessageChannel : public Testing::SimulatedCameraTest {
protected:
    class Sink final : public Transport::IDeviceSink {
    public:
        void OnEvent(const Transport::EventMessage& message) override {
            const std::scoped_lock lock(mutex_);
            ids_.push_back(message.eventId);
            changed_.notify_all();
        }
        void OnLost() override {}
        [[nodiscard]] std::vector<std::uint16_t> WaitFor(std::uint16_t last) {
            std::unique_lock lock(mutex_);
            changed_.wait(lock, [&] { return !ids_.empty() && ids_.back() == last; });
            return ids_;
        }

    private:
        std::mutex mutex_;
        std::condition_variable changed_;
        std::vector<std::uint16_t> ids_;
    };

    void SetUp() override {
        ORLIX_REQUIRE_NETWORK();
        Start();
        device_ = FindDevice(serialNumber);
        device_->GetTransportDevice()->SetSink(&sink_);
        device_->GetTransportDevice()->Open();
        std::array<std::uint8_t, 4> port{};
        device_->GetTransportDevice()->Read(Bootstrap::messagePort, port.data(), port.size());
        receiver_.sin_family = AF_INET;
        receiver_.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        receiver_.sin_port = htons(static_cast<std::uint16_t>(GetNumber(port.data(), 4)));
        ASSERT_TRUE(own_.Bind(ParseAddress(address)));
    }
    void TearDown() override {
        if (device_ != nullptr) {
            device_->GetTransportDevice()->Close();
            device_->GetTransportDevice()->SetSink(nullptr);
        }
    }

    // One EVENT command, less some bytes of its event.
    void Send(const UdpSocket& socket, std::uint16_t requestId, std::uint16_t eventId,
              std::size_t cut = 0, bool wantsAnswer = true) const {
        constexpr std::size_t eventSize = 16;
        std::array<std::uint8_t, eventHeaderSize + eventSize> packet{
            0x42, static_cast<std::uint8_t>(wantsAnswer ? 1 : 0), 0x00, 0xC0};
        PutNumber(packet.data() + 4, 2, eventSize - cut);
        PutNumber(packet.data() + 6, 2, requestId);
        PutNumber(packet.data() + eventHeaderSize + 2, 2, eventId);
        EXPECT_TRUE(socket.SendTo(std::span(packet).first(packet.size() - cut), receiver_));
    }
    // The request that is acknowledged next.
    [[nodiscard]] std::uint64_t Acknowledged() const {
        std::array<std::uint8_t, 64> answer{};
        EXPECT_EQ(own_.Receive(answer, std::chrono::milliseconds(patience)), eventHeaderSize);
        EXPECT_EQ(GetNumber(answer.data() + 2, 2), 0x00C1U);
        return GetNumber(answer.data() + 6, 2);
    }

    Sink sink_;
    UdpSocket own_;

private:
    sockaddr_in receiver_{};
};

TEST_F(MessageChannel, RepeatedRequestIsAnsweredAgainAndDeliveredOnce) {
    for (const std::uint16_t request : std::array<std::uint16_t, 5>{7, 7, 8, 7, 9}) {
        Send(own_, request, static_cast<std::uint16_t>(0x9000 + request));
        EXPECT_EQ(Acknowledged(), request);
    }
    EXPECT_EQ(sink_.WaitFor(0x9009), (std::vector<std::uint16_t>{0x9007, 0x9008, 0x9009}));
}

// They are not sent again, and need no numbers.
TEST_F(MessageChannel, MessagesThatWantNoAnswerAreNeverTakenForRepeated) {
    for (const std::uint16_t event : std::array<std::uint16_t, 3>{0x9001, 0x9002, 0x9003}) {
        Send(own_, 0, event, 0, false);
    }
    EXPECT_EQ(sink_.WaitFor(0x9003), (std::vector<std::uint16_t>{0x9001, 0x9002, 0x9003}));
}

TEST_F(MessageChannel, RequestIdsComeAgainAfterAWhile) {
    for (std::uint16_t request = 1; request <= 40; ++request) {
        Send(own_, request, request);
        EXPECT_EQ(Acknowledged(), request);
    }
    Send(own_, 1, 0x9001);
    EXPECT_EQ(sink_.WaitFor(0x9001).size(), 41U);
}

TEST_F(MessageChannel, OthersThanTheCameraAreNotHeard) {
    UdpSocket other;
    ASSERT_TRUE(other.Bind(ParseAddress("127.0.0.2")));
    Send(other, 1, 0x9001);
    Send(own_, 2, 0x9002);
    EXPECT_EQ(Acknowledged(), 2U);
    EXPECT_EQ(sink_.WaitFor(0x9002), (std::vector<std::uint16_t>{0x9002}));
}

TEST_F(MessageChannel, DamagedEventIsTold) {
    const Testing::ToldMessages told;
    Send(own_, 1, 0x9001, 4);
    EXPECT_EQ(Acknowledged(), 1U);
    told.WaitFor("Device 'EmulatedCamera (S1)' sent a message with a damaged event.");
    Send(own_, 2, 0x9002);
    EXPECT_EQ(sink_.WaitFor(0x9002), (std::vector<std::uint16_t>{0x9002}));
}

}  // namespace
}  // namespace Orlix::Aravis
