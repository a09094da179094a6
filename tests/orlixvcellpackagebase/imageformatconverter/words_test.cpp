#include "imageformatconverter/words.h"

#include <gtest/gtest.h>

#include <limits>

#include "orlixcamera/imageformatconverter.h"
#include "support/texts.h"

namespace Plugin::OrlixVCellPackageBase {
namespace {

using E = GenICam::InvalidArgumentException;

TEST(Words, EveryOrientationHasOne) {
    EXPECT_STREQ(toOrientationWord(0), "BottomUp");
    EXPECT_STREQ(toOrientationWord(1), "TopDown");
    EXPECT_STREQ(toOrientationWord(2), "Unchanged");
    EXPECT_EQ(toOrientation("BottomUp"), Orlix::OutputOrientation_BottomUp);
    EXPECT_EQ(toOrientation("TopDown"), Orlix::OutputOrientation_TopDown);
    EXPECT_EQ(toOrientation("Unchanged"), Orlix::OutputOrientation_Unchanged);
}

TEST(Words, EveryBitAlignmentHasOne) {
    EXPECT_STREQ(toBitAlignmentWord(0), "LsbAligned");
    EXPECT_STREQ(toBitAlignmentWord(1), "MsbAligned");
    EXPECT_EQ(toBitAlignment("LsbAligned"), Orlix::OutputBitAlignment_LsbAligned);
    EXPECT_EQ(toBitAlignment("MsbAligned"), Orlix::OutputBitAlignment_MsbAligned);
}

TEST(Words, UnknownValuesAreRefused) {
    for (const std::int64_t value : {std::int64_t{3}, std::int64_t{-1}, std::int64_t{1} << 32,
                                     std::numeric_limits<std::int64_t>::max()}) {
        EXPECT_EQ(getFailure<E>([&] { static_cast<void>(toOrientationWord(value)); }),
                  "Unknown output orientation value found.");
        EXPECT_EQ(getFailure<E>([&] { static_cast<void>(toBitAlignmentWord(value)); }),
                  "Unknown output bit alignment value found.");
    }
    EXPECT_THROW(static_cast<void>(toBitAlignmentWord(2)), E);
}

TEST(Words, UnknownWordsAreRefused) {
    for (const char* word : {"", "topdown", "TopDown ", "LSBALIGNED", "Lsb"}) {
        EXPECT_EQ(getFailure<E>([&] { static_cast<void>(toOrientation(word)); }),
                  "Unknown symbolic name of output orientation found.");
        EXPECT_EQ(getFailure<E>([&] { static_cast<void>(toBitAlignment(word)); }),
                  "Unknown symbolic name of output bit alignment found.");
    }
}

}  // namespace
}  // namespace Plugin::OrlixVCellPackageBase
