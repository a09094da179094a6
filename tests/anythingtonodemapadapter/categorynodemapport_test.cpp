#include "anythingtonodemapadapter/categorynodemapport.h"

#include <gtest/gtest.h>

#include "nodemapporttools.h"
#include "testowner.h"

namespace AnythingToNodeMapAdapter::Test {

using Detail::CCategoryNodeMapPort;

TEST(CategoryNodeMapPort, ReadsAndWritesDoNothing) {
    CCategoryNodeMapPort port(std::make_shared<CategoryParameterPort>("Root"), 0);
    EXPECT_EQ(readWord(port, 0), untouched);
    writeWord(port, 0, 1);
}

TEST(CategoryNodeMapPort, ListsItsFeaturesInTheOrderOfAddingWithoutAMergeAttribute) {
    CCategoryNodeMapPort port(std::make_shared<CategoryParameterPort>("Root"), 3);
    port.addDependency("Feature", "Speed");
    port.addDependency("Feature", "Color");
    port.addDependency("Feature", "Speed");
    EXPECT_EQ(generate(port),
              "    <Category Name=\"Root\">\n"
              "        <pFeature>Speed</pFeature>\n"
              "        <pFeature>Color</pFeature>\n"
              "        <pFeature>Speed</pFeature>\n"
              "    </Category>\n");
    EXPECT_EQ(blockSize(port), 0);
}

TEST(CategoryNodeMapPort, ShowsItsTextsButNoVisibility) {
    CCategoryNodeMapPort port(
        std::make_shared<DescribedCategoryParameterPort>("Control", "The Control", "Tip.", "Text."),
        0);
    EXPECT_EQ(generate(port),
              "    <Category Name=\"Control\">\n"
              "        <ToolTip>Tip.</ToolTip>\n"
              "        <Description>Text.</Description>\n"
              "        <DisplayName>The Control</DisplayName>\n"
              "    </Category>\n");
}

TEST(CategoryNodeMapPort, WithoutAParameterDescribesNothing) {
    CCategoryNodeMapPort port(nullptr, 0);
    EXPECT_EQ(generate(port), "");
}

}  // namespace AnythingToNodeMapAdapter::Test
