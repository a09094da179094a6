#include "orlixdataprocessingcore/utils/helper.h"

#include <gtest/gtest.h>

namespace {

using GenICam::gcstring;
using Orlix::DataProcessing::Utils::Helper;

TEST(Helper, ToUpperChangesAsciiLettersOnly) {
    EXPECT_EQ(Helper::toUpper("JpEg az{`09"), "JPEG AZ{`09");
    EXPECT_EQ(Helper::toUpper("\xC3\xA4i"), "\xC3\xA4I");
    EXPECT_EQ(Helper::toUpper(""), "");
}

TEST(Helper, TrimCutsBlanksOfEveryKindAtBothEnds) {
    EXPECT_EQ(Helper::trim(" \t\r\n\v\f a b \n"), "a b");
    EXPECT_EQ(Helper::trim("a"), "a");
    EXPECT_EQ(Helper::trim("  "), "");
    EXPECT_EQ(Helper::trim(""), "");
    EXPECT_EQ(Helper::trim("\xC2\xA0x"), "\xC2\xA0x");
}

TEST(Helper, LeavesItsArgumentAlone) {
    const gcstring text(" a ");
    EXPECT_EQ(Helper::trim(Helper::toUpper(text)), "A");
    EXPECT_EQ(text, " a ");
}

}  // namespace
