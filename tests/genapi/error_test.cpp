// The texts of the engine's own errors: the node that was asked for, the way from it, the node that
// failed, the value, the range and the cause.
#include <gtest/gtest.h>

#include "genapi/testmap.h"

using namespace GenApiTest;

namespace {

std::string readingOf(TestMap& t, const char* name) {
    return errorOf<GenICam::GenericException>([&] { (void)CValuePtr(t.node(name))->ToString(); });
}

}  // namespace

TEST(Error, AWriteNamesTheWayToTheRegisterWithValueAndRange) {
    TestMap t(
        "<Float Name=\"Gain\"><pValue>Raw</pValue></Float><Converter Name=\"Raw\"><FormulaTo>FROM "
        "* "
        "100</FormulaTo><FormulaFrom>TO / 100</FormulaFrom><pValue>Reg</pValue></Converter>" +
        std::string(Reg{"Reg", 0, "RW", "", "IntReg", 1}));
    EXPECT_EQ(errorOf<GenICam::OutOfRangeException>([&] { t.real("Gain")->SetValue(9, false); }),
              "Node 'Gain' leads through 'Raw' to 'Reg': Node 'Reg' can not take 900: its range is "
              "0 to 255.");
    EXPECT_EQ(errorOf<GenICam::OutOfRangeException>([&] { t.real("Gain")->SetValue(9); }),
              "Node 'Gain' can not take 9: its range is 0 to 2.55.");
    EXPECT_EQ(t.port.count('W'), 0U);
}

TEST(Error, AReadNamesTheWayToTheFormulaThatFails) {
    TestMap t(
        "<Integer Name=\"A\"><pValue>K</pValue></Integer><IntSwissKnife Name=\"K\"><pVariable "
        "Name=\"V\">L</pVariable><Formula>V + 1</Formula></IntSwissKnife><IntSwissKnife "
        "Name=\"L\"><pVariable Name=\"V\">R</pVariable><Formula>1 / V</Formula></IntSwissKnife>" +
        std::string(Reg{"R", 0}));
    EXPECT_EQ(
        readingOf(t, "A"),
        "Node 'A' leads through 'K' to 'L': Node 'L' can not be evaluated: a division by zero "
        "in its formula.");
    EXPECT_EQ(readingOf(t, "L"),
              "Node 'L' can not be evaluated: a division by zero in its formula.");
}

TEST(Error, AMissingAccessTellsTheCauseAtTheEndOfTheLinks) {
    TestMap t(
        "<Integer Name=\"A\"><pValue>K</pValue></Integer><IntConverter Name=\"K\"><pVariable "
        "Name=\"V\">R</pVariable><FormulaTo>FROM</FormulaTo><FormulaFrom>TO</FormulaFrom><pValue>R"
        "</pValue></IntConverter><Integer Name=\"B\"><Value>1</Value><pIsAvailable>L</pIsAvailable>"
        "</Integer><IntSwissKnife Name=\"L\"><Formula>1 / 0</Formula></IntSwissKnife>" +
        std::string(Reg{"R", 0}));
    t.map->Connect(nullptr, "P");
    EXPECT_EQ(readingOf(t, "A"),
              "Node 'A' is not readable, its access mode is NA: 'K' needs 'R', which is not "
              "readable: the port 'P' is not connected.");
    EXPECT_EQ(readingOf(t, "B"),
              "Node 'B' is not readable, its access mode is NA: 'B' is not available, as 'L' says: "
              "Node 'B' leads to 'L': Node 'L' can not be evaluated: a division by zero in its "
              "formula.");
}

TEST(Error, AConditionThatHoldsLeavesNothingInTheTextOfAnotherCause) {
    TestMap t(
        "<Integer Name=\"A\"><Value>1</Value><pIsAvailable>K</pIsAvailable><pIsLocked>Yes"
        "</pIsLocked></Integer><IntSwissKnife Name=\"K\"><pVariable Name=\"V\">Gone</pVariable>"
        "<Formula>1 ? 1 : V</Formula></IntSwissKnife><Integer Name=\"Gone\"><Value>1</Value>"
        "<pIsAvailable>No</pIsAvailable></Integer><Integer Name=\"Yes\"><Value>1</Value></Integer>"
        "<Integer Name=\"No\"><Value>0</Value></Integer>");
    EXPECT_EQ(errorOf<GenICam::AccessException>([&] { t.integer("A")->SetValue(2); }),
              "Node 'A' is not writable, its access mode is RO: 'A' is locked by 'Yes'.");
}

TEST(Error, ALongWayKeepsItsEnds) {
    std::string nodes = "<IntSwissKnife Name=\"N40\"><Formula>1 / 0</Formula></IntSwissKnife>";
    for (int i = 0; i < 40; ++i) {
        nodes += "<Integer Name=\"N" + std::to_string(i) + "\"><pValue>N" + std::to_string(i + 1) +
                 "</pValue></Integer>";
    }
    TestMap t(nodes);
    const std::string text = readingOf(t, "N0");
    EXPECT_EQ(text.find("Node 'N0' leads through 'N1', 'N2', "), 0U) << text;
    EXPECT_NE(text.find("'N38', 'N39' to 'N40': Node 'N40' can not be evaluated"),
              std::string::npos)
        << text;
    EXPECT_EQ(text.find("'N20'"), std::string::npos) << text;
}

// A port that uses the map itself is a call of its own.
TEST(Error, WhatAPortAsksForOfItsMapIsNotOnTheWayOfTheCallThatUsedIt) {
    TestMap t(
        std::string(Reg{"R", 0}) +
        "<Integer Name=\"A\"><pValue>R</pValue></Integer><IntSwissKnife Name=\"Bad\"><Formula>1 "
        "/ 0</Formula></IntSwissKnife>");
    std::string heard;
    t.port.onRead = [&](std::int64_t) { heard = readingOf(t, "Bad"); };
    (void)t.integer("A")->GetValue();
    EXPECT_EQ(heard, "Node 'Bad' can not be evaluated: a division by zero in its formula.");
}
