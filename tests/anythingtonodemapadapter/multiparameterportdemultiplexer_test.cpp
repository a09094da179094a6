#include "anythingtonodemapadapter/multiparameterportdemultiplexer.h"

#include <gtest/gtest.h>

#include <limits>

#include "anythingtonodemapadapter/booleannodemapport.h"
#include "anythingtonodemapadapter/integernodemapport.h"
#include "nodemapporttools.h"
#include "testowner.h"

namespace AnythingToNodeMapAdapter::Test {

using Detail::CMultiParameterPortDemultiplexer;

// An integer at 0x0 to 0x2f and a boolean at 0x30 to 0x47.
class MultiParameterPortDemultiplexer : public testing::Test {
protected:
    MultiParameterPortDemultiplexer() {
        std::ostringstream out;
        std::int64_t address = 0;
        speed.generateAndRecord(out, false, "All", "", address);
        enabled.generateAndRecord(out, false, "All", "", address);
    }

    TestOwner owner;
    Detail::CIntegerNodeMapPort speed{makeSpeed(owner), 0};
    Detail::CBooleanNodeMapPort enabled{makeEnabled(owner), 0};
    CMultiParameterPortDemultiplexer demultiplexer;
};

TEST_F(MultiParameterPortDemultiplexer, FindsNothingBeforeItIsSorted) {
    demultiplexer.add(speed);
    EXPECT_EQ(demultiplexer.find(0, 8), nullptr);
    demultiplexer.sort();
    ASSERT_NE(demultiplexer.find(0, 8), nullptr);
    EXPECT_EQ(demultiplexer.find(0, 8)->port, &speed);
}

TEST_F(MultiParameterPortDemultiplexer, TakesNothingMoreOnceSorted) {
    demultiplexer.add(speed);
    demultiplexer.sort();
    demultiplexer.add(enabled);
    EXPECT_EQ(demultiplexer.find(0x30, 8), nullptr);
}

TEST_F(MultiParameterPortDemultiplexer, FindsTheBlockThatHoldsTheWholeRange) {
    demultiplexer.add(enabled);
    demultiplexer.add(speed);
    demultiplexer.sort();
    EXPECT_EQ(demultiplexer.find(0x28, 8)->port, &speed);
    EXPECT_EQ(demultiplexer.find(0x30, 8)->port, &enabled);
    EXPECT_EQ(demultiplexer.find(0x30, 8)->start, 0x30);
    EXPECT_EQ(demultiplexer.find(0x2c, 8), nullptr);
    EXPECT_EQ(demultiplexer.find(0x48, 8), nullptr);
    EXPECT_EQ(demultiplexer.find(0x44, 8), nullptr);
}

TEST_F(MultiParameterPortDemultiplexer, ExtremeRangesBelongToNobody) {
    constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
    demultiplexer.add(speed);
    demultiplexer.sort();
    EXPECT_EQ(demultiplexer.find(most, 8), nullptr);
    EXPECT_EQ(demultiplexer.find(8, most), nullptr);
    EXPECT_EQ(demultiplexer.find(-8, 8), nullptr);
    EXPECT_EQ(demultiplexer.find(0, -1), nullptr);
}

TEST_F(MultiParameterPortDemultiplexer, ARemovedPortLeavesItsRange) {
    demultiplexer.add(speed);
    demultiplexer.add(enabled);
    demultiplexer.sort();
    demultiplexer.remove(speed);
    ASSERT_NE(demultiplexer.find(0, 8), nullptr);
    EXPECT_EQ(demultiplexer.find(0, 8)->port, nullptr);
    EXPECT_EQ(demultiplexer.find(0x30, 8)->port, &enabled);
}

TEST_F(MultiParameterPortDemultiplexer, APortThatMovedInADescriptionLeavesItsOwnRecord) {
    demultiplexer.add(speed);
    demultiplexer.add(enabled);
    demultiplexer.sort();
    std::ostringstream out;
    std::int64_t address = 0;
    enabled.generateAndRecord(out, false, "All", "", address);
    demultiplexer.remove(enabled);
    EXPECT_EQ(demultiplexer.find(0, 8)->port, &speed);
    EXPECT_EQ(demultiplexer.find(0x30, 8)->port, nullptr);
}

TEST_F(MultiParameterPortDemultiplexer, APortThatWasNeverAddedClearsTheRecordAroundItsRange) {
    Detail::CBooleanNodeMapPort stranger(makeEnabled(owner), 0);
    std::ostringstream out;
    std::int64_t address = 0x10;
    stranger.generateAndRecord(out, false, "All", "", address);
    demultiplexer.add(speed);
    demultiplexer.add(enabled);
    demultiplexer.sort();
    demultiplexer.remove(stranger);
    EXPECT_EQ(demultiplexer.find(0, 8)->port, nullptr);
    EXPECT_EQ(demultiplexer.find(0x30, 8)->port, &enabled);
}

TEST_F(MultiParameterPortDemultiplexer, StartsAnewWhenCleared) {
    demultiplexer.add(speed);
    demultiplexer.sort();
    demultiplexer.clear();
    EXPECT_EQ(demultiplexer.find(0, 8), nullptr);
    demultiplexer.add(enabled);
    demultiplexer.sort();
    EXPECT_EQ(demultiplexer.find(0x30, 8)->port, &enabled);
}

}  // namespace AnythingToNodeMapAdapter::Test
