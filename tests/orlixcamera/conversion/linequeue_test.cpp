#include "orlixcamera/conversion/linequeue.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace Orlix::Test {
namespace {

std::vector<LineRange> TakeAll(LineQueue& queue) {
    std::vector<LineRange> taken;
    for (LineRange range = queue.Take(); !range.IsEmpty(); range = queue.Take()) {
        taken.push_back(range);
    }
    return taken;
}

TEST(LineQueue, GivesEachLineOnceAndPartsNoPairOfLines) {
    for (const std::uint32_t height : {1U, 2U, 3U, 17U, 600U, 601U, 4294967295U}) {
        for (const std::uint32_t least : {0U, 1U, 2U, 7U, 600U}) {
            LineQueue queue(height, 3, height > 601 ? height / 50 + least : least);
            std::uint32_t next = 0;
            for (const LineRange& range : TakeAll(queue)) {
                EXPECT_EQ(range.first, next);
                EXPECT_EQ(range.first % 2, 0U);
                EXPECT_GT(range.end, range.first);
                next = range.end;
            }
            EXPECT_EQ(next, height) << "height " << height << ", least " << least;
        }
    }
}

TEST(LineQueue, GivesFewerLinesTowardsTheEndButNotTooFew) {
    LineQueue queue(1000, 2, 16);
    const std::vector<LineRange> taken = TakeAll(queue);
    EXPECT_EQ(taken.front().end, 250U);
    for (std::size_t number = 1; number < taken.size(); ++number) {
        const std::uint32_t lines = taken[number].end - taken[number].first;
        EXPECT_LE(lines, taken[number - 1].end - taken[number - 1].first);
        EXPECT_TRUE(lines >= 16 || number + 1 == taken.size()) << lines;
    }
}

TEST(LineQueue, GivesAllLinesAtOnceWhereNoFewerAreWorthwhile) {
    for (const std::uint32_t height : {301U, 4294967295U}) {
        LineQueue queue(height, 1, height);
        const LineRange all = queue.Take();
        EXPECT_EQ(all.first, 0U);
        EXPECT_EQ(all.end, height);
        EXPECT_TRUE(queue.Take().IsEmpty());
        EXPECT_TRUE(queue.Take().IsEmpty());
    }
}

}  // namespace
}  // namespace Orlix::Test
