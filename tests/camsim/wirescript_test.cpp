#include "wirescript.h"

#include <gtest/gtest.h>

#include "gcbase/gcexception.h"

namespace Orlix::Camsim::Testing {
namespace {

using namespace std::chrono_literals;

std::string mistakeOf(const std::string& script) {
    try {
        static_cast<void>(ParseWireScript(script));
    } catch (const GenICam::InvalidArgumentException& error) {
        return error.GetDescription();
    }
    return "no mistake";
}

TEST(WireScript, EmptyScriptsAndCommentsHaveNoRules) {
    EXPECT_TRUE(ParseWireScript("").empty());
    EXPECT_TRUE(ParseWireScript("# nothing\n\n ; # more").empty());
}

TEST(WireScript, FramesAreNamedOneByOneInRangesAndInSteps) {
    const auto frames = [](const char* script) {
        std::vector<std::uint64_t> hit;
        for (std::uint64_t frame = 1; frame <= 12; ++frame) {
            if (ParseWireScript(script).front().IsFor(frame)) {
                hit.push_back(frame);
            }
        }
        return hit;
    };
    using List = std::vector<std::uint64_t>;
    EXPECT_EQ(frames("frame 3: drop leader"), List({3}));
    EXPECT_EQ(frames("frame 3 to 5: drop leader"), List({3, 4, 5}));
    EXPECT_EQ(frames("frame 2 to 9 every 3: drop leader"), List({2, 5, 8}));
    EXPECT_EQ(frames("frame 10 every 2: drop leader"), List({10, 12}));
    EXPECT_EQ(frames("every 4 frames: drop leader"), List({4, 8, 12}));
    EXPECT_EQ(frames("all frames: drop leader").size(), 12U);
}

TEST(WireScript, AStatementHasSeveralFaults) {
    const auto rules = ParseWireScript(
        "frame 1: drop packets 3 to 7, delay trailer by 5 ms, move packet 2 by 4, deny resends\n"
        "all frames: duplicate all; after 2 s: silence for 500ms; every 10 s: reset; "
        "on signal: silence");
    ASSERT_EQ(rules.size(), 8U);
    EXPECT_EQ(rules[0].fault, WireFault::Drop);
    EXPECT_EQ(rules[0].firstPacket, 3U);
    EXPECT_EQ(rules[0].lastPacket, 7U);
    EXPECT_EQ(rules[1].target, WireTarget::Trailer);
    EXPECT_EQ(rules[1].duration, 5ms);
    EXPECT_EQ(rules[2].places, 4U);
    EXPECT_EQ(rules[3].fault, WireFault::DenyResends);
    EXPECT_EQ(rules[4].target, WireTarget::All);
    EXPECT_EQ(rules[5].occasion, WireOccasion::After);
    EXPECT_EQ(rules[5].time, 2s);
    EXPECT_EQ(rules[5].duration, 500ms);
    EXPECT_EQ(rules[6].occasion, WireOccasion::Every);
    EXPECT_EQ(rules[6].fault, WireFault::Reset);
    EXPECT_EQ(rules[7].occasion, WireOccasion::Signal);
    EXPECT_EQ(rules[7].fault, WireFault::Silence);
    EXPECT_FALSE(rules[7].IsFor(1));
}

TEST(WireScript, MistakesAreToldWithTheirPlace) {
    EXPECT_EQ(mistakeOf("frame 1: dorp leader"),
              "Wire script, line 1, column 10: expected 'drop', 'duplicate', 'delay', 'move', "
              "'ignore' or 'deny', found 'dorp'.");
    EXPECT_EQ(
        mistakeOf("# x\n  frame: drop leader"),
        "Wire script, line 2, column 8: expected the number of a frame, from 1 on, found ':'.");
    EXPECT_EQ(mistakeOf("frame 1 drop leader"),
              "Wire script, line 1, column 9: expected ':', found 'drop'.");
    EXPECT_EQ(mistakeOf("frame 1: drop"),
              "Wire script, line 1, column 14: expected 'leader', 'packet', 'trailer' or 'all', "
              "found the end of script.");
    EXPECT_EQ(mistakeOf("once: silence"),
              "Wire script, line 1, column 1: expected 'frame', 'all', 'every', 'after' or 'on', "
              "found 'once'.");
    EXPECT_EQ(mistakeOf("on signal: drop leader"),
              "Wire script, line 1, column 12: expected 'silence' or 'reset', found 'drop'.");
    EXPECT_EQ(mistakeOf("after 5: silence"),
              "Wire script, line 1, column 8: expected 'us', 'ms' or 's', found ':'.");
    EXPECT_EQ(mistakeOf("after 5 ms: drop leader"),
              "Wire script, line 1, column 13: expected 'silence' or 'reset', found 'drop'.");
    EXPECT_EQ(
        mistakeOf("frame 0: drop leader"),
        "Wire script, line 1, column 7: expected the number of a frame, from 1 on, found '0'.");
    EXPECT_EQ(mistakeOf("frame 1: drop packet 99999999999"),
              "Wire script, line 1, column 22: expected the number of a packet, from 1 on, found "
              "'99999999999'.");
    EXPECT_EQ(mistakeOf("frame 1: drop leader leader"),
              "Wire script, line 1, column 22: expected ',' or the end of the statement, found "
              "'leader'.");
}

}  // namespace
}  // namespace Orlix::Camsim::Testing
