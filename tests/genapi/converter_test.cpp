// Converters in both directions, floats, and sets of valid values.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "genapi/testmap.h"

using namespace GenApiTest;
using testing::HasSubstr;

TEST(Converter, Rule42FromServesReadsAndToServesWrites) {
    TestMap t(
        "<Converter Name=\"C\"><FormulaTo>FROM * 10 + 1</FormulaTo><FormulaFrom>(TO - 1) / "
        "10</FormulaFrom>"
        "<pValue>R</pValue></Converter>" +
        std::string(Reg{"R"}));
    t.port.poke(0, 26);
    EXPECT_DOUBLE_EQ(t.real("C")->GetValue(), 2.5);
    t.real("C")->SetValue(4.2);
    EXPECT_EQ(t.port.peek(0), 43);
}

TEST(Converter, Rule43OtherVariablesAreReadBeforeTheWrite) {
    TestMap t(
        "<IntConverter Name=\"C\"><pVariable Name=\"OLD\">R</pVariable><FormulaTo>(OLD &amp; 0xF0) "
        "| FROM</FormulaTo>"
        "<FormulaFrom>TO &amp; 0x0F</FormulaFrom><pValue>R</pValue></IntConverter>" +
        std::string(Reg{"R"}));
    t.port.poke(0, 0xA5);
    EXPECT_EQ(t.integer("C")->GetValue(), 5);
    t.integer("C")->SetValue(3);
    EXPECT_EQ(t.port.peek(0), 0xA3);
}

TEST(Converter, Rule44SlopesDecideTheEnds) {
    const auto make = [](const std::string& slope, const std::string& from) {
        return "<Converter Name=\"C\"><FormulaTo>FROM</FormulaTo><FormulaFrom>" + from +
               "</FormulaFrom><pValue>V</pValue>" + slope +
               "</Converter><Integer "
               "Name=\"V\"><Value>5</Value><Min>2</Min><Max>10</Max></Integer>";
    };
    TestMap rising(make("<Slope>Increasing</Slope>", "TO * 2"));
    EXPECT_DOUBLE_EQ(rising.real("C")->GetMin(), 4);
    EXPECT_DOUBLE_EQ(rising.real("C")->GetMax(), 20);
    TestMap falling(make("<Slope>Decreasing</Slope>", "100 / TO"));
    EXPECT_DOUBLE_EQ(falling.real("C")->GetMin(), 10);
    EXPECT_DOUBLE_EQ(falling.real("C")->GetMax(), 50);
    TestMap automatic(make("", "100 / TO"));
    EXPECT_DOUBLE_EQ(automatic.real("C")->GetMin(), 10);
    EXPECT_DOUBLE_EQ(automatic.real("C")->GetMax(), 50);
    TestMap varying(make("<Slope>Varying</Slope>", "TO * 2"));
    EXPECT_DOUBLE_EQ(varying.real("C")->GetMax(), std::numeric_limits<double>::max());
}

TEST(Converter, Rule44AnEndThatTheTargetLacksIsNotConverted) {
    TestMap t(
        "<IntConverter Name=\"C\"><FormulaTo>FROM</FormulaTo><FormulaFrom>0 - "
        "TO</FormulaFrom><pValue>V</pValue></IntConverter>"
        "<Integer Name=\"V\"><Value>5</Value><Min>2</Min></Integer>");
    EXPECT_EQ(t.integer("C")->GetMax(), -2);
    EXPECT_EQ(t.integer("C")->GetMin(), INT64_MIN);
}

TEST(Converter, Rule44OnlyLinearOnesHaveAnIncrement) {
    TestMap t(
        "<Converter "
        "Name=\"C\"><FormulaTo>FROM/2.5</FormulaTo><FormulaFrom>TO*2.5+1</FormulaFrom><pValue>V</"
        "pValue>"
        "<IsLinear>Yes</IsLinear></Converter><Converter "
        "Name=\"D\"><FormulaTo>FROM</FormulaTo><FormulaFrom>TO</FormulaFrom>"
        "<pValue>V</pValue></Converter><Integer "
        "Name=\"V\"><Value>4</Value><Min>0</Min><Max>8</Max><Inc>4</Inc></Integer>");
    EXPECT_DOUBLE_EQ(t.real("C")->GetInc(), 10.0);
    EXPECT_FALSE(t.real("D")->HasInc());
}

TEST(Converter, Rule45IntegersNeverPassThroughADoubleAndFloatsRound) {
    TestMap t(
        "<IntConverter Name=\"C\"><FormulaTo>FROM + 1</FormulaTo><FormulaFrom>TO - "
        "1</FormulaFrom><pValue>V</pValue></IntConverter>"
        "<Integer Name=\"V\"><Value>9007199254740993</Value></Integer>"
        "<Converter Name=\"D\"><FormulaTo>FROM / 2</FormulaTo><FormulaFrom>TO * "
        "2</FormulaFrom><pValue>S</pValue></Converter>" +
        std::string(Reg{"S", 8, "RW", "<Sign>Signed</Sign>"}));
    EXPECT_EQ(t.integer("C")->GetValue(), 9007199254740992);
    t.integer("C")->SetValue(9007199254740994);
    EXPECT_EQ(t.integer("V")->GetValue(), 9007199254740995);
    t.real("D")->SetValue(5);
    EXPECT_EQ(t.port.peek(8), 3);
    t.real("D")->SetValue(-5);
    EXPECT_EQ(t.port.peek(8), -3);
}

TEST(Converter, Rule45TheTargetsOwnRangeDecides) {
    TestMap t(
        "<Converter "
        "Name=\"D\"><FormulaTo>FROM</FormulaTo><FormulaFrom>TO</FormulaFrom><pValue>S</"
        "pValue><Slope>Varying</Slope></Converter>" +
        std::string(Reg{"S", 0, "RW", "", "IntReg", 1}));
    EXPECT_EQ(errorOf<GenICam::OutOfRangeException>([&] { t.real("D")->SetValue(300); }),
              "Node 'D' leads to 'S': Node 'S' can not take 300: its range is 0 to 255.");
    EXPECT_EQ(t.port.count('W'), 0U);
}

TEST(Converter, Rule35AFailedFormulaWritesNothing) {
    TestMap t(
        "<IntConverter Name=\"C\"><FormulaTo>100 / "
        "FROM</FormulaTo><FormulaFrom>TO</FormulaFrom><pValue>R</pValue></IntConverter>" +
        std::string(Reg{"R"}));
    EXPECT_THROW(t.integer("C")->SetValue(0), GenICam::RuntimeException);
    EXPECT_EQ(t.port.count('W'), 0U);
}

TEST(Converter, Rule63TheDirectionFollowsTheTargetAndVariablesMustBeReadable) {
    const std::string both = "<FormulaTo>FROM</FormulaTo><FormulaFrom>TO</FormulaFrom>";
    TestMap t("<IntConverter Name=\"A\">" + both +
              "<pValue>RO8</pValue></IntConverter><IntConverter Name=\"B\">" + both +
              "<pValue>WO8</pValue></IntConverter><IntConverter Name=\"C\"><pVariable "
              "Name=\"X\">WO8</pVariable>" +
              both + "<pValue>RO8</pValue></IntConverter>" + std::string(Reg{"RO8", 0, "RO"}) +
              std::string(Reg{"WO8", 0, "WO"}));
    EXPECT_EQ(t.mode("A"), RO);
    EXPECT_EQ(t.mode("B"), WO);
    EXPECT_EQ(t.mode("C"), NA);
}

TEST(Float, Rule47And48RangesAndIncrements) {
    TestMap t(
        "<Float Name=\"A\"><Value>1.5</Value></Float><Float "
        "Name=\"B\"><Value>1</Value><Min>0.5</Min><Max>2.5</Max><Inc>0.25</Inc>"
        "<Unit>ms</Unit></Float><Float Name=\"C\"><pValue>B</pValue></Float>");
    EXPECT_EQ(t.real("A")->GetMax(), std::numeric_limits<double>::max());
    EXPECT_FALSE(t.real("A")->HasInc());
    EXPECT_THROW((void)t.real("A")->GetInc(), GenICam::LogicalErrorException);
    EXPECT_EQ(t.real("C")->GetMin(), 0.5);
    EXPECT_EQ(t.real("C")->GetInc(), 0.25);
    EXPECT_EQ(t.real("C")->GetUnit(), "ms");
    t.real("C")->SetValue(0.6);
    EXPECT_EQ(t.real("B")->GetValue(), 0.6);
    EXPECT_EQ(errorOf<GenICam::OutOfRangeException>([&] { t.real("C")->SetValue(3); }),
              "Node 'C' can not take 3: its range is 0.5 to 2.5.");
    EXPECT_THROW(t.real("A")->SetValue(std::nan("")), GenICam::OutOfRangeException);
}

TEST(Float, Rule53AFloatLinkUsesTheNumericValueAndWritesTheNearestEntry) {
    TestMap t(
        "<Float Name=\"A\"><pValue>E</pValue></Float><Enumeration Name=\"E\"><EnumEntry "
        "Name=\"Half\"><NumericValue>0.5</NumericValue>"
        "<Value>1</Value></EnumEntry><EnumEntry "
        "Name=\"Two\"><Value>2</Value></EnumEntry><Value>1</Value></Enumeration>");
    EXPECT_EQ(t.real("A")->GetValue(), 0.5);
    t.real("A")->SetValue(1.8);
    EXPECT_EQ(t.enumeration("E")->ToString(), "Two");
}

TEST(Float, Rule57TextFollowsNotationAndPrecision) {
    const auto textOf = [](const std::string& more) {
        TestMap t("<Float Name=\"A\"><Value>1234.56789</Value>" + more + "</Float>");
        return t.real("A")->ToString().str();
    };
    EXPECT_EQ(textOf(""), "1234.57");
    EXPECT_EQ(
        textOf("<DisplayPrecision>8</DisplayPrecision><DisplayNotation>Fixed</DisplayNotation>"),
        "1234.5679");
    EXPECT_EQ(
        textOf(
            "<DisplayPrecision>3</DisplayPrecision><DisplayNotation>Scientific</DisplayNotation>"),
        "1.23e+03");
}

TEST(Float, Rule49CopiesTakeEveryValueAndNarrowTheRange) {
    TestMap t(
        "<Float Name=\"A\"><pValue>B</pValue><pValueCopy>C</pValueCopy></Float>"
        "<Float Name=\"B\"><Value>1</Value><Min>0</Min><Max>10</Max></Float>"
        "<Float Name=\"C\"><Value>1</Value><Min>2</Min><Max>20</Max></Float>");
    EXPECT_EQ(t.real("A")->GetMin(), 2);
    EXPECT_EQ(t.real("A")->GetMax(), 10);
    t.real("A")->SetValue(3.5);
    EXPECT_EQ(t.real("C")->GetValue(), 3.5);
}

TEST(ValidValues, Rule46TheyAreConvertedOneByOneAndSorted) {
    TestMap t(
        "<Integer Name=\"V\"><Value>4</Value><ValidValueSet>8; 2 ;4</ValidValueSet></Integer>"
        "<IntConverter Name=\"C\"><FormulaTo>0 - FROM</FormulaTo><FormulaFrom>0 - "
        "TO</FormulaFrom><pValue>V</pValue></IntConverter>"
        "<Float Name=\"F\"><Value>1</Value><ValidValueSet>2.5;1</ValidValueSet></Float>");
    EXPECT_EQ(t.integer("V")->GetIncMode(), listIncrement);
    EXPECT_EQ(t.integer("V")->GetMin(), 2);
    EXPECT_EQ(t.integer("V")->GetMax(), 8);
    EXPECT_EQ(t.integer("C")->GetListOfValidValues(), (int64_autovector_t{-8, -4, -2}));
    t.integer("C")->SetValue(-8);
    EXPECT_EQ(t.integer("V")->GetValue(), 8);
    EXPECT_EQ(errorOf<GenICam::OutOfRangeException>([&] { t.integer("V")->SetValue(6); }),
              "Node 'V' can not take 6: it is none of its valid values.");
    EXPECT_THROW(t.real("F")->SetValue(2), GenICam::OutOfRangeException);
    t.real("F")->SetValue(2.5);
}
