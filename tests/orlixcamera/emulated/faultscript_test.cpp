#include "orlixcamera/emulated/faultscript.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <string>
#include <vector>

#include "gcbase/gcexception.h"

namespace {

using namespace Orlix::Emulated;
using namespace std::chrono_literals;

FaultRule parseOne(const char* script) {
    const std::vector<FaultRule> rules = ParseFaultScript(script);
    EXPECT_EQ(rules.size(), 1U) << script;
    return rules.at(0);
}

std::string errorOf(const char* script) {
    try {
        static_cast<void>(ParseFaultScript(script));
    } catch (const GenICam::InvalidArgumentException& error) {
        return error.GetDescription();
    }
    return "no error";
}

TEST(FaultScript, EmptyScriptAndCommentsHaveNoRules) {
    for (const char* script : {"", " \t\r\n\n", "# nothing: here", ";;\n;", "\n# a\n#b\n"}) {
        EXPECT_TRUE(ParseFaultScript(script).empty()) << script;
    }
}

TEST(FaultScript, FrameRulesHaveARangeAndAStep) {
    FaultRule rule = parseOne("frame 10: missing packets 3");
    EXPECT_EQ(rule.occasion, Occasion::Frame);
    EXPECT_EQ(rule.firstFrame, 10U);
    EXPECT_EQ(rule.lastFrame, 10U);
    EXPECT_EQ(rule.fault, Fault::MissingPackets);
    EXPECT_EQ(rule.amount, 3);
    EXPECT_FALSE(rule.once);
    EXPECT_EQ(rule.camera, 0U);
    rule = parseOne("frame 10 to 20 every 5: bad trailer");
    EXPECT_EQ(rule.lastFrame, 20U);
    EXPECT_EQ(rule.frameStep, 5U);
    EXPECT_EQ(parseOne("frame 10 to 10 every 5: bad trailer").lastFrame, 10U);
    rule = parseOne("frame 10 every 5: cut chunk");
    EXPECT_EQ(rule.lastFrame, std::numeric_limits<std::uint64_t>::max());
    rule = parseOne("every 100 frames: unknown chunk");
    EXPECT_EQ(rule.occasion, Occasion::Frame);
    EXPECT_EQ(rule.firstFrame, 100U);
    EXPECT_EQ(rule.frameStep, 100U);
}

TEST(FaultScript, EveryFaultOfAFrameHasItsWords) {
    const std::vector<FaultRule> rules = ParseFaultScript(
        "frame 1: missing packets 1, resent packets 2, wrong size -3, wrong size +4, bad trailer, "
        "lost end, cut chunk, unknown chunk, late 1.5 ms, events 9, unplug, unplug for 2s");
    ASSERT_EQ(rules.size(), 12U);
    EXPECT_EQ(rules[1].fault, Fault::ResentPackets);
    EXPECT_EQ(rules[2].amount, -3);
    EXPECT_EQ(rules[3].amount, 4);
    EXPECT_EQ(rules[5].fault, Fault::LostEnd);
    EXPECT_EQ(rules[6].fault, Fault::CutChunk);
    EXPECT_EQ(rules[7].fault, Fault::UnknownChunk);
    EXPECT_EQ(rules[8].duration, 1500us);
    EXPECT_EQ(rules[9].amount, 9);
    EXPECT_EQ(rules[10].duration, 0s);
    EXPECT_EQ(rules[11].duration, 2s);
    for (const FaultRule& rule : rules) {
        EXPECT_EQ(rule.firstFrame, 1U);
    }
}

TEST(FaultScript, OtherOccasionsHaveTheirOwnFaults) {
    EXPECT_EQ(parseOne("open: in use").holder, "another program (192.0.2.1)");
    EXPECT_EQ(parseOne("open: in use by \"line 4\"").holder, "line 4");
    EXPECT_EQ(parseOne("start: unplug for 20 ms").occasion, Occasion::Start);
    EXPECT_EQ(parseOne("stop: refuse").occasion, Occasion::Stop);
    EXPECT_EQ(parseOne("idle 300 ms: unplug").time, 300ms);
    EXPECT_EQ(parseOne("after 2 s: unplug").occasion, Occasion::After);
    EXPECT_EQ(parseOne("every 250us: events 3").time, 250us);
    EXPECT_EQ(parseOne("read Width: time out").duration, 100ms);
    EXPECT_EQ(parseOne("write Gain: time out 5 ms").duration, 5ms);
    EXPECT_EQ(parseOne("write \"Gain of Red\": refuse").feature, "Gain of Red");
    EXPECT_EQ(parseOne("write DeviceUserID: refuse").feature, "DeviceUserID");
}

TEST(FaultScript, RulesCanBeForOneCameraAndForOneTime) {
    const FaultRule rule = parseOne("camera 2 once start: unplug");
    EXPECT_EQ(rule.camera, 2U);
    EXPECT_TRUE(rule.once);
}

TEST(FaultScript, LinesEndWithTheLineOrWithASemicolon) {
    EXPECT_EQ(ParseFaultScript("start: unplug; stop: unplug\n open: in use # always\r\n").size(),
              3U);
}

TEST(FaultScript, MistakeIsToldWithLineAndColumn) {
    EXPECT_EQ(errorOf("frame 1: explode"),
              "Fault script, line 1, column 10: expected a fault, found 'explode'.");
    EXPECT_EQ(errorOf("start: unplug\n\n  frame x: late 1 ms"),
              "Fault script, line 3, column 9: expected the number of a frame, found 'x'.");
    EXPECT_EQ(errorOf("start: unplug; when 1"),
              "Fault script, line 1, column 16: expected 'frame', 'every', 'open', 'start', "
              "'stop', 'idle', 'after', 'read' or 'write', found 'when'.");
    EXPECT_EQ(errorOf("frame 1: missing packet 1"),
              "Fault script, line 1, column 18: expected 'packets', found 'packet'.");
    EXPECT_EQ(errorOf("frame 1 late 1 ms"),
              "Fault script, line 1, column 9: expected ':', found 'late'.");
    EXPECT_EQ(errorOf("frame 1: lost end cut"),
              "Fault script, line 1, column 19: expected ',' or the end of the line, found 'cut'.");
    EXPECT_EQ(errorOf("frame 1:"),
              "Fault script, line 1, column 9: expected a fault, found the end.");
    EXPECT_EQ(errorOf("frame 1: late\n"),
              "Fault script, line 1, column 14: expected a time, found the end of the line.");
    EXPECT_EQ(errorOf("frame 1: late 5"),
              "Fault script, line 1, column 16: expected 'us', 'ms' or 's', found the end.");
    EXPECT_EQ(errorOf("open: in use by me"),
              "Fault script, line 1, column 17: expected a text in double quotes, found 'me'.");
    EXPECT_EQ(errorOf("open: in use by \"me\n"),
              "Fault script, line 1, column 17: the text has no end.");
    EXPECT_EQ(errorOf("frame 1: late 5 ms!"),
              "Fault script, line 1, column 19: unexpected character '!'.");
}

TEST(FaultScript, ValueThatMakesNoSenseIsToldWithItsPlace) {
    EXPECT_EQ(errorOf("frame 0: lost end"),
              "Fault script, line 1, column 7: '0' is no whole number from 1 on.");
    EXPECT_EQ(errorOf("frame 1.5: lost end"),
              "Fault script, line 1, column 7: '1.5' is no whole number from 1 on.");
    EXPECT_EQ(errorOf("frame 1..5: lost end"),
              "Fault script, line 1, column 7: '1..5' is no number.");
    EXPECT_EQ(errorOf("frame 5 to 4: lost end"),
              "Fault script, line 1, column 12: the last frame comes before the first.");
    EXPECT_EQ(errorOf("frame 5: wrong size 4"),
              "Fault script, line 1, column 21: '4' has no sign.");
    EXPECT_EQ(errorOf("idle 0 ms: unplug"), "Fault script, line 1, column 6: '0' is no time.");
    EXPECT_EQ(errorOf("idle 0.0001 us: unplug"),
              "Fault script, line 1, column 6: '0.0001' is no time.");
    EXPECT_EQ(errorOf("idle -3 ms: unplug"), "Fault script, line 1, column 6: '-3' is no time.");
    EXPECT_EQ(errorOf("every 1e99 frames: lost end"),
              "Fault script, line 1, column 8: expected 'us', 'ms' or 's', found 'e99'.");
    EXPECT_EQ(errorOf("frame 99999999999999999999999: lost end"),
              "Fault script, line 1, column 7: '99999999999999999999999' is no whole number from "
              "1 on.");
    EXPECT_EQ(errorOf("read Colour: refuse"),
              "Fault script, line 1, column 6: the device has no register of a feature 'Colour'.");
    EXPECT_EQ(errorOf("open: missing packets 3"),
              "Fault script, line 1, column 7: 'missing packets' can't happen then.");
    EXPECT_EQ(errorOf("frame 3: refuse"),
              "Fault script, line 1, column 10: 'refuse' can't happen then.");
}

TEST(FaultScript, AnyTextIsEitherRulesOrAnErrorWithItsPlace) {
    const std::vector<std::string> words = {
        "frame", "every",  "frames",  "to",      "open", "start",  "idle",   "read",  "Width",
        "once",  "camera", "missing", "packets", "late", "unplug", "for",    "in",    "use",
        "by",    "events", "time",    "out",     ":",    ",",      ";",      "\n",    "#",
        "\"a\"", "\"",     "1",       "-3",      "+4",   "2.5",    "ms",     "s",     "\xff",
        "wrong", "size",   "cut",     "chunk",   "0",    "1e9",    "refuse", "write", "\t"};
    std::mt19937 random(1);
    std::size_t valid = 0;
    for (int round = 0; round < 20000; ++round) {
        std::string script = round % 2 == 0 ? "frame 1: " : "";
        for (std::size_t count = random() % 8; count > 0; --count) {
            script += words[random() % words.size()] + (random() % 4 == 0 ? "" : " ");
        }
        const std::string error = errorOf(script.c_str());
        valid += error == "no error" ? 1U : 0U;
        EXPECT_TRUE(error == "no error" || error.starts_with("Fault script, line ")) << script;
    }
    EXPECT_GT(valid, 10U);
}

}  // namespace
