#include "orlixhost/jsonsettings.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

#include "host/support/message.h"

namespace Orlix::Host {
namespace {

using Path = JsonSettings::Path;
using Testing::messageOf;

Path path(const char* key) {
    return Path(gcstring(key));
}

Path path(const char* key, std::size_t index) {
    return Path(gcstring(key)).addElement(index);
}

TEST(JsonSettings, KeepsKeysInTheOrderInWhichTheyWereStored) {
    JsonSettings settings;
    settings.setInteger(path("zebra"), 1);
    settings.setInteger(path("ant"), 2);
    settings.setInteger(path("mole"), 3);
    settings.setInteger(path("zebra"), 4);
    EXPECT_EQ(settings.getKeys(Path()), (std::vector<gcstring>{"zebra", "ant", "mole"}));
    EXPECT_EQ(settings.getInteger(path("zebra")), 4);
}

TEST(JsonSettings, TakesAnyTextAsKey) {
    JsonSettings settings;
    const std::vector<gcstring> keys = {"",           "a.b",        "a/b",     "a~b",
                                        "\"quoted\"", "line\nfeed", "\xc3\xa4"};
    for (const gcstring& key : keys) {
        settings.setString(Path(key), key);
    }
    const auto again = JsonSettings::fromText(settings.toText());
    EXPECT_EQ(again->getKeys(Path()), keys);
    for (const gcstring& key : keys) {
        EXPECT_EQ(again->getString(Path(key)), key);
    }
}

TEST(JsonSettings, KeepsIntegersExactTo64Bits) {
    constexpr auto smallest = std::numeric_limits<std::int64_t>::min();
    constexpr auto largest = std::numeric_limits<std::int64_t>::max();
    constexpr auto largestUnsigned = std::numeric_limits<std::uint64_t>::max();
    JsonSettings settings;
    settings.setInteger(path("smallest"), smallest);
    settings.setInteger(path("largest"), largest);
    settings.setUnsigned(path("unsigned"), largestUnsigned);
    settings.setInteger(path("odd"), (std::int64_t{1} << 53) + 1);
    const auto again = JsonSettings::fromText(settings.toText());
    EXPECT_EQ(again->getInteger(path("smallest")), smallest);
    EXPECT_EQ(again->getInteger(path("largest")), largest);
    EXPECT_EQ(again->getUnsigned(path("unsigned")), largestUnsigned);
    EXPECT_EQ(again->getInteger(path("odd")), 9007199254740993);
}

TEST(JsonSettings, ConvertsIntegersBetweenSignedAndUnsignedWhereTheyFit) {
    JsonSettings settings;
    settings.setUnsigned(path("rate"), 50);
    settings.setInteger(path("order"), 2);
    EXPECT_EQ(settings.getInteger(path("rate")), 50);
    EXPECT_EQ(settings.getUnsigned(path("order")), 2U);
}

TEST(JsonSettings, RefusesIntegersThatDoNotFit) {
    JsonSettings settings;
    settings.setInteger(path("negative"), -1);
    settings.setUnsigned(path("large"), std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(messageOf([&] { static_cast<void>(settings.getUnsigned(path("negative"))); }),
              "setting \"negative\": the number -1 does not fit an unsigned 64-bit integer");
    EXPECT_EQ(messageOf([&] { static_cast<void>(settings.getInteger(path("large"))); }),
              "setting \"large\": the number 18446744073709551615 does not fit a signed 64-bit "
              "integer");
}

TEST(JsonSettings, WrongKindNamesPathExpectedAndFound) {
    const auto settings = JsonSettings::fromText(
        R"({"text": "fast", "number": 1.5, "flag": true, "list": [1], "part": {"a": null}})");
    EXPECT_EQ(messageOf([&] { static_cast<void>(settings->getInteger(path("text"))); }),
              "setting \"text\": expected an integer, found the text \"fast\"");
    EXPECT_EQ(messageOf([&] { static_cast<void>(settings->getUnsigned(path("number"))); }),
              "setting \"number\": expected an integer, found the number 1.5");
    EXPECT_EQ(messageOf([&] { static_cast<void>(settings->getString(path("flag"))); }),
              "setting \"flag\": expected a text, found true");
    EXPECT_EQ(messageOf([&] { static_cast<void>(settings->getBool(path("list", 0))); }),
              "setting \"list[0]\": expected true or false, found the number 1");
    EXPECT_EQ(messageOf([&] { static_cast<void>(settings->getFloat(path("part"))); }),
              "setting \"part\": expected a number, found a section");
    EXPECT_EQ(messageOf([&] {
                  static_cast<void>(settings->getString(path("part").addElement(gcstring("a"))));
              }),
              "setting \"part.a\": expected a text, found null");
    EXPECT_EQ(messageOf([&] { static_cast<void>(settings->getKeys(path("list"))); }),
              "setting \"list\": expected a section, found an array");
    EXPECT_EQ(messageOf([&] { static_cast<void>(settings->getArraySize(path("part"))); }),
              "setting \"part\": expected an array, found a section");
}

TEST(JsonSettings, AbsentPathIsNotContainedAndItsGetThrows) {
    const auto settings = JsonSettings::fromText(R"({"list": [1]})");
    EXPECT_FALSE(settings->contains(path("missing")));
    EXPECT_FALSE(settings->contains(path("list", 1)));
    EXPECT_TRUE(settings->contains(path("list", 0)));
    EXPECT_EQ(messageOf([&] { static_cast<void>(settings->getBool(path("missing"))); }),
              "setting \"missing\": there is no such setting");
}

TEST(JsonSettings, FloatsAreReadFromAnyNumberAndKeepTheirDigits) {
    JsonSettings settings;
    settings.setFloat(path("third"), 1.0 / 3.0);
    settings.setInteger(path("whole"), 3);
    const auto again = JsonSettings::fromText(settings.toText());
    EXPECT_EQ(again->getFloat(path("third")), 1.0 / 3.0);
    EXPECT_EQ(again->getFloat(path("whole")), 3.0);
}

TEST(JsonSettings, NumberThatIsNotFiniteCanNotBeStored) {
    JsonSettings settings;
    EXPECT_EQ(messageOf([&] {
                  settings.setFloat(path("gain"), std::numeric_limits<double>::infinity());
              }),
              "setting \"gain\": a number that is not finite can not be stored");
    EXPECT_FALSE(settings.contains(path("gain")));
}

TEST(JsonSettings, SetMakesMissingSectionsAndReplacesValues) {
    JsonSettings settings;
    settings.setBool(path("a").addElement(gcstring("b")).addElement(gcstring("c")), true);
    settings.setString(path("a").addElement(gcstring("b")).addElement(gcstring("c")), "text");
    EXPECT_EQ(settings.toText(),
              "{\n  \"a\": {\n    \"b\": {\n      \"c\": \"text\"\n    }\n  }\n}\n");
}

TEST(JsonSettings, SetThroughAValueThatIsNoSectionThrows) {
    JsonSettings settings;
    settings.setInteger(path("a"), 1);
    EXPECT_EQ(messageOf([&] { settings.setInteger(path("a").addElement(gcstring("b")), 2); }),
              "setting \"a.b\": expected a section on the way, found the number 1");
    EXPECT_EQ(messageOf([&] { settings.setInteger(path("a", 0), 2); }),
              "setting \"a[0]\": expected an array on the way, found the number 1");
    EXPECT_EQ(settings.getInteger(path("a")), 1);
}

TEST(JsonSettings, ArrayTakesElementsUpToItsSize) {
    JsonSettings settings;
    settings.setArraySize(path("list"), 2);
    settings.setString(path("list", 0), "first");
    settings.setString(path("list", 1), "second");
    EXPECT_EQ(settings.getArraySize(path("list")), 2U);
    EXPECT_EQ(settings.getString(path("list", 1)), "second");
    EXPECT_EQ(messageOf([&] { settings.setString(path("list", 2), "third"); }),
              "setting \"list[2]\": the array has 2 elements");
}

TEST(JsonSettings, ArrayOfSizeZeroIsContained) {
    JsonSettings settings;
    settings.setArraySize(path("list"), 0);
    EXPECT_TRUE(settings.contains(path("list")));
    EXPECT_EQ(settings.getArraySize(path("list")), 0U);
}

TEST(JsonSettings, NewArrayElementsAreEmptySections) {
    JsonSettings settings;
    settings.setArraySize(path("list"), 1);
    EXPECT_TRUE(settings.getKeys(path("list", 0)).empty());
}

TEST(JsonSettings, SectionIsAStoreWithPathsRelativeToIt) {
    JsonSettings settings("/recipes");
    const auto section = settings.createSection(path("DeviceProperties"));
    section->setString(path("SerialNumber"), "12");
    section->setString(path(""), "empty key");
    EXPECT_EQ(section->getBasePath(), "/recipes");
    EXPECT_EQ(settings.getString(path("DeviceProperties").addElement(gcstring("SerialNumber"))),
              "12");
    EXPECT_EQ(settings.getKeys(path("DeviceProperties")),
              (std::vector<gcstring>{"SerialNumber", ""}));
    EXPECT_EQ(messageOf([&] { static_cast<void>(section->getBool(path("SerialNumber"))); }),
              "setting \"DeviceProperties.SerialNumber\": expected true or false, found the text "
              "\"12\"");
}

TEST(JsonSettings, EmptyBasePathMeansNoFolder) {
    EXPECT_FALSE(JsonSettings().hasBasePath());
    JsonSettings settings("/recipes");
    EXPECT_TRUE(settings.hasBasePath());
    EXPECT_EQ(settings.getBasePath(), "/recipes");
}

TEST(JsonSettings, RootThatIsNoObjectIsRefused) {
    EXPECT_EQ(messageOf([] { JsonSettings::fromText("[1]"); }),
              "settings: expected a section, found an array");
}

TEST(JsonSettings, UnknownKeysAreThoseNeitherReadNorSaved) {
    const auto loaded = JsonSettings::fromText(
        R"({"read": 1, "asked": 2, "saved": 3, "typo": 4, "part": {"x": 1, "y": {"z": 2}},
            "list": [{"known": 1, "odd": 2}]})");
    JsonSettings saved;
    saved.setInteger(path("saved"), 0);
    static_cast<void>(loaded->getInteger(path("read")));
    static_cast<void>(loaded->contains(path("asked")));
    static_cast<void>(loaded->getInteger(path("part").addElement(gcstring("x"))));
    static_cast<void>(loaded->getArraySize(path("list")));
    static_cast<void>(loaded->getInteger(path("list", 0).addElement(gcstring("known"))));
    EXPECT_EQ(loaded->unknownKeys(saved),
              (std::vector<std::string>{"typo", "part.y", "list[0].odd"}));
}

// Whoever lists them reads them all, and may leave out what it doesn't know without a word.
TEST(JsonSettings, KeysOfAListedSectionAreKnownIfTheyAreSavedAgain) {
    const auto loaded =
        JsonSettings::fromText(R"({"part": {"x": "1", "y": "2", "none": ""}, "list": ["z"]})");
    for (const auto& key : loaded->getKeys(path("part"))) {
        static_cast<void>(loaded->getString(path("part").addElement(key)));
    }
    static_cast<void>(loaded->getArraySize(path("list")));
    JsonSettings saved;
    saved.createSection(path("part"))->setString(path("x"), "1");
    EXPECT_EQ(loaded->unknownKeys(saved), std::vector<std::string>{"part.y"});
}

TEST(JsonSettings, RemembersWhatWasReadLast) {
    const auto settings = JsonSettings::fromText(R"({"a": 1})");
    EXPECT_EQ(settings->lastRead(), "");
    static_cast<void>(settings->contains(path("b")));
    static_cast<void>(settings->getInteger(path("a")));
    EXPECT_EQ(settings->lastRead(), "a");
}

TEST(JsonSettings, TextThatIsNotUtf8CanNotBeStored) {
    JsonSettings settings;
    settings.setString(path("sourcePath"), "\xff");
    EXPECT_EQ(messageOf([&] { static_cast<void>(settings.toText()); }),
              "a text is not UTF-8 and can not be stored as JSON");
}

}  // namespace
}  // namespace Orlix::Host
