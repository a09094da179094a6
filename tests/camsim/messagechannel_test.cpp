// Events on their way, with others that speak to the same socket.
#include "messagechannel.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "camsim/support/gevclient.h"

namespace Orlix::Camsim::Testing {
namespace {

constexpr std::uint32_t loopback = 0x7F000001;

// A channel without a camera, and the program that its events go to.
class MessageChannelTest : public ::testing::Test {
protected:
    void open(std::uint32_t timeout, std::uint32_t retries) {
        channel.Set({{loopback, program.port()}, timeout, retries});
    }
    [[nodiscard]] Buffer acknowledgeOf(std::uint16_t id) const {
        return Writer()
            .add(std::uint16_t{0})
            .add(static_cast<std::uint16_t>(Command::EventDataAck))
            .add(std::uint16_t{0})
            .add(id)
            .bytes();
    }
    // Sends it without a pause until the event has come twice.
    void expectRepeatUnder(const UdpSocket& sender, const Buffer& datagram) {
        std::atomic<bool> ends{false};
        std::thread flood([&] {
            while (!ends) {
                sender.send(datagram, socket.GetEndpoint().port);
            }
        });
        EXPECT_TRUE(channel.Push({}));
        EXPECT_NO_THROW({
            const Buffer message = program.receive();
            EXPECT_EQ(program.receive(), message);
        });
        ends = true;
        flood.join();
    }

    UdpSocket program;
    Silence silence;
    Statistics statistics;
    const Socket socket{{loopback, 0}, Sharing::Alone};
    MessageChannel channel{socket.Get(), {}, silence, statistics};
};

TEST_F(MessageChannelTest, WrongAnswersWithoutAnEndDoNotKeepTheTimeFromRunningOut) {
    open(20, 1);
    expectRepeatUnder(program, acknowledgeOf(9999));
}

TEST_F(MessageChannelTest, OnlyTheProgramThatGetsTheEventsCanAcknowledgeThem) {
    open(20, 1);
    const UdpSocket stranger;
    expectRepeatUnder(stranger, acknowledgeOf(1));
}

TEST_F(MessageChannelTest, AnotherCommandWithTheSameNumberIsNoAcknowledge) {
    open(20, 1);
    expectRepeatUnder(program, commandOf(Command::ReadReg, {}, 1));
}

TEST_F(MessageChannelTest, AnEventOfAChannelThatWasClosedIsNotSentAgain) {
    open(60'000, 5);
    EXPECT_TRUE(channel.Push({}));
    static_cast<void>(program.receive());
    channel.Set({});
    while (statistics.lostEvents == 0) {
        std::this_thread::yield();
    }
    EXPECT_EQ(statistics.eventRetries, 0U);
    UdpSocket next;
    channel.Set({{loopback, next.port()}, 0, 0});
    EXPECT_TRUE(channel.Push({}));
    EXPECT_EQ(Get<std::uint16_t>(&next.receive()[6]), 2U);
}

}  // namespace
}  // namespace Orlix::Camsim::Testing
