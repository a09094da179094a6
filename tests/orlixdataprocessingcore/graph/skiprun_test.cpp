#include "orlixdataprocessingcore/graph/skiprun.h"

#include <gtest/gtest.h>

#include <vector>

namespace Orlix::DataProcessing::Core {
namespace {

using Numbers = std::vector<std::uint64_t>;

SkipRun runOf(const Numbers& numbers) {
    SkipRun run(numbers.front());
    for (std::size_t index = 1; index < numbers.size(); ++index) {
        run.append(numbers[index]);
    }
    return run;
}

Numbers takeAll(SkipRun run) {
    Numbers numbers{run.front()};
    while (!run.isLast()) {
        run.popFront();
        numbers.push_back(run.front());
    }
    return numbers;
}

TEST(SkipRun, KeepsEveryNumberInItsOrder) {
    for (const Numbers& numbers :
         {Numbers{7}, Numbers{7, 8, 9}, Numbers{1, 3, 5, 6, 8, 20}, Numbers{5, 4, 9, 8}}) {
        EXPECT_EQ(takeAll(runOf(numbers)), numbers);
    }
}

TEST(SkipRun, KnowsTheGreatestNumberInAnyOrder) {
    EXPECT_EQ(runOf({7}).greatest(), 7U);
    EXPECT_EQ(runOf({7, 8, 20}).greatest(), 20U);
    EXPECT_EQ(runOf({5, 9, 8}).greatest(), 9U);
}

TEST(SkipRun, MayGrowWhileItIsTaken) {
    SkipRun run = runOf({1, 3});
    run.popFront();
    EXPECT_TRUE(run.isLast());
    run.append(5);
    run.append(7);
    EXPECT_EQ(takeAll(run), (Numbers{3, 5, 7}));
}

// Two sources that send by turns leave no more than one of them.
TEST(SkipRun, EqualGapsTakeNoMorePlaceHoweverManyTheyAre) {
    constexpr std::uint64_t many = 10 * SkipRun::maxStretches;
    SkipRun run(1);
    Numbers numbers{1};
    for (std::uint64_t number = 3; number < many; number += 2) {
        run.append(number);
        numbers.push_back(number);
    }
    EXPECT_EQ(takeAll(run), numbers);
}

TEST(SkipRun, WithTooManyGapsKeepsTheOldestNumbersAndTheLast) {
    std::uint64_t number = 1;
    Numbers numbers{number};
    for (std::uint64_t gap = 1; gap <= 2 * SkipRun::maxStretches; ++gap) {
        numbers.push_back(number += gap);
    }
    const Numbers kept = takeAll(runOf(numbers));
    ASSERT_EQ(kept.size(), SkipRun::maxStretches + 1);
    EXPECT_TRUE(std::equal(kept.begin(), kept.end() - 2, numbers.begin()));
    EXPECT_TRUE(std::equal(kept.end() - 2, kept.end(), numbers.end() - 2));
}

}  // namespace
}  // namespace Orlix::DataProcessing::Core
