// Texts that people write: the order of their lines, their spelling, and what is wrong with them.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <utility>

#include "orlixcamera/persistence/featuremaps.h"

namespace FeatureTest {
namespace {

TEST_F(FeaturePersistence, AValueBehindASelectorThatFailsIsNotWritten) {
    load(gains);
    set("Gain", "3");
    EXPECT_NE(restoreMessage("GainSelector\tNowhere\nGain\t9\n")
                  .find("Line 2, Gain: its selector "
                        "GainSelector is not set."),
              std::string::npos);
    EXPECT_EQ(get("Gain"), "3");
}

TEST_F(FeaturePersistence, LoadsInAnOrderThatWorks) {
    load(integer("Size", 8, "") + integer("Offset", 0, "<pMax>Size</pMax>"));
    restore("Offset\t7\nSize\t10\n");
    EXPECT_EQ(get("Offset"), "7");
    EXPECT_EQ(get("Size"), "10");
}

TEST_F(FeaturePersistence, ALineBeforeThoseOfItsSelectorIsForThePlaceThatWasSelected) {
    for (const char* extra : {"", "Colour\t1\n"}) {
        for (const char* before : {"All", "Digital2"}) {
            load(gains);
            set("GainSelector", before);
            const std::string stream =
                "Gain\t3\nGainSelector\tDigital2\nGain\t5\n" + std::string(extra);
            EXPECT_EQ(restoreMessage(stream),
                      *extra == 0 ? "no exception"
                                  : "The feature stream could not be loaded whole. Line 4, Colour: "
                                    "there is no such feature.");
            EXPECT_EQ(get("GainSelector"), "Digital2");
            EXPECT_EQ(get("Gain"), "5");
            if (std::string(before) == "All") {
                set("GainSelector", "All");
                EXPECT_EQ(get("Gain"), "3");
            }
        }
    }
}

TEST_F(FeaturePersistence, ASelectorThatIsSpelledInAnotherWayNamesTheSamePlace) {
    load(
        "<Integer Name=\"Place\"><Value>0</Value><Min>0</Min><Max>1</Max><pSelected>Gain"
        "</pSelected></Integer>" +
        integer("Gain", 0, ""));
    restore("Place\t1\nGain\t5\nPlace\t0x1\nGain\t6\n");
    EXPECT_EQ(get("Gain"), "6");
}

TEST_F(FeaturePersistence, AnUnknownNameIsReportedAndTheRestLoaded) {
    load(integer("Width", 0, ""));
    EXPECT_EQ(restoreMessage("Colour\tRed\nWidth\t5\n"),
              "The feature stream could not be loaded whole. Line 1, Colour: there is no such "
              "feature.");
    EXPECT_EQ(get("Width"), "5");
}

TEST_F(FeaturePersistence, NamesEveryValueThatReadsBackAnother) {
    // Both registers are one: the second write shows in the first.
    load(integer("Width", 0, "") + integer("Height", 0, ""));
    const std::string stream = "Width\t5\nHeight\t6\n";
    EXPECT_EQ(restoreMessage(stream),
              "The feature stream could not be loaded whole. Line 1, Width: \"5\" was written, "
              "\"6\" is read.");
    EXPECT_EQ(restoreMessage(stream, false), "no exception");
}

TEST_F(FeaturePersistence, AValueThatIsSpelledInAnotherWayIsNoOther) {
    load(integer("Width", 0, "") +
         integer("Address", 8,
                 "<Representation>IPV4Address"
                 "</Representation>") +
         R"(<Boolean Name="On"><pValue>WidthReg</pValue></Boolean>
<Boolean Name="Off"><pValue>WidthReg</pValue></Boolean>
<Enumeration Name="Mode"><EnumEntry Name="Slow"><Value>0</Value></EnumEntry><EnumEntry Name="Fast">
  <Value>1</Value></EnumEntry><pValue>WidthReg</pValue></Enumeration>
<FloatReg Name="Gain"><Address>16</Address><Length>8</Length><AccessMode>RW</AccessMode>
  <pPort>Device</pPort></FloatReg>
<Register Name="Bytes"><Address>24</Address><Length>2</Length><AccessMode>RW</AccessMode>
  <pPort>Device</pPort></Register>)");
    const std::pair<const char*, const char*> values[] = {
        {"Width\t+640", "640"},
        {"Width\t640.0", "640"},
        {"Width\t6.4e2", "640"},
        {"Width\t-0x10", "-16"},
        {"Width\t0xFFFFFFFFFFFFFFFF", "-1"},
        {"Address\t192.168.001.001", "192.168.1.1"},
        {"Address\t0xC0A80102", "192.168.1.2"},
        {"On\tTRUE", "1"},
        {"On\tfalse", "0"},
        {"Mode\t Fast ", "Fast"},
        {"Gain\t+3", "3"},
        {"Gain\t0x10", "16"},
        {"Bytes\t0xab1c", "0xAB1C"},
        {"Bytes\tCd2e", "0xCD2E"},
    };
    for (const auto& [line, value] : values) {
        EXPECT_EQ(restoreMessage(line), "no exception") << line;
        EXPECT_EQ(get(std::string(line, std::strchr(line, '\t')).c_str()), value) << line;
    }
    EXPECT_EQ(restoreMessage("On\tTRUE\nOff\tFALSE\n"),
              "The feature stream could not be loaded whole. Line 1, On: \"TRUE\" was written, "
              "\"0\" is read.");
}

TEST_F(FeaturePersistence, ASelectorThatStaysAsItWasIsNamedAndNothingIsWrittenBehindIt) {
    // Every number that is written arrives as 0.
    load(R"(
<Integer Name="Place"><pValue>Stuck</pValue><Min>0</Min><Max>1</Max>
  <pSelected>Gain</pSelected></Integer>
<IntConverter Name="Stuck"><FormulaTo>0 * FROM</FormulaTo><FormulaFrom>TO</FormulaFrom>
  <pValue>PlaceReg</pValue></IntConverter>
<IntReg Name="PlaceReg"><Address>0x100</Address><Length>8</Length><AccessMode>RW</AccessMode>
  <pPort>Device</pPort><Endianess>LittleEndian</Endianess></IntReg>
)" + integer("Gain", 0, ""));
    const std::string stream = "Place\t1\nGain\t5\n";
    EXPECT_EQ(restoreMessage(stream),
              "The feature stream could not be loaded whole. Line 1, Place: \"1\" was written, "
              "\"0\" is read. Line 2, Gain: its selector Place is not set.");
    EXPECT_EQ(get("Gain"), "0");
    EXPECT_EQ(restoreMessage(stream, false), "no exception");
}

TEST_F(FeaturePersistence, OnlyTheLastOfSeveralLinesOfOneFeatureCounts) {
    load(integer("Width", 0, ""));
    restore("Width\t5\nWidth\t0x10\n");
    EXPECT_EQ(get("Width"), "16");
}

TEST_F(FeaturePersistence, ALineWithoutATabIsRefusedWithItsNumber) {
    load(integer("Width", 0, ""));
    EXPECT_EQ(restoreMessage("# comment\n\nWidth 5\n"),
              "Line 3 of the feature stream has no tab behind a name: \"Width 5\".");
}

TEST_F(FeaturePersistence, ALineWithAHashAnywhereIsAComment) {
    load(integer("Width", 0, ""));
    restore("Width\t5\nWidth\t6 # wide\nWidth=7 # wide\n");
    EXPECT_EQ(get("Width"), "5");
}

TEST_F(FeaturePersistence, ATextOfAnythingIsAnErrorAndNoMore) {
    load(gains + integer("Width", 0, "") + text("Name", 0x300));
    std::string stream;
    unsigned int state = 1;
    while (stream.size() < 100000) {
        state = state * 1664525U + 1013904223U;
        const char* const pieces[] = {"Width", "\t",  "\n", "Gain", "GainSelector", "\\x",    "#",
                                      "\\",    "All", "9",  "=",    "\xFF",         "Name\t", "-1"};
        stream += pieces[(state >> 16) % std::size(pieces)];
    }
    EXPECT_NE(restoreMessage(stream), "no exception");
    EXPECT_NE(restoreMessage(std::string(100000, 'A') + "\t1"), "no exception");
}

}  // namespace
}  // namespace FeatureTest
