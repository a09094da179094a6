#include "anythingtonodemapadapter/enumentryparameterport.h"

#include <gtest/gtest.h>

#include "testowner.h"

namespace AnythingToNodeMapAdapter::Test {

TEST(EnumEntryParameterPort, HoldsItsConstantAndStaysForExperts) {
    const auto entry = makeColorEntry(Blue, "Blue", {true, true, false, false});
    EXPECT_EQ(entry->getValue(), 7);
    EXPECT_STREQ(entry->getName(), "Blue");
    EXPECT_STREQ(entry->getDisplayName(), "Blue Colour");
    EXPECT_STREQ(entry->getVisibility(), "Expert");
    EXPECT_TRUE(entry->isAvailable());
    EXPECT_TRUE(entry->isWritable());
    EXPECT_FALSE(entry->hasAvailabilityRegister());
    EXPECT_FALSE(entry->hasLockRegister());
}

TEST(EnumEntryParameterPort, WidensAnUnsignedConstantWithoutASign) {
    const EnumEntryParameterPort<unsigned int> entry(0x82180044U, "YUV444Planar", "", "", "", true,
                                                     true, false, false);
    EXPECT_EQ(entry.getValue(), 0x82180044);
}

}  // namespace AnythingToNodeMapAdapter::Test
