#include "orlixdataprocessingcore/utils/uuid.h"

#include <gtest/gtest.h>

#include "orlixdataprocessingcore/expectthrow.h"

namespace {

using GenICam::gcstring;
using Orlix::DataProcessing::Utils::Uuid;
using Orlix::Test::expectThrow;

TEST(Uuid, ReadsAndWritesItsTextInLowerCase) {
    const Uuid uuid("846BCA11-6bf2-4895-88c4-fe038f5a659c");
    EXPECT_EQ(uuid.toString(), "846bca11-6bf2-4895-88c4-fe038f5a659c");
    EXPECT_EQ(uuid.getBytes()[0], 0x84);
    EXPECT_EQ(uuid.getBytes()[15], 0x9C);
}

TEST(Uuid, ComparesByBytes) {
    const Uuid a("00000000-0000-0000-0000-000000000001");
    const Uuid b("00000000-0000-0000-0000-000000000002");
    EXPECT_TRUE(a < b);
    EXPECT_TRUE(a == Uuid(a.toString()));
    EXPECT_TRUE(Uuid() < a);
}

TEST(Uuid, RefusesOtherTextsAndQuotesThem) {
    for (const char* text :
         {"", "846bca11", "846bca11-6bf2-4895-88c4-fe038f5a659",
          "846bca11-6bf2-4895-88c4-fe038f5a659cc", "846bca11_6bf2-4895-88c4-fe038f5a659c",
          "846bca1g-6bf2-4895-88c4-fe038f5a659c"}) {
        expectThrow<GenICam::InvalidArgumentException>(
            [&] { static_cast<void>(Uuid(gcstring(text))); },
            "Invalid UUID \"" + std::string(text) + "\".");
    }
}

}  // namespace
