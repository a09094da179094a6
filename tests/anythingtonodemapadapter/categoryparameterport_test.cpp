#include "anythingtonodemapadapter/categoryparameterport.h"

#include <gtest/gtest.h>

namespace AnythingToNodeMapAdapter::Test {

TEST(CategoryParameterPort, HasNothingButAName) {
    const CategoryParameterPort port("Root");
    EXPECT_STREQ(port.getName(), "Root");
    EXPECT_STREQ(port.getDisplayName(), "");
    EXPECT_STREQ(port.getToolTip(), "");
    EXPECT_STREQ(port.getDescription(), "");
    EXPECT_STREQ(port.getVisibility(), "Expert");
    EXPECT_EQ(port.getSize(), 0U);
}

TEST(CategoryParameterPort, CanBeDescribed) {
    const DescribedCategoryParameterPort port("Control", "The Control", "Tip.", "Text.");
    EXPECT_STREQ(port.getName(), "Control");
    EXPECT_STREQ(port.getDisplayName(), "The Control");
    EXPECT_STREQ(port.getToolTip(), "Tip.");
    EXPECT_STREQ(port.getDescription(), "Text.");
    EXPECT_STREQ(port.getVisibility(), "Expert");
    EXPECT_EQ(port.getSize(), 0U);
}

}  // namespace AnythingToNodeMapAdapter::Test
