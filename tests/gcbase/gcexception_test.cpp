#include "gcbase/gcexception.h"

#include <gtest/gtest.h>

#include "gcbase/gcstring.h"

namespace {

using namespace GenICam;

TEST(GcException, CarriesDescriptionFileAndLine) {
    const RuntimeException error("Something is wrong.", "src/place.cpp", 17);
    EXPECT_STREQ(error.GetDescription(), "Something is wrong.");
    EXPECT_STREQ(error.GetSourceFileName(), "src/place.cpp");
    EXPECT_EQ(error.GetSourceLine(), 17U);
}

TEST(GcException, WhatNamesTheClassAndThePlace) {
    const InvalidArgumentException error("Bad.", "a.cpp", 3);
    EXPECT_STREQ(error.what(), "Bad. : InvalidArgumentException thrown (file 'a.cpp', line 3)");
    const AccessException named("Bad.", "a.cpp", 3, "SpecialName");
    EXPECT_STREQ(named.what(), "Bad. : SpecialName thrown (file 'a.cpp', line 3)");
}

TEST(GcException, IsCaughtAsGenericAndAsStandardException) {
    EXPECT_THROW(throw TimeoutException("t", "f", 1), GenericException);
    EXPECT_THROW(throw PropertyException("t", "f", 1), std::exception);
    EXPECT_THROW(ThrowBadAlloc("f", 1), BadAllocException);
}

TEST(GcException, AFailedAllocationOfAStringTellsItsPlace) {
    try {
        ThrowBadAlloc("src/place.cpp", 17);
    } catch (const BadAllocException& error) {
        EXPECT_STREQ(error.GetDescription(), "Could not allocate memory for a string.");
        EXPECT_STREQ(error.GetSourceFileName(), "src/place.cpp");
        EXPECT_EQ(error.GetSourceLine(), 17U);
    }
}

TEST(GcException, TakesNullTextsAsEmpty) {
    const GenericException error(nullptr, nullptr, 0, nullptr);
    EXPECT_STREQ(error.GetDescription(), "");
    EXPECT_STREQ(error.GetSourceFileName(), "");
}

TEST(GcString, TakesANullPointerAsEmpty) {
    EXPECT_TRUE(gcstring(static_cast<const char*>(nullptr)).empty());
}

TEST(GcString, ComparesAndJoinsLikeAText) {
    const gcstring a("abc");
    EXPECT_EQ(a + "d", gcstring("abcd"));
    EXPECT_TRUE(a < gcstring("abd"));
    EXPECT_EQ(a.substr(1), "bc");
    EXPECT_EQ(a.find('c'), 2U);
    EXPECT_EQ(a.find("zz"), gcstring::npos);
}

}  // namespace
