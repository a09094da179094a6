#include "orlixcamera/copycounter.h"

#include <gtest/gtest.h>

#include <limits>

namespace Orlix {
namespace {

TEST(PixelCopyCounter, ResetGivesTheSumSinceTheLastReset) {
    PixelCopyCounter::Reset();
    PixelCopyCounter::Add(3);
    PixelCopyCounter::Add(std::uint64_t{1} << 40U);
    EXPECT_EQ(PixelCopyCounter::Read(), (std::uint64_t{1} << 40U) + 3);
    EXPECT_EQ(PixelCopyCounter::Reset(), (std::uint64_t{1} << 40U) + 3);
    EXPECT_EQ(PixelCopyCounter::Read(), 0U);
}

}  // namespace
}  // namespace Orlix
