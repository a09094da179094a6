// The language of pin mappings: every form, every message, and where a message points.
#include "camera/pinmappingparser.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "gcbase/gcexception.h"
#include "support/texts.h"

namespace Plugin::OrlixVCellPackageBase {

namespace {

using GenICam::gcstring;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

using Lines = std::vector<gcstring>;

PinMappingMap parse(PinMappingType type, const Lines& lines) {
    PinMappingMap result;
    PinMappingParser().parse(type, lines, result);
    return result;
}

std::string getMessage(PinMappingType type, const Lines& lines) {
    return getFailure<GenICam::RuntimeException>([&] { parse(type, lines); });
}

std::vector<gcstring> getValues(const PinMapping& pin, PinProperty property) {
    const auto found = pin.properties.find(property);
    return found == pin.properties.end() ? std::vector<gcstring>() : found->second;
}

struct RefusedLine {
    const char* name;
    PinMappingType type;
    const char* line;
    const char* message;
};

// Tests are named by the case and not by its bytes.
void PrintTo(const RefusedLine& line, std::ostream* out) {
    *out << line.line;
}

class PinMappingLine : public testing::TestWithParam<RefusedLine> {};

TEST_P(PinMappingLine, IsRefusedWithItsMessage) {
    EXPECT_EQ(getMessage(GetParam().type, {GetParam().line}), GetParam().message);
}

constexpr auto chunk = PinMappingType::ChunkData;
constexpr auto event = PinMappingType::Event;

INSTANTIATE_TEST_SUITE_P(
    PinMappingParser, PinMappingLine,
    testing::Values(
        RefusedLine{"BlankBehindEqualSign", chunk, "A.Type= Integer",
                    "Expected valid pin property payload not found."},
        RefusedLine{"NoPayload", chunk,
                    "A.Type=", "Expected valid pin property payload not found."},
        RefusedLine{"NoNameYet", event, ".Type=Integer", "Pin name cannot be determined."},
        RefusedLine{"EventNameOfChunk", chunk, "A.Type=Integer.EventName=X",
                    "Pin property 'EventName' cannot be combined with pin mapping type "
                    "'ChunkData'."},
        RefusedLine{"SelectorNameOfEvent", event, "A.Type=Integer.SelectorName=X",
                    "Pin property 'SelectorName' cannot be combined with pin mapping type "
                    "'Event'."},
        RefusedLine{"SelectorValueOfEvent", event, "A.Type=Integer.SelectorValue=X",
                    "Pin property 'SelectorValue' cannot be combined with pin mapping type "
                    "'Event'."},
        RefusedLine{"ValueNameOfNothing", PinMappingType::Invalid, "A.Type=Integer.ValueName=X",
                    "Pin property 'ValueName' cannot be combined with pin mapping type "
                    "'Invalid'."},
        RefusedLine{"TwoEventNames", event, "A.Type=Integer.EventName=X.EventName=Y",
                    "Pin property 'EventName' found too many times."},
        RefusedLine{"TwoSelectorNames", chunk, "A.Type=Integer.SelectorName=X.SelectorName=X",
                    "Pin property 'SelectorName' found too many times."},
        RefusedLine{"TwoSelectorValues", chunk, "A.Type=Integer.SelectorValue=1.SelectorValue=2",
                    "Pin property 'SelectorValue' found too many times."},
        RefusedLine{"TwoTypes", event, "A.Type=Integer A.Type=Float",
                    "Pin type of 'A' has been declared twice."},
        RefusedLine{"SameTypeTwice", event, "A.Type=Integer A.Type=Integer",
                    "Pin type of 'A' has been declared twice."},
        RefusedLine{"NameAsProperty", event, "A.Type=Integer.A.Type=Float",
                    "Unknown pin property name 'A' found."},
        RefusedLine{"TypeInLowerCase", event, "A.Type=integer", "Pin type 'integer' is not valid"},
        RefusedLine{"InvalidType", event, "A.Type=Invalid", "Pin type 'Invalid' is not valid"},
        RefusedLine{"UnknownProperty", event, "A.Colour=Red",
                    "Unknown pin property name 'Colour' found."},
        RefusedLine{"PropertyInvalid", event, "A.Invalid=X",
                    "Unknown pin property name 'Invalid' found."},
        RefusedLine{"NameOnly", event, "A", "Unexpected end of line. Expected dot."},
        RefusedLine{"NameAndBlanks", event, "A  ", "Unexpected end of line. Expected dot."},
        RefusedLine{"ColonForDot", event, "A:Type=Integer", "Unexpected content. Expected dot."},
        RefusedLine{"NoEqualSign", event, "A.Type", "Unexpected end of line. Expected =."},
        RefusedLine{"ColonForEqualSign", event, "A.Type:Integer",
                    "Unexpected content. Expected =."},
        RefusedLine{"NoProperty", event, "A.=X", "Expected valid property pin name not found."},
        RefusedLine{"DotAtTheEnd", event, "A.", "Expected valid property pin name not found."},
        RefusedLine{"MinusAsName", event, "-A.Type=Integer", "Expected valid name not found."},
        RefusedLine{"LetterBeyondAscii", event, "\xC3\x84.Type=Integer",
                    "Expected valid name not found."},
        RefusedLine{"NameWithUnderscore", event, "_A.Type=Integer",
                    "A pin name must not start with an underscore."},
        RefusedLine{"NameWithDigit", event, "1A.Type=Integer",
                    "A pin name must not start with a digit."},
        RefusedLine{"UnderscoreInPayload", chunk, "A.Type=Integer.ValueName=Chunk_X",
                    "A pin name must not start with an underscore."},
        RefusedLine{"QuotedName", chunk, "A.Type=Integer.ValueName=\"X\"",
                    "A pin name '\"X\"' contains invalid characters."},
        RefusedLine{"EventNameWithDigit", event, "A.Type=Integer.EventName=1X",
                    "A pin name must not start with a digit."}),
    [](const auto& test) { return std::string(test.param.name); });

}  // namespace

TEST(PinMappingParser, ReadsAnEventPin) {
    const PinMappingMap result =
        parse(event, {"ExposureEnd.Type=Integer.EventName=ExposureEnd.ValueName=EventExposureEnd"});
    ASSERT_EQ(result.size(), 1U);
    const PinMapping& pin = result.at("ExposureEnd");
    EXPECT_EQ(pin.pinName, "ExposureEnd");
    EXPECT_EQ(pin.mappingType, PinMappingType::Event);
    EXPECT_EQ(pin.pinType, PinType::Integer);
    EXPECT_THAT(
        pin.properties,
        ElementsAre(Pair(PinProperty::Type, ElementsAre(gcstring("Integer"))),
                    Pair(PinProperty::EventName, ElementsAre(gcstring("ExposureEnd"))),
                    Pair(PinProperty::ValueName, ElementsAre(gcstring("EventExposureEnd")))));
}

TEST(PinMappingParser, ReadsAChunkPin) {
    const PinMappingMap result =
        parse(chunk, {"ExposureTime.Type=Float.ValueName=ChunkExposureTime"});
    ASSERT_EQ(result.size(), 1U);
    EXPECT_EQ(result.at("ExposureTime").pinType, PinType::Float);
    EXPECT_EQ(result.at("ExposureTime").mappingType, PinMappingType::ChunkData);
}

TEST(PinMappingParser, KnowsTheFourTypes) {
    const PinMappingMap result =
        parse(chunk, {"A.Type=Boolean", "B.Type=Float", "C.Type=Integer", "D.Type=String"});
    EXPECT_EQ(result.at("A").pinType, PinType::Boolean);
    EXPECT_EQ(result.at("B").pinType, PinType::Float);
    EXPECT_EQ(result.at("C").pinType, PinType::Integer);
    EXPECT_EQ(result.at("D").pinType, PinType::String);
}

TEST(PinMappingParser, ASelectorValueMayBeginWithADigit) {
    const PinMappingMap result = parse(
        chunk, {"Gain.Type=Float.SelectorName=GainSelector.SelectorValue=1.ValueName=ChunkGain"});
    EXPECT_THAT(getValues(result.at("Gain"), PinProperty::SelectorName),
                ElementsAre(gcstring("GainSelector")));
    EXPECT_THAT(getValues(result.at("Gain"), PinProperty::SelectorValue),
                ElementsAre(gcstring("1")));
}

TEST(PinMappingParser, ASelectorValueKeepsItsDoubleQuotes) {
    const PinMappingMap result = parse(chunk, {"A.Type=Float.SelectorValue=\"1\""});
    EXPECT_THAT(getValues(result.at("A"), PinProperty::SelectorValue),
                ElementsAre(gcstring("\"1\"")));
}

TEST(PinMappingParser, KeepsSeveralValueNamesInTheirOrder) {
    const PinMappingMap result =
        parse(chunk, {"Lines.Type=Integer.ValueName=ChunkB.ValueName=ChunkA"});
    EXPECT_THAT(getValues(result.at("Lines"), PinProperty::ValueName),
                ElementsAre(gcstring("ChunkB"), gcstring("ChunkA")));
}

TEST(PinMappingParser, WhiteSpaceMayStandAroundDotsAndBeforeTheEqualSign) {
    const PinMappingMap result = parse(chunk, {" \tA . Type =Integer . ValueName\t=X "});
    EXPECT_THAT(getValues(result.at("A"), PinProperty::ValueName), ElementsAre(gcstring("X")));
}

TEST(PinMappingParser, OneLineMayHoldTwoPins) {
    const PinMappingMap result = parse(event, {"A.Type=Integer B.Type=Float"});
    EXPECT_EQ(result.at("A").pinType, PinType::Integer);
    EXPECT_EQ(result.at("B").pinType, PinType::Float);
}

TEST(PinMappingParser, ALineThatBeginsWithADotGoesOnWithThePinBefore) {
    const PinMappingMap result = parse(chunk, {"A.Type=Integer", ".ValueName=X"});
    ASSERT_EQ(result.size(), 1U);
    EXPECT_THAT(getValues(result.at("A"), PinProperty::ValueName), ElementsAre(gcstring("X")));
}

TEST(PinMappingParser, ATypeMayStandBehindTheOtherProperties) {
    const PinMappingMap result = parse(chunk, {"A.ValueName=X", "A.Type=Integer"});
    EXPECT_THAT(getValues(result.at("A"), PinProperty::ValueName), ElementsAre(gcstring("X")));
}

TEST(PinMappingParser, APinWithoutATypeDisappearsWithAllItsProperties) {
    EXPECT_THAT(parse(event, {"A.ValueName=X"}), IsEmpty());
    EXPECT_THAT(parse(chunk, {"A.EventName=X.EventName=1"}), IsEmpty());
}

TEST(PinMappingParser, LinesWithNothingInThemDeclareNothing) {
    EXPECT_THAT(parse(event, {}), IsEmpty());
    EXPECT_THAT(parse(event, {"", " \t\r\n\v\f"}), IsEmpty());
}

TEST(PinMappingParser, ALineEndsAtItsFirstNul) {
    const PinMappingMap result = parse(event, {gcstring("A.Type=Integer\0.Bad", 19)});
    EXPECT_EQ(result.size(), 1U);
}

TEST(PinMappingParser, NamesDifferByCase) {
    EXPECT_EQ(parse(event, {"a.Type=Integer A.Type=Float"}).size(), 2U);
}

TEST(PinMappingParser, ForgetsWhatTheResultHeldBefore) {
    PinMappingMap result;
    result["Old"].pinName = "Old";
    PinMappingParser().parse(event, {}, result);
    EXPECT_THAT(result, IsEmpty());
}

TEST(PinMappingParser, TheSecondPassKnowsNoNameOfTheFirst) {
    // The first pass ends with a current name; were it kept, the second would take this line.
    EXPECT_EQ(getMessage(event, {".ValueName=X", "A.Type=Integer"}),
              "Pin name cannot be determined.");
}

TEST(PinMappingParser, ARepeatedValueIsAnotherKindOfFailure) {
    try {
        parse(chunk, {"A.Type=Integer.ValueName=X.ValueName=X"});
        FAIL() << "nothing thrown";
    } catch (const std::runtime_error& error) {
        EXPECT_EQ(typeid(error), typeid(std::runtime_error));
        EXPECT_STREQ(error.what(), "Value 'X' cannot be applied multiple times.");
    }
}

TEST(PinMappingParser, ABadTypeFarDownIsToldBeforeABadPropertyAbove) {
    EXPECT_EQ(getMessage(chunk, {"A.Type=Integer.EventName=X", "B.Type=Nothing"}),
              "Pin type 'Nothing' is not valid");
}

TEST(PinMappingParser, ATypeOnAnotherLineIsDeclaredTwiceToo) {
    EXPECT_EQ(getMessage(event, {"A.Type=Integer", "A.Type=Integer"}),
              "Pin type of 'A' has been declared twice.");
}

TEST(PinMappingParser, CountsLinesFromZeroAndEmptyOnesToo) {
    PinMappingParser parser;
    PinMappingMap result;
    EXPECT_THROW(parser.parse(event, {"A.Type=Integer", "", "  ", "B"}, result),
                 GenICam::RuntimeException);
    EXPECT_EQ(parser.getLine(), 3U);
    EXPECT_EQ(parser.getColumn(), 0U);
}

TEST(PinMappingParser, TellsTheLineOfABadPropertyToo) {
    PinMappingParser parser;
    PinMappingMap result;
    EXPECT_THROW(parser.parse(event, {"A.Type=Integer", "A.EventName=1"}, result),
                 GenICam::RuntimeException);
    EXPECT_EQ(parser.getLine(), 1U);
    EXPECT_EQ(parser.getColumn(), 0U);
}

TEST(PinMapping, AnEnumerationBeyondItsMembersHasNoName) {
    EXPECT_STREQ(toText(static_cast<PinMappingType>(3)), "");
    EXPECT_STREQ(toText(static_cast<PinType>(5)), "");
    EXPECT_STREQ(toText(static_cast<PinProperty>(6)), "");
    EXPECT_STREQ(toText(static_cast<PinType>(-1)), "");
    EXPECT_STREQ(toText(PinMappingType::Invalid), "Invalid");
    EXPECT_STREQ(toText(PinType::Invalid), "Invalid");
    EXPECT_STREQ(toText(PinProperty::Invalid), "Invalid");
}

}  // namespace Plugin::OrlixVCellPackageBase
