// Integer: values, ranges, increments, text.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "genapi/testmap.h"

using namespace GenApiTest;

TEST(Integer, Rule47WithoutAnythingTheRangeIsThatOfAnInt64) {
    TestMap t("<Integer Name=\"A\"><Value>3</Value></Integer>");
    EXPECT_EQ(t.integer("A")->GetMin(), INT64_MIN);
    EXPECT_EQ(t.integer("A")->GetMax(), INT64_MAX);
    EXPECT_EQ(t.integer("A")->GetInc(), 1);
    EXPECT_EQ(t.integer("A")->GetIncMode(), fixedIncrement);
}

TEST(Integer, Rule47WithoutItsOwnRangeATargetsCounts) {
    TestMap t(
        "<Integer Name=\"A\"><pValue>B</pValue></Integer>"
        "<Integer Name=\"B\"><Value>4</Value><Min>2</Min><Max>8</Max><Inc>2</Inc></Integer>");
    EXPECT_EQ(t.integer("A")->GetMin(), 2);
    EXPECT_EQ(t.integer("A")->GetMax(), 8);
    EXPECT_EQ(t.integer("A")->GetInc(), 2);
    EXPECT_THROW(t.integer("A")->SetValue(5), GenICam::OutOfRangeException);
}

TEST(Integer, Rule47AGivenMinimumReplacesTheTargetsButTheTargetStillDecides) {
    TestMap t(
        "<Integer Name=\"A\"><pValue>B</pValue><Min>0</Min></Integer>"
        "<Integer Name=\"B\"><Value>4</Value><Min>2</Min><Max>8</Max></Integer>");
    EXPECT_EQ(t.integer("A")->GetMin(), 0);
    EXPECT_EQ(errorOf<GenICam::OutOfRangeException>([&] { t.integer("A")->SetValue(1); }),
              "Node 'A' leads to 'B': Node 'B' can not take 1: its range is 2 to 8.");
    EXPECT_EQ(t.integer("B")->GetValue(), 4);
}

TEST(Integer, Rule48IncrementsCountFromTheMinimum) {
    TestMap t(
        "<Integer Name=\"A\"><Value>3</Value><Min>3</Min><Max>100</Max><Inc>4</Inc></Integer>"
        "<Integer "
        "Name=\"B\"><Value>0</Value><Min>-9223372036854775808</Min><Inc>2</Inc></Integer>");
    t.integer("A")->SetValue(11);
    EXPECT_EQ(errorOf<GenICam::OutOfRangeException>([&] { t.integer("A")->SetValue(12); }),
              "Node 'A' can not take 12: it is not 3 plus a multiple of the increment 4.");
    t.integer("A")->SetValue(12, false);
    EXPECT_EQ(t.integer("A")->GetValue(), 12);
    t.integer("B")->SetValue(INT64_MAX - 1);
    EXPECT_THROW(t.integer("B")->SetValue(INT64_MAX), GenICam::OutOfRangeException);
}

TEST(Integer, Rule49CopiesAreWrittenInFileOrderAroundTheValue) {
    TestMap t(
        "<Integer Name=\"A\"><pValueCopy>R1</pValueCopy><pValue>R2</pValue>"
        "<pValueCopy>R3</pValueCopy></Integer>" +
        std::string(Reg{"R1", 0, "RW", "", "IntReg", 1}) +
        std::string(Reg{"R2", 8, "RW", "", "IntReg", 2}) +
        std::string(Reg{"R3", 16, "RW", "", "IntReg", 4}));
    EXPECT_EQ(t.integer("A")->GetMax(), 255);
    t.integer("A")->SetValue(200);
    EXPECT_THAT(t.port.accesses,
                testing::ElementsAre(Access{'W', 0, 1}, Access{'W', 8, 2}, Access{'W', 16, 4}));
    EXPECT_THROW(t.integer("A")->SetValue(256), GenICam::OutOfRangeException);
    EXPECT_EQ(t.port.count('W'), 3U);
}

TEST(Integer, Rule49DifferentIncrementsMakeItReadOnly) {
    TestMap t(
        "<Integer Name=\"A\"><pValue>B</pValue><pValueCopy>C</pValueCopy></Integer>"
        "<Integer Name=\"B\"><Value>4</Value><Min>0</Min><Inc>2</Inc></Integer>"
        "<Integer Name=\"C\"><Value>4</Value><Min>0</Min><Inc>4</Inc></Integer>");
    EXPECT_EQ(t.mode("A"), RO);
}

TEST(Integer, Rule50TablesFollowTheirIndex) {
    TestMap t(
        "<Integer Name=\"I\"><Value>0</Value></Integer><Integer "
        "Name=\"X\"><Value>7</Value></Integer>"
        "<Integer Name=\"A\"><pIndex>I</pIndex><ValueIndexed Index=\"0\">100</ValueIndexed>"
        "<pValueIndexed Index=\"1\">X</pValueIndexed><ValueDefault>55</ValueDefault></Integer>"
        "<Integer Name=\"B\"><pIndex>I</pIndex><ValueIndexed "
        "Index=\"0\">1</ValueIndexed></Integer>");
    EXPECT_EQ(t.integer("A")->GetValue(), 100);
    EXPECT_EQ(t.mode("A"), RO);
    t.integer("I")->SetValue(1);
    EXPECT_EQ(t.integer("A")->GetValue(), 7);
    t.integer("A")->SetValue(8);
    EXPECT_EQ(t.integer("X")->GetValue(), 8);
    t.integer("I")->SetValue(2);
    EXPECT_EQ(t.integer("A")->GetValue(), 55);
    EXPECT_EQ(
        errorOf<GenICam::AccessException>([&] { (void)t.integer("B")->GetValue(); }),
        "Node 'B' is not readable, its access mode is NA: 'B' has no value for the index in 'I'.");
}

TEST(Integer, Rule50UnitRepresentationAndPrecisionAreThoseOfTheChosenOne) {
    TestMap t(
        "<Integer Name=\"I\"><Value>0</Value></Integer><Integer Name=\"X\"><Value>10</Value><Unit>"
        "us</Unit><Representation>HexNumber</Representation></Integer><Float Name=\"Y\"><Value>"
        "1.23456</Value><Unit>mm</Unit><DisplayPrecision>3</DisplayPrecision><DisplayNotation>Fixed"
        "</DisplayNotation></Float><Integer Name=\"A\"><pIndex>I</pIndex><pValueIndexed "
        "Index=\"0\">"
        "X</pValueIndexed><ValueDefault>55</ValueDefault></Integer><Float Name=\"F\"><pIndex>I"
        "</pIndex><pValueIndexed Index=\"1\">Y</pValueIndexed><ValueDefault>0.5</ValueDefault>"
        "</Float>");
    EXPECT_EQ(t.integer("A")->GetUnit(), "us");
    EXPECT_EQ(t.integer("A")->GetRepresentation(), HexNumber);
    EXPECT_EQ(t.integer("A")->ToString(), "0xA");
    EXPECT_EQ(t.real("F")->GetUnit(), "");
    t.integer("I")->SetValue(1);
    EXPECT_EQ(t.integer("A")->GetUnit(), "");
    EXPECT_EQ(t.integer("A")->GetRepresentation(), PureNumber);
    EXPECT_EQ(t.real("F")->GetUnit(), "mm");
    EXPECT_EQ(t.real("F")->GetDisplayPrecision(), 3);
    EXPECT_EQ(t.real("F")->GetDisplayNotation(), fnFixed);
}

TEST(Integer, Rule50ATableWhoseIndexCanNotBeReadHasNothingOfAnother) {
    TestMap t(
        "<Integer Name=\"A\"><pIndex>R</pIndex><pValueIndexed Index=\"0\">X</pValueIndexed>"
        "</Integer><Integer Name=\"X\"><Value>1</Value><Unit>us</Unit></Integer>" +
        std::string(Reg{"R", 0, "WO"}));
    EXPECT_EQ(t.integer("A")->GetUnit(), "");
    EXPECT_EQ(t.integer("A")->GetRepresentation(), PureNumber);
}

TEST(Integer, Rule51ImposedLimitsNarrowOnlyAndRepresentationPassesUp) {
    TestMap t(
        "<Integer Name=\"A\"><pValue>B</pValue></Integer>"
        "<Integer Name=\"B\"><Value>4</Value><Min>0</Min><Max>10</Max><Unit>us</Unit>"
        "<Representation>HexNumber</Representation></Integer>");
    t.integer("A")->ImposeMax(20);
    EXPECT_EQ(t.integer("A")->GetMax(), 10);
    t.integer("A")->ImposeMax(6);
    t.integer("A")->ImposeMin(2);
    EXPECT_EQ(t.integer("A")->GetMax(), 6);
    EXPECT_EQ(t.integer("A")->GetMin(), 2);
    EXPECT_THROW(t.integer("A")->SetValue(7), GenICam::OutOfRangeException);
    t.integer("B")->SetValue(9);
    EXPECT_EQ(t.integer("A")->GetRepresentation(), HexNumber);
    EXPECT_EQ(t.integer("A")->GetUnit(), "us");
    EXPECT_EQ(t.integer("A")->ToString(), "0x9");
}

TEST(Integer, Rule52AHeldValueIsAVariableOfItsMap) {
    TestMap t("<Integer Name=\"A\"><Value>1</Value></Integer>");
    EXPECT_EQ(t.mode("A"), RW);
    t.integer("A")->SetValue(12);
    EXPECT_EQ(t.integer("A")->GetValue(), 12);
    EXPECT_TRUE(t.integer("A")->IsValueCacheValid());
}

TEST(Integer, Rule57EveryValueReadsBackFromItsText) {
    for (const char* representation : {"Linear", "HexNumber", "IPV4Address", "MACAddress"}) {
        TestMap t("<Integer Name=\"A\"><Value>1</Value><Representation>" +
                  std::string(representation) + "</Representation></Integer>");
        for (const std::int64_t value :
             {std::int64_t{0}, std::int64_t{-1}, INT64_MIN, INT64_MAX, std::int64_t{0xC0A80001},
              std::int64_t{0x0102030405AB}, std::int64_t{0xFFFFFFFF}, std::int64_t{1} << 40}) {
            t.integer("A")->SetValue(value);
            const gcstring text = t.integer("A")->ToString();
            t.integer("A")->SetValue(5);
            t.integer("A")->FromString(text);
            EXPECT_EQ(t.integer("A")->GetValue(), value) << representation << " " << text;
        }
    }
}

TEST(Integer, Rule57AddressesAreWrittenAsSuch) {
    TestMap t(
        "<Integer "
        "Name=\"I\"><Value>0xC0A80001</Value><Representation>IPV4Address</Representation></Integer>"
        "<Integer "
        "Name=\"M\"><Value>0x0102030405AB</Value><Representation>MACAddress</Representation></"
        "Integer>");
    EXPECT_EQ(t.integer("I")->ToString(), "192.168.0.1");
    EXPECT_EQ(t.integer("M")->ToString(), "01:02:03:04:05:AB");
    t.integer("I")->FromString("10.0.0.255");
    EXPECT_EQ(t.integer("I")->GetValue(), 0x0A0000FF);
    EXPECT_THROW(t.integer("I")->FromString("10.0.0.256"), GenICam::InvalidArgumentException);
    EXPECT_THROW(t.integer("I")->FromString("10.0.0"), GenICam::InvalidArgumentException);
}

TEST(Integer, ATextThatIsNoNumberIsRefusedByName) {
    TestMap t("<Integer Name=\"A\"><Value>1</Value></Integer>");
    EXPECT_EQ(
        errorOf<GenICam::InvalidArgumentException>([&] { t.integer("A")->FromString("one"); }),
        "Node 'A' can not take 'one': it is no 64-bit integer.");
    EXPECT_THROW(t.integer("A")->FromString("1.5"), GenICam::InvalidArgumentException);
    EXPECT_THROW(t.integer("A")->FromString("1e-3"), GenICam::InvalidArgumentException);
    EXPECT_EQ(t.integer("A")->GetValue(), 1);
    t.integer("A")->FromString(" 2e1 ");
    EXPECT_EQ(t.integer("A")->GetValue(), 20);
}

TEST(Integer, Rule83RangesAreReportedAsReadAndRefuseEveryWrite) {
    TestMap t("<Integer Name=\"A\"><pValue>R</pValue><Min>0</Min><Max>-1</Max></Integer>" +
              std::string(Reg{"R"}));
    t.port.poke(0, 77);
    EXPECT_EQ(t.integer("A")->GetValue(), 77);
    EXPECT_EQ(t.integer("A")->GetMin(), 0);
    EXPECT_EQ(t.integer("A")->GetMax(), -1);
    EXPECT_EQ(errorOf<GenICam::OutOfRangeException>([&] { t.integer("A")->SetValue(0); }),
              "Node 'A' can not take 0: its range is 0 to -1.");
}

TEST(Integer, Rule11RangesThatNeedEachOtherAreNoCircle) {
    TestMap t(
        "<Integer Name=\"Width\"><Value>10</Value><pMax>Offset</pMax></Integer>"
        "<Integer Name=\"Offset\"><Value>20</Value><pMax>Width</pMax></Integer>");
    EXPECT_EQ(t.integer("Width")->GetMax(), 20);
    EXPECT_EQ(t.integer("Offset")->GetMax(), 10);
    t.integer("Width")->SetValue(15);
    EXPECT_EQ(t.integer("Offset")->GetMax(), 15);
}
