#include "wirefaults.h"

#include <gtest/gtest.h>

#include <numeric>

namespace Orlix::Camsim::Testing {
namespace {

using List = std::vector<std::uint32_t>;

class WireFaultsTest : public ::testing::Test {
protected:
    // Leader 0, payload 1 to 6, trailer 7.
    WireFaultsTest() {
        block_.id = 1;
        block_.bytesPerPacket = 10;
        block_.data.resize(60);
    }
    // What is left of the packets of a frame.
    List sent(const WireFaults& faults, std::uint64_t frame = 1) {
        std::vector<WireStep> steps(block_.PacketCount());
        for (std::uint32_t packet = 0; packet < steps.size(); ++packet) {
            steps[packet].packet = packet;
        }
        faults.Apply(frame, block_, steps, statistics_);
        List packets;
        for (const WireStep& step : steps) {
            packets.push_back(step.packet);
            pauses_ += step.pause;
        }
        return packets;
    }
    List sent(const char* script) {
        WireOptions options;
        options.rules = ParseWireScript(script);
        return sent(WireFaults(options));
    }

    Block block_;
    Statistics statistics_;
    std::chrono::nanoseconds pauses_{0};
};

TEST_F(WireFaultsTest, WithoutFaultsEverythingGoesInOrder) {
    EXPECT_EQ(sent(""), List({0, 1, 2, 3, 4, 5, 6, 7}));
}

TEST_F(WireFaultsTest, PacketsAreDroppedByTheirPlace) {
    EXPECT_EQ(sent("frame 1: drop leader"), List({1, 2, 3, 4, 5, 6, 7}));
    EXPECT_EQ(sent("frame 1: drop trailer"), List({0, 1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(sent("frame 1: drop packets 2 to 4"), List({0, 1, 5, 6, 7}));
    EXPECT_EQ(sent("frame 1: drop packets 6 to 99"), List({0, 1, 2, 3, 4, 5, 7}));
    EXPECT_EQ(statistics_.droppedPackets, 6U);
    EXPECT_EQ(sent("frame 1: drop all"), List());
    EXPECT_EQ(sent("frame 2: drop all").size(), 8U);
}

TEST_F(WireFaultsTest, PacketsComeTwiceOrLaterOrAfterAPause) {
    EXPECT_EQ(sent("frame 1: duplicate packet 2"), List({0, 1, 2, 2, 3, 4, 5, 6, 7}));
    EXPECT_EQ(sent("frame 1: move packet 2 by 3"), List({0, 1, 3, 4, 5, 2, 6, 7}));
    EXPECT_EQ(sent("frame 1: move leader by 99"), List({1, 2, 3, 4, 5, 6, 7, 0}));
    EXPECT_EQ(sent("frame 1: move packets 1 to 2 by 1"), List({0, 3, 1, 2, 4, 5, 6, 7}));
    EXPECT_EQ(statistics_.duplicatedPackets, 1U);
    EXPECT_EQ(statistics_.movedPackets, 4U);
    EXPECT_EQ(sent("frame 1: delay trailer by 5 ms").size(), 8U);
    EXPECT_EQ(pauses_, std::chrono::milliseconds(5));
}

TEST_F(WireFaultsTest, TheSameSeedHitsTheSamePackets) {
    block_.data.resize(10'000);
    WireOptions options;
    options.lossPercent = 5;
    options.duplicatePercent = 3;
    options.reorderPercent = 3;
    const List once = sent(WireFaults(options));
    EXPECT_EQ(sent(WireFaults(options)), once);
    options.seed = 2;
    EXPECT_NE(sent(WireFaults(options)), once);
}

TEST_F(WireFaultsTest, ThePercentageIsMet) {
    block_.data.resize(1'000'000);
    WireOptions options;
    options.lossPercent = 2;
    const std::size_t count = sent(WireFaults(options)).size();
    EXPECT_NEAR(static_cast<double>(block_.PacketCount() - count), 2000, 200);
    EXPECT_EQ(statistics_.droppedPackets, block_.PacketCount() - count);
    options.lossPercent = 100;
    EXPECT_TRUE(sent(WireFaults(options)).empty());
}

TEST_F(WireFaultsTest, APacketThatIsSentAgainHasItsOwnChance) {
    WireOptions options;
    options.lossPercent = 50;
    const WireFaults faults(options);
    int lost = 0;
    for (std::uint64_t attempt = 1; attempt <= 1000; ++attempt) {
        lost += faults.Loses(1, 3, attempt) ? 1 : 0;
    }
    EXPECT_NEAR(lost, 500, 100);
}

TEST_F(WireFaultsTest, TheLastRuleOfAFrameTellsWhatBecomesOfResends) {
    WireOptions options;
    options.rules = ParseWireScript("all frames: ignore resends; frame 2: deny resends");
    const WireFaults faults(options);
    EXPECT_EQ(faults.ResendsOf(1), Resends::Ignore);
    EXPECT_EQ(faults.ResendsOf(2), Resends::Deny);
    EXPECT_EQ(WireFaults(WireOptions{}).ResendsOf(1), Resends::Answer);
}

}  // namespace
}  // namespace Orlix::Camsim::Testing
