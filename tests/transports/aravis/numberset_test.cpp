#include "aravis/numberset.h"

#include <gtest/gtest.h>

namespace Orlix::Aravis {
namespace {

TEST(NumberSet, KnowsWhatWasAddedInAnyOrder) {
    NumberSet numbers;
    for (const std::uint64_t number : {5U, 3U, 4U, 9U, 4U, 8U}) {
        numbers.Add(number);
    }
    EXPECT_EQ(numbers.Count(), 5U);
    for (std::uint64_t number = 2; number <= 10; ++number) {
        EXPECT_EQ(numbers.Has(number), number != 2 && number != 6 && number != 7 && number != 10)
            << number;
    }
}

TEST(NumberSet, RemovesFirstLastMiddleAndWhatIsNotThere) {
    NumberSet numbers;
    for (std::uint64_t number = 1; number <= 5; ++number) {
        numbers.Add(number);
    }
    numbers.Remove(3);
    numbers.Remove(1);
    numbers.Remove(5);
    numbers.Remove(7);
    EXPECT_EQ(numbers.Count(), 2U);
    EXPECT_TRUE(numbers.Has(2));
    EXPECT_TRUE(numbers.Has(4));
    numbers.Add(3);
    EXPECT_EQ(numbers.Count(), 3U);
}

TEST(NumberSet, TakesAllBelowANumber) {
    NumberSet numbers;
    for (const std::uint64_t number : {1U, 2U, 4U, 5U, 6U, 9U}) {
        numbers.Add(number);
    }
    EXPECT_EQ(numbers.FirstAbove(0), 1U);
    EXPECT_EQ(numbers.FirstAbove(4), 5U);
    EXPECT_EQ(numbers.FirstAbove(6), 9U);
    EXPECT_EQ(numbers.FirstAbove(9), std::nullopt);
    EXPECT_EQ(numbers.TakeBelow(1), 0U);
    EXPECT_EQ(numbers.TakeBelow(6), 4U);
    EXPECT_EQ(numbers.Count(), 2U);
    EXPECT_EQ(numbers.TakeBelow(100), 2U);
    EXPECT_EQ(numbers.Count(), 0U);
}

}  // namespace
}  // namespace Orlix::Aravis
