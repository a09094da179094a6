#include "orlixdataprocessingcore/utils/datetime.h"

#include <gtest/gtest.h>

namespace {

using Orlix::DataProcessing::Utils::DateTime;

TEST(DateTime, WritesUtcWithNanoseconds) {
    EXPECT_EQ(DateTime().toString(), "1970-01-01T00:00:00.000000000Z");
    const DateTime time(DateTime::TimePoint(std::chrono::nanoseconds(951'782'400'000'000'123)));
    EXPECT_EQ(time.toString(), "2000-02-29T00:00:00.000000123Z");
    const DateTime early(DateTime::TimePoint(std::chrono::nanoseconds(-1)));
    EXPECT_EQ(early.toString(), "1969-12-31T23:59:59.999999999Z");
}

TEST(DateTime, ComparesByTime) {
    const DateTime before = DateTime::now();
    const DateTime after(before.getTimePoint() + std::chrono::nanoseconds(1));
    EXPECT_TRUE(before < after);
    EXPECT_TRUE(DateTime() < before);
}

}  // namespace
