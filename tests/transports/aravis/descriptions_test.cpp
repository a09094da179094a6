#include "aravis/descriptions.h"

#include <gtest/gtest.h>

namespace Orlix::Aravis {
namespace {

TEST(Descriptions, CamerasOfOneModelShareTheirText) {
    const auto first = ShareDescription("<RegisterDescription/>");
    const auto second = ShareDescription("<RegisterDescription/>");
    const auto other = ShareDescription("<RegisterDescription />");
    EXPECT_EQ(first, second);
    EXPECT_NE(first, other);
    EXPECT_EQ(*other, "<RegisterDescription />");
}

TEST(Descriptions, SchemaIsReadFromTheFirstElement) {
    const auto text = [](const char* minor) {
        return std::string(
                   "<?xml version=\"1.0\"?>\n<RegisterDescription ModelName='M' "
                   "SchemaMajorVersion=\"1\" SchemaMinorVersion=\"") +
               minor + "\" SchemaSubMinorVersion=\"0\"><Port SchemaMinorVersion=\"0\"/>";
    };
    EXPECT_TRUE(IsBeforeSchema11(text("0")));
    EXPECT_FALSE(IsBeforeSchema11(text("1")));
    EXPECT_FALSE(IsBeforeSchema11("<RegisterDescription></RegisterDescription>"));
    EXPECT_FALSE(IsBeforeSchema11("PK"));
}

}  // namespace
}  // namespace Orlix::Aravis
