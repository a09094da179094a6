#include "aravis/frame.h"

#include <gtest/gtest.h>

namespace Orlix::Aravis {
namespace {

TEST(FrameCounter, CountsFromOneWhateverTheFirstNumberIs) {
    FrameCounter counter;
    EXPECT_EQ(counter.Count(400).number, 1U);
    EXPECT_EQ(counter.Count(401).number, 2U);
}

TEST(FrameCounter, GapsAreLostFrames) {
    FrameCounter counter;
    static_cast<void>(counter.Count(1));
    const auto place = counter.Count(5);
    EXPECT_EQ(place.number, 5U);
    EXPECT_EQ(place.lost, 3U);
}

TEST(FrameCounter, ShortNumbersBeginAnewAtOne) {
    FrameCounter counter;
    static_cast<void>(counter.Count(65534));
    static_cast<void>(counter.Count(65535));
    auto place = counter.Count(1);
    EXPECT_EQ(place.number, 3U);
    EXPECT_EQ(place.lost, 0U);
    FrameCounter other;
    static_cast<void>(other.Count(65535));
    place = other.Count(3);
    EXPECT_EQ(place.number, 4U);
    EXPECT_EQ(place.lost, 2U);
}

TEST(FrameCounter, LongNumbersDoNot) {
    FrameCounter counter;
    static_cast<void>(counter.Count(65535));
    const auto place = counter.Count(65536);
    EXPECT_EQ(place.number, 2U);
    EXPECT_EQ(place.lost, 0U);
}

TEST(FrameCounter, CameraThatBeginsAnewLosesNothing) {
    FrameCounter counter;
    static_cast<void>(counter.Count(20));
    const auto place = counter.Count(1);
    EXPECT_EQ(place.number, 2U);
    EXPECT_EQ(place.lost, 0U);
}

TEST(FrameCounter, AFrameWhoseNumberGotLostIsTheNextOne) {
    FrameCounter counter;
    static_cast<void>(counter.Count(20));
    EXPECT_EQ(counter.CountUnknown(), 2U);
    auto place = counter.Count(22);
    EXPECT_EQ(place.number, 3U);
    EXPECT_EQ(place.lost, 0U);
    EXPECT_EQ(counter.CountUnknown(), 4U);
    place = counter.Count(25);
    EXPECT_EQ(place.number, 6U);
    EXPECT_EQ(place.lost, 1U) << "of the two that weren't heard of one came without its number";
}

TEST(FrameCounter, AFrameWhoseNumberGotLostMayBeTheOneThatBeginsAnew) {
    FrameCounter counter;
    static_cast<void>(counter.Count(65535));
    EXPECT_EQ(counter.CountUnknown(), 2U);
    const auto place = counter.Count(2);
    EXPECT_EQ(place.number, 3U);
    EXPECT_EQ(place.lost, 0U);
}

TEST(FrameCounter, TheFirstFrameMayLackItsNumber) {
    FrameCounter counter;
    EXPECT_EQ(counter.CountUnknown(), 1U);
    const auto place = counter.Count(65531);
    EXPECT_EQ(place.number, 2U);
    EXPECT_EQ(place.lost, 0U) << "cameras may begin with any number";
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
        EXPECT_EQ(reader.Read(*source, frame, false), 0U);
        return frame.frameId;
    };
    EXPECT_EQ(numberOf(30), 1U);
    EXPECT_EQ(numberOf(0), 2U);
    EXPECT_EQ(numberOf(32), 3U);
}

}  // namespace
}  // namespace Orlix::Aravis
