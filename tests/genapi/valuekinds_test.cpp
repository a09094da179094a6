// Boolean, Enumeration, Command and String.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "genapi/testmap.h"

using namespace GenApiTest;
using testing::ElementsAre;

namespace {

const std::string colours =
    "<Enumeration Name=\"Colour\">"
    "<EnumEntry Name=\"Red\"><pIsAvailable>RedOn</pIsAvailable><Value>1</Value></EnumEntry>"
    "<EnumEntry Name=\"Green\"><DisplayName>The green</DisplayName><Value>2</Value></EnumEntry>"
    "<EnumEntry Name=\"Blue\"><pIsImplemented>No</pIsImplemented><Value>3</Value></EnumEntry>"
    "<pValue>ColourReg</pValue></Enumeration>"
    "<Integer Name=\"RedOn\"><Value>1</Value></Integer><Integer "
    "Name=\"No\"><Value>0</Value></Integer>";

struct ColourMap : TestMap {
    ColourMap() : TestMap(colours + std::string(Reg{"ColourReg"})) { port.poke(0, 2); }
};

}  // namespace

TEST(Enumeration, Rule53SymbolicAndIntegerView) {
    ColourMap t;
    EXPECT_EQ(t.enumeration("Colour")->ToString(), "Green");
    EXPECT_EQ(t.enumeration("Colour")->GetIntValue(), 2);
    t.enumeration("Colour")->FromString("Red");
    EXPECT_EQ(t.port.peek(0), 1);
    t.enumeration("Colour")->SetIntValue(2);
    EXPECT_EQ(t.enumeration("Colour")->GetCurrentEntry()->GetSymbolic(), "Green");
    EXPECT_EQ(t.node("EnumEntry_Colour_Green")->GetDisplayName(), "The green");
    EXPECT_EQ(t.node("EnumEntry_Colour_Red")->GetDisplayName(), "Red");
}

TEST(Enumeration, Rule53WrittenEntriesMustExistBeImplementedAndAvailable) {
    ColourMap t;
    EXPECT_EQ(errorOf<GenICam::InvalidArgumentException>(
                  [&] { t.enumeration("Colour")->FromString("Pink"); }),
              "Node 'Colour' has no entry 'Pink'.");
    EXPECT_THROW(t.enumeration("Colour")->FromString("Blue"), GenICam::AccessException);
    EXPECT_THROW(t.enumeration("Colour")->SetIntValue(3), GenICam::AccessException);
    EXPECT_THROW(t.enumeration("Colour")->SetIntValue(4), GenICam::OutOfRangeException);
    t.integer("RedOn")->SetValue(0);
    EXPECT_EQ(
        errorOf<GenICam::AccessException>([&] { t.enumeration("Colour")->FromString("Red"); }),
        "Node 'Colour' can not take the entry 'Red', which is not available: "
        "'EnumEntry_Colour_Red' is not available, as 'RedOn' says.");
    EXPECT_EQ(t.port.count('W'), 0U);
}

TEST(Enumeration, Rule53AValueWithoutEntryFailsInTheTextViewOnly) {
    ColourMap t;
    t.port.poke(0, 9);
    EXPECT_EQ(t.enumeration("Colour")->GetIntValue(), 9);
    EXPECT_EQ(t.enumeration("Colour")->GetCurrentEntry(), nullptr);
    EXPECT_EQ(
        errorOf<GenICam::OutOfRangeException>([&] { (void)t.enumeration("Colour")->ToString(); }),
        "Node 'Colour' has the value 9, which none of its entries has.");
}

TEST(Enumeration, Rule53ReadingDoesNotAskForTheEntrysAvailability) {
    ColourMap t;
    t.port.poke(0, 1);
    t.integer("RedOn")->SetValue(0);
    EXPECT_EQ(t.enumeration("Colour")->ToString(), "Red");
}

TEST(Enumeration, Rule54EntriesKeepTheirOrderWithoutThoseNotImplemented) {
    ColourMap t;
    StringList_t symbolics;
    t.enumeration("Colour")->GetSymbolics(symbolics);
    EXPECT_THAT(symbolics, ElementsAre(gcstring("Red"), gcstring("Green")));
    EXPECT_EQ(t.mode("EnumEntry_Colour_Red"), RO);
    t.integer("RedOn")->SetValue(0);
    EXPECT_EQ(t.mode("EnumEntry_Colour_Red"), NA);
    t.enumeration("Colour")->GetSymbolics(symbolics);
    EXPECT_EQ(symbolics.size(), 2U);
    EXPECT_EQ(t.enumeration("Colour")->GetEntryByName("Pink"), nullptr);
    EXPECT_EQ(t.enumeration("Colour")->GetEntry(2)->GetSymbolic(), "Green");
}

TEST(Enumeration, Rule8OfEntriesWithOneValueTheFirstAvailableIsRead) {
    TestMap t(
        "<Enumeration Name=\"E\"><EnumEntry "
        "Name=\"A\"><pIsAvailable>On</pIsAvailable><Value>1</Value></EnumEntry>"
        "<EnumEntry Name=\"B\"><Value>1</Value></EnumEntry><Value>1</Value></Enumeration>"
        "<Integer Name=\"On\"><Value>1</Value></Integer>");
    EXPECT_EQ(t.enumeration("E")->ToString(), "A");
    t.integer("On")->SetValue(0);
    EXPECT_EQ(t.enumeration("E")->ToString(), "B");
}

TEST(Enumeration, WithoutEntriesItsIntegerStillReads) {
    TestMap t("<Enumeration Name=\"E\"><pValue>R</pValue></Enumeration>" + std::string(Reg{"R"}));
    EXPECT_EQ(t.enumeration("E")->GetIntValue(), 0);
    EXPECT_THROW(t.enumeration("E")->SetIntValue(0), GenICam::OutOfRangeException);
}

TEST(Boolean, Rule55OnValueIsTrueAndAllElseFalse) {
    TestMap t(
        "<Boolean Name=\"B\"><pValue>R</pValue><OnValue>5</OnValue><OffValue>7</OffValue></Boolean>"
        "<Boolean Name=\"D\"><pValue>R</pValue></Boolean>" +
        std::string(Reg{"R"}));
    t.boolean("B")->SetValue(true);
    EXPECT_EQ(t.port.peek(0), 5);
    EXPECT_TRUE(t.boolean("B")->GetValue());
    EXPECT_FALSE(t.boolean("D")->GetValue());
    t.boolean("B")->SetValue(false);
    EXPECT_EQ(t.port.peek(0), 7);
    EXPECT_FALSE(t.boolean("B")->GetValue());
    t.port.poke(0, 1);
    EXPECT_TRUE(t.boolean("D")->GetValue());
    EXPECT_FALSE(t.boolean("B")->GetValue());
}

TEST(Boolean, Rule55AsATargetOfAnIntegerItCountsOneOrZero) {
    TestMap t(
        "<Boolean Name=\"B\"><Value>9</Value><OnValue>9</OnValue></Boolean>"
        "<Integer Name=\"I\"><pValue>B</pValue></Integer>"
        "<Integer Name=\"L\"><Value>1</Value><pIsLocked>B</pIsLocked></Integer>");
    EXPECT_EQ(t.integer("I")->GetValue(), 1);
    EXPECT_EQ(t.mode("L"), RO);
    t.integer("I")->SetValue(0);
    EXPECT_FALSE(t.boolean("B")->GetValue());
    EXPECT_EQ(t.mode("L"), RW);
    EXPECT_THROW(t.integer("I")->SetValue(2), GenICam::OutOfRangeException);
}

TEST(Boolean, TextsAreOneAndZeroAndTheWordsAreTaken) {
    TestMap t("<Boolean Name=\"B\"><Value>0</Value></Boolean>");
    EXPECT_EQ(t.boolean("B")->ToString(), "0");
    t.boolean("B")->FromString("True");
    EXPECT_EQ(t.boolean("B")->ToString(), "1");
    t.boolean("B")->FromString("false");
    EXPECT_FALSE(t.boolean("B")->GetValue());
    EXPECT_THROW(t.boolean("B")->FromString("maybe"), GenICam::InvalidArgumentException);
}

TEST(Command, Rule56ExecuteWritesTheValueAndIsDoneAsksTheDevice) {
    TestMap t("<Command Name=\"C\"><pValue>R</pValue><CommandValue>3</CommandValue></Command>" +
              std::string(Reg{"R", 0, "RW", "<Cachable>WriteThrough</Cachable>"}));
    t.command("C")->Execute();
    EXPECT_EQ(t.port.peek(0), 3);
    EXPECT_FALSE(t.command("C")->IsDone());
    t.port.poke(0, 0);
    EXPECT_TRUE(t.command("C")->IsDone());
    EXPECT_EQ(t.port.count('R'), 2U);
}

TEST(Command, Rule56TheEndFiresTheCallbackOnce) {
    TestMap t("<Command Name=\"C\"><pValue>R</pValue><CommandValue>1</CommandValue></Command>" +
              std::string(Reg{"R"}));
    t.command("C")->Execute();
    int calls = 0;
    Register(t.node("C"), [&](INode*) { ++calls; });
    EXPECT_FALSE(t.command("C")->IsDone());
    EXPECT_EQ(calls, 0);
    t.port.poke(0, 0);
    EXPECT_TRUE(t.command("C")->IsDone());
    EXPECT_TRUE(t.command("C")->IsDone());
    EXPECT_EQ(calls, 1);
}

TEST(Command, Rule56AWriteOnlyCommandIsDoneAtOnce) {
    TestMap t("<Command Name=\"C\"><pValue>R</pValue><CommandValue>1</CommandValue></Command>" +
              std::string(Reg{"R", 0, "WO"}));
    EXPECT_EQ(t.mode("C"), WO);
    t.command("C")->Execute();
    EXPECT_TRUE(t.command("C")->IsDone());
    EXPECT_EQ(t.port.count('R'), 0U);
}

TEST(Command, Rule56TheValueMayComeFromANode) {
    TestMap t(
        "<Command Name=\"C\"><pValue>E</pValue><pCommandValue>V</pCommandValue></Command>"
        "<Integer Name=\"V\"><Value>2</Value></Integer><Enumeration Name=\"E\">"
        "<EnumEntry Name=\"Go\"><Value>2</Value></EnumEntry><EnumEntry "
        "Name=\"Idle\"><Value>0</Value></EnumEntry>"
        "<Value>0</Value></Enumeration>");
    t.command("C")->Execute();
    EXPECT_EQ(t.enumeration("E")->ToString(), "Go");
}

TEST(Command, ALockedCommandDoesNotRun) {
    TestMap t(
        "<Command "
        "Name=\"C\"><pValue>R</pValue><CommandValue>1</CommandValue><pIsLocked>L</pIsLocked></"
        "Command>"
        "<Integer Name=\"L\"><Value>1</Value></Integer>" +
        std::string(Reg{"R"}));
    EXPECT_THROW(t.command("C")->Execute(), GenICam::AccessException);
    EXPECT_TRUE(t.port.accesses.empty());
}

TEST(String, Rule25LongTextsAreErrorsShortOnesAreFilledWithZeros) {
    TestMap t("<String Name=\"S\"><pValue>R</pValue></String>" +
              std::string(Reg{"R", 0, "RW", "<Cachable>NoCache</Cachable>", "StringReg", 4}));
    t.port.poke(0, -1);
    t.string("S")->SetValue("ab");
    EXPECT_EQ(t.port.peek(0, 4), 0x6261);
    EXPECT_EQ(t.string("S")->GetValue(), "ab");
    t.string("S")->SetValue("abcd");
    EXPECT_EQ(t.string("S")->GetValue(), "abcd");
    EXPECT_EQ(t.string("S")->GetMaxLength(), 4);
    EXPECT_EQ(errorOf<GenICam::OutOfRangeException>([&] { t.string("S")->SetValue("abcde"); }),
              "Node 'S' can not take a text of 5 bytes: there is room for 4.");
    EXPECT_EQ(t.string("S")->GetValue(), "abcd");
}

TEST(String, AHeldTextBelongsToItsMap) {
    TestMap t("<String Name=\"S\"><Value>x</Value></String>");
    t.string("S")->FromString("  y ");
    EXPECT_EQ(t.string("S")->ToString(), "  y ");
    EXPECT_THROW(t.string("S")->SetValue(gcstring("a\0b", 3)), GenICam::InvalidArgumentException);
}

TEST(ErrorLink, Rule60AnErrorCodeAfterAWriteThrowsWithTheEntrysTexts) {
    TestMap t(
        "<Integer Name=\"A\"><Value>1</Value><pError>Fault</pError></Integer><Enumeration "
        "Name=\"Fault\">"
        "<EnumEntry Name=\"None\"><Value>0</Value></EnumEntry><EnumEntry Name=\"Hot\"><ToolTip>Let "
        "it cool.</ToolTip>"
        "<DisplayName>Too "
        "hot</DisplayName><Value>4</Value></EnumEntry><pValue>R</pValue></Enumeration>" +
        std::string(Reg{"R"}));
    t.integer("A")->SetValue(2);
    t.port.poke(0, 4);
    EXPECT_EQ(errorOf<GenICam::RuntimeException>([&] { t.integer("A")->SetValue(3); }),
              "Node 'A' was written, and 'Fault' reports the error 4 (Too hot): Let it cool.");
}

TEST(ErrorLink, Rule60TheTargetsOfAWriteAreAskedToo) {
    TestMap t(
        "<Integer Name=\"A\"><pValue>Reg</pValue></Integer><Enumeration Name=\"Fault\">"
        "<EnumEntry Name=\"None\"><Value>0</Value></EnumEntry><EnumEntry Name=\"Hot\"><Value>4"
        "</Value></EnumEntry><pValue>Code</pValue></Enumeration>" +
        std::string(Reg{"Code", 8}) + std::string(Reg{"Reg", 0, "RW", "<pError>Fault</pError>"}));
    t.integer("A")->SetValue(2);
    t.port.poke(8, 4);
    EXPECT_EQ(errorOf<GenICam::RuntimeException>([&] { t.integer("A")->SetValue(3); }),
              "Node 'Reg' was written, and 'Fault' reports the error 4 (Hot).");
    EXPECT_EQ(t.port.peek(0), 3);
}
