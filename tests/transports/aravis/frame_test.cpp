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

}  // namespace
}  // namespace Orlix::Aravis
