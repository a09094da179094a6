// The form that descriptions made at run time have: one port, value, range and state registers for
// each parameter.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "genapi/testmap.h"

using namespace GenApiTest;

namespace {

std::string flags(const std::string& name, int available, int locked) {
    return Reg{name + "IsAvailable", available, "RO"}.operator std::string() +
           std::string(Reg{name + "IsLocked", locked, "RO"});
}

const std::string integerNodes =
    "<Integer Name=\"Rate\" MergePriority=\"+1\"><ToolTip>tip</ToolTip><DisplayName>Frame "
    "Rate</DisplayName><Visibility>Beginner</Visibility>"
    "<pIsAvailable>RateIsAvailable</pIsAvailable><pIsLocked>RateIsLocked</pIsLocked>"
    "<Streamable>Yes</Streamable><pValue>RateValue</pValue><pMin>RateMin</pMin>"
    "<pMax>RateMax</pMax><pInc>RateInc</pInc><Representation>PureNumber</Representation>"
    "</Integer>" +
    std::string(Reg{"RateValue", 0}) + std::string(Reg{"RateMax", 8, "RO"}) +
    std::string(Reg{"RateMin", 16, "RO"}) + std::string(Reg{"RateInc", 24, "RO"}) +
    flags("Rate", 32, 40);

struct RateMap : TestMap {
    RateMap() : TestMap(integerNodes) {
        port.poke(0, 25);
        port.poke(8, 500);
        port.poke(16, 1);
        port.poke(24, 1);
        port.poke(32, 1);
    }
};

}  // namespace

TEST(GeneratedDescription, IntegerReadsAndWritesThroughItsRegisters) {
    RateMap t;
    EXPECT_EQ(t.integer("Rate")->GetValue(), 25);
    EXPECT_EQ(t.integer("Rate")->GetMin(), 1);
    EXPECT_EQ(t.integer("Rate")->GetMax(), 500);
    EXPECT_EQ(t.integer("Rate")->GetInc(), 1);
    t.integer("Rate")->SetValue(30);
    EXPECT_EQ(t.port.peek(0), 30);
    EXPECT_EQ(t.mode("Rate"), RW);
    EXPECT_TRUE(t.remarks().empty());
    EXPECT_EQ(t.node("Rate")->GetDisplayName(), "Frame Rate");
    EXPECT_TRUE(t.node("Rate")->IsStreamable());
}

TEST(GeneratedDescription, ReadingTouchesTheAvailabilityRegisterAndTheValueOnly) {
    RateMap t;
    (void)t.integer("Rate")->GetValue();
    EXPECT_THAT(t.port.accesses, testing::ElementsAre(Access{'R', 32, 8}, Access{'R', 0, 8}));
}

TEST(GeneratedDescription, AValueOutOfItsRangeIsRefusedBeforeTheWrite) {
    RateMap t;
    EXPECT_EQ(errorOf<GenICam::OutOfRangeException>([&] { t.integer("Rate")->SetValue(501); }),
              "Node 'Rate' can not take 501: its range is 1 to 500.");
    EXPECT_EQ(t.port.count('W'), 0U);
}

TEST(GeneratedDescription, ALockedIntegerIsReadOnlyAndNamesItsLock) {
    RateMap t;
    t.port.poke(40, 1);
    EXPECT_EQ(t.mode("Rate"), RO);
    EXPECT_EQ(t.integer("Rate")->GetValue(), 25);
    EXPECT_EQ(errorOf<GenICam::AccessException>([&] { t.integer("Rate")->SetValue(2); }),
              "Node 'Rate' is not writable, its access mode is RO: 'Rate' is locked by "
              "'RateIsLocked'.");
    EXPECT_EQ(t.port.count('W'), 0U);
}

TEST(GeneratedDescription, AnIntegerThatIsNotAvailableIsNeitherReadNorWritten) {
    RateMap t;
    t.port.poke(32, 0);
    EXPECT_EQ(t.mode("Rate"), NA);
    EXPECT_EQ(errorOf<GenICam::AccessException>([&] { (void)t.integer("Rate")->GetValue(); }),
              "Node 'Rate' is not readable, its access mode is NA: 'Rate' is not available, as "
              "'RateIsAvailable' says.");
    EXPECT_THROW(t.integer("Rate")->SetValue(2), GenICam::AccessException);
}
