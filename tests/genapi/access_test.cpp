// The order of the reasons that decide an access mode.
#include <gtest/gtest.h>

#include "genapi/testmap.h"

using namespace GenApiTest;

namespace {

// A feature on register "R" of some mode, with the three conditions in variables.
struct AccessMap : TestMap {
    explicit AccessMap(const std::string& mode, const std::string& more = "")
        : TestMap(
              "<Integer "
              "Name=\"A\"><pIsImplemented>Imp</pIsImplemented><pIsAvailable>Av</pIsAvailable>"
              "<pIsLocked>Lock</pIsLocked>" +
              more +
              "<pValue>R</pValue></Integer>"
              "<Integer Name=\"Imp\"><Value>1</Value></Integer><Integer "
              "Name=\"Av\"><Value>1</Value></Integer>"
              "<Integer Name=\"Lock\"><Value>0</Value></Integer>" +
              std::string(Reg{"R", 0, mode})) {}
};

}  // namespace

TEST(Access, Rule61TheOrderOfTheConditions) {
    AccessMap t("RW");
    EXPECT_EQ(t.mode("A"), RW);
    t.integer("Lock")->SetValue(1);
    EXPECT_EQ(t.mode("A"), RO);
    t.integer("Av")->SetValue(0);
    EXPECT_EQ(t.mode("A"), NA);
    AccessMap u("RW");
    u.integer("Imp")->SetValue(0);
    u.integer("Av")->SetValue(0);
    EXPECT_EQ(u.mode("A"), NI);
}

TEST(Access, Rule61ALockedWriteOnlyNodeIsNotAvailable) {
    AccessMap t("WO");
    EXPECT_EQ(t.mode("A"), WO);
    t.integer("Lock")->SetValue(1);
    EXPECT_EQ(t.mode("A"), NA);
}

TEST(Access, Rule61ImposedAccessOnlyNarrows) {
    EXPECT_EQ(AccessMap("RW", "<ImposedAccessMode>RO</ImposedAccessMode>").mode("A"), RO);
    EXPECT_EQ(AccessMap("RO", "<ImposedAccessMode>RW</ImposedAccessMode>").mode("A"), RO);
    EXPECT_EQ(AccessMap("RO", "<ImposedAccessMode>WO</ImposedAccessMode>").mode("A"), NA);
    AccessMap t("RW");
    t.node("A")->ImposeAccessMode(RO);
    t.node("A")->ImposeAccessMode(RW);
    EXPECT_EQ(t.mode("A"), RO);
}

TEST(Access, Rule62ModesPassUpTheValueChain) {
    TestMap t(
        "<Integer Name=\"A\"><pValue>B</pValue></Integer>"
        "<Integer Name=\"B\"><pValue>C</pValue><pIsLocked>L</pIsLocked></Integer>"
        "<Integer "
        "Name=\"C\"><Value>1</Value><pIsAvailable>V</pIsAvailable><pIsImplemented>I</"
        "pIsImplemented></Integer>"
        "<Integer Name=\"L\"><Value>1</Value></Integer><Integer "
        "Name=\"V\"><Value>1</Value></Integer>"
        "<Integer Name=\"I\"><Value>1</Value></Integer>");
    EXPECT_EQ(t.mode("A"), RO);
    EXPECT_EQ(errorOf<GenICam::AccessException>([&] { t.integer("A")->SetValue(1); }),
              "Node 'A' is not writable, its access mode is RO: 'B' is locked by 'L'.");
    t.integer("L")->SetValue(0);
    EXPECT_EQ(t.mode("A"), RW);
    t.integer("V")->SetValue(0);
    EXPECT_EQ(t.mode("A"), NA);
}

TEST(Access, Rule62ALinkThatCanNotBeReadMeansNotAvailableAndLocked) {
    TestMap t(
        "<Integer Name=\"A\"><Value>1</Value><pIsAvailable>W</pIsAvailable></Integer>"
        "<Integer Name=\"B\"><Value>1</Value><pIsLocked>W</pIsLocked></Integer>"
        "<Integer Name=\"C\"><Value>1</Value><pIsImplemented>W</pIsImplemented></Integer>" +
        std::string(Reg{"W", 0, "WO"}));
    EXPECT_EQ(t.mode("A"), NA);
    EXPECT_EQ(t.mode("B"), RO);
    EXPECT_EQ(t.mode("C"), NA);
}

TEST(Access, Rule62ARangeLinkThatCanNotBeReadMakesTheValueUnreadable) {
    TestMap t("<Integer Name=\"A\"><Value>1</Value><pMax>W</pMax></Integer>" +
              std::string(Reg{"W", 0, "WO"}));
    EXPECT_EQ(t.mode("A"), NA);
    EXPECT_EQ(
        errorOf<GenICam::AccessException>([&] { (void)t.integer("A")->GetValue(); }),
        "Node 'A' is not readable, its access mode is NA: 'A' needs 'W', which is not readable: "
        "'W' is for writing only.");
}

TEST(Access, Rule63CategoriesAreReadOnlyAlsoWhenEmpty) {
    TestMap t("<Category Name=\"Root\"><DisplayName>All</DisplayName></Category>");
    EXPECT_EQ(t.mode("Root"), RO);
    EXPECT_EQ(CValuePtr(t.node("Root"))->ToString(), "All");
    EXPECT_THROW(CValuePtr(t.node("Root"))->FromString("x"), GenICam::AccessException);
}

TEST(Access, Rule64TheModeIsCheckedBeforeAnyPortAccess) {
    TestMap t(std::string(Reg{"R", 0, "RO"}) + std::string(Reg{"W", 8, "WO"}) +
              "<String Name=\"S\"><pValue>SR</pValue></String>" +
              std::string(Reg{"SR", 16, "RO", "", "StringReg", 8}) +
              "<Command Name=\"C\"><pValue>R</pValue><CommandValue>1</CommandValue></Command>"
              "<Boolean Name=\"B\"><pValue>R</pValue></Boolean>"
              "<Enumeration Name=\"E\"><EnumEntry "
              "Name=\"X\"><Value>0</Value></EnumEntry><pValue>R</pValue></Enumeration>");
    EXPECT_THROW(t.integer("R")->SetValue(1), GenICam::AccessException);
    EXPECT_THROW(t.integer("R")->SetValue(1, false), GenICam::AccessException);
    EXPECT_THROW(t.integer("R")->FromString("1"), GenICam::AccessException);
    EXPECT_THROW((void)t.integer("W")->GetValue(), GenICam::AccessException);
    EXPECT_THROW((void)t.integer("W")->ToString(), GenICam::AccessException);
    EXPECT_THROW(t.string("S")->SetValue("x"), GenICam::AccessException);
    EXPECT_THROW(t.command("C")->Execute(), GenICam::AccessException);
    EXPECT_THROW(t.boolean("B")->SetValue(true), GenICam::AccessException);
    EXPECT_THROW(t.enumeration("E")->FromString("X"), GenICam::AccessException);
    EXPECT_THROW(t.enumeration("E")->SetIntValue(0), GenICam::AccessException);
    EXPECT_TRUE(t.port.accesses.empty());
}

TEST(Access, Rule65WhatIsImplementedIsAskedOnce) {
    TestMap t("<Integer Name=\"A\"><Value>1</Value><pIsImplemented>R</pIsImplemented></Integer>" +
              std::string(Reg{"R"}));
    t.port.poke(0, 1);
    EXPECT_EQ(t.mode("A"), RW);
    t.port.poke(0, 0);
    EXPECT_EQ(t.mode("A"), RW);
    EXPECT_EQ(t.port.count('R'), 1U);
}

TEST(Access, Rule65BeforeThePortIsConnectedNothingIsLearned) {
    TestMap t("<Integer Name=\"A\"><Value>1</Value><pIsImplemented>R</pIsImplemented></Integer>" +
              std::string(Reg{"R"}));
    t.map->Connect(nullptr, "P");
    EXPECT_EQ(t.mode("A"), NA);
    t.map->Connect(&t.port, "P");
    t.port.poke(0, 1);
    EXPECT_EQ(t.mode("A"), RW);
}

TEST(Access, Rule65AvailabilityIsAskedOnEachCall) {
    TestMap t("<Integer Name=\"A\"><Value>1</Value><pIsAvailable>R</pIsAvailable></Integer>" +
              std::string(Reg{"R"}));
    EXPECT_EQ(t.mode("A"), NA);
    t.port.poke(0, 1);
    EXPECT_EQ(t.mode("A"), RW);
}

TEST(Access, Rule86AllMustBeAvailableAndOneLockIsEnough) {
    TestMap t(
        "<Integer "
        "Name=\"A\"><Value>1</Value><pIsAvailable>X</pIsAvailable><pIsAvailable>Y</pIsAvailable>"
        "<pIsLocked>L</pIsLocked><pIsLocked>M</pIsLocked></Integer><Integer "
        "Name=\"X\"><Value>1</Value></Integer>"
        "<Integer Name=\"Y\"><Value>1</Value></Integer><Integer "
        "Name=\"L\"><Value>0</Value></Integer>"
        "<Integer Name=\"M\"><Value>0</Value></Integer>");
    EXPECT_EQ(t.mode("A"), RW);
    t.integer("M")->SetValue(1);
    EXPECT_EQ(t.mode("A"), RO);
    t.integer("Y")->SetValue(0);
    EXPECT_EQ(t.mode("A"), NA);
}
