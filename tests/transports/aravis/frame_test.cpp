#include "aravis/frame.h"

#include <gtest/gtest.h>

namespace Orlix::Aravis {
namespace {

TEST(FrameCounter, CountsFromOneWhateverTheFirstNumberIs) {
    FrameCounter counter;
    EXPECT_EQ(counter.Count(400), 1U);
    EXPECT_EQ(counter.Count(401), 2U);
}

TEST(FrameCounter, GapsAreLostFrames) {
    FrameCounter counter;
    static_cast<void>(counter.Count(1));
    EXPECT_EQ(counter.Count(5), 5U);
}

TEST(FrameCounter, ShortNumbersBeginAnewAtOne) {
    FrameCounter counter;
    static_cast<void>(counter.Count(65534));
    static_cast<void>(counter.Count(65535));
    EXPECT_EQ(counter.Count(1), 3U);
    FrameCounter other;
    static_cast<void>(other.Count(65535));
    EXPECT_EQ(other.Count(3), 4U);
}

TEST(FrameCounter, LongNumbersDoNot) {
    FrameCounter counter;
    static_cast<void>(counter.Count(65535));
    EXPECT_EQ(counter.Count(65536), 2U);
}

TEST(FrameCounter, CameraThatBeginsAnewLosesNothing) {
    FrameCounter counter;
    static_cast<void>(counter.Count(20));
    EXPECT_EQ(counter.Count(1), 2U);
}

TEST(FrameCounter, AFrameWhoseNumberGotLostIsTheNextOne) {
    FrameCounter counter;
    static_cast<void>(counter.Count(20));
    EXPECT_EQ(counter.CountUnknown(), 2U);
    EXPECT_EQ(counter.Count(22), 3U);
    EXPECT_EQ(counter.CountUnknown(), 4U);
    EXPECT_EQ(counter.Count(25), 6U);
}

TEST(FrameCounter, AFrameWhoseNumberGotLostMayBeTheOneThatBeginsAnew) {
    FrameCounter counter;
    static_cast<void>(counter.Count(65535));
    EXPECT_EQ(counter.CountUnknown(), 2U);
    EXPECT_EQ(counter.Count(2), 3U);
}

TEST(FrameCounter, TheFirstFrameMayLackItsNumber) {
    FrameCounter counter;
    EXPECT_EQ(counter.CountUnknown(), 1U);
    EXPECT_EQ(counter.Count(65531), 2U) << "cameras may begin with any number";
}

// A buffer as Aravis leaves it that got packets without the leader.
TEST(FrameReader, FramesWithoutALeaderDoNotDisturbTheNumbersOfOthers) {
    FrameReader reader(Protocol::GigE, 16);
    std::uint8_t memory[16] = {};
    const ObjectPtr<ArvBuffer> source(arv_buffer_new_full(sizeof memory, memory, nullptr, nullptr));
    Transport::StreamBuffer frame;
    frame.capacity = sizeof memory;
    const auto numberOf = [&](guint64 blockId) {
        FrameReader::Forget(*source);
        if (blockId != 0) {
            arv_buffer_set_frame_id(source.get(), blockId);
        }
        reader.Read(*source, frame, Evidence::None);
        return frame.frameId;
    };
    EXPECT_EQ(numberOf(30), 1U);
    EXPECT_EQ(numberOf(0), 2U);
    EXPECT_EQ(numberOf(32), 3U);
}

}  // namespace
}  // namespace Orlix::Aravis
