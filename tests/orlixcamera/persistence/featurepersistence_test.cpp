// The state of a node map as text: what is taken in, in which order, and how it comes back.
#include "orlixcamera/featurepersistence.h"

#include <gtest/gtest.h>

#include <cstring>
#include <regex>
#include <sstream>
#include <string>

#include "gcbase/gcexception.h"
#include "genapi/genapi.h"

namespace {

using GenICam::gcstring;
using Orlix::CFeaturePersistence;

const std::string header = "# {05D8C294-F295-4dfb-9D01-096BD04049F4}\n# Tarvek Bench\n";

std::string integer(const std::string& name, int address, const std::string& more) {
    return "<Integer Name=\"" + name + "\"><Streamable>Yes</Streamable>" + more + "<pValue>" +
           name + "Reg</pValue></Integer><IntReg Name=\"" + name + "Reg\"><Address>" +
           std::to_string(address) +
           "</Address><Length>8</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>"
           "<Sign>Signed</Sign><Endianess>LittleEndian</Endianess></IntReg>";
}

std::string text(const std::string& name, int address) {
    return "<StringReg Name=\"" + name + "\"><Streamable>Yes</Streamable><Address>" +
           std::to_string(address) +
           "</Address><Length>64</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>"
           "</StringReg>";
}

// A gain for each of three places, behind a selector of which the middle entry is missing.
const std::string gains = R"(
<Enumeration Name="GainSelector">
  <EnumEntry Name="All"><Value>0</Value></EnumEntry>
  <EnumEntry Name="Absent"><pIsImplemented>Zero</pIsImplemented><Value>1</Value></EnumEntry>
  <EnumEntry Name="Digital2"><Value>2</Value></EnumEntry>
  <pValue>GainSelectorReg</pValue><pSelected>Gain</pSelected>
</Enumeration>
<Integer Name="Zero"><Value>0</Value></Integer>
<IntReg Name="GainSelectorReg"><Address>0x100</Address><Length>8</Length><AccessMode>RW</AccessMode>
  <pPort>Device</pPort><Endianess>LittleEndian</Endianess></IntReg>
<Float Name="Gain"><Streamable>Yes</Streamable><pValue>GainReg</pValue></Float>
<FloatReg Name="GainReg"><Address>0x110</Address><pIndex Offset="8">GainSelector</pIndex>
  <Length>8</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>
  <Endianess>LittleEndian</Endianess></FloatReg>)";

class FeaturePersistence : public testing::Test {
protected:
    void load(const std::string& nodes) {
        const std::string document =
            "<RegisterDescription xmlns=\"http://www.genicam.org/GenApi/Version_1_1\" "
            "ModelName=\"Bench\" VendorName=\"Tarvek\" StandardNameSpace=\"None\">" +
            nodes + "<Port Name=\"Device\"/></RegisterDescription>";
        map_ = GenApi::CNodeMapFactory(GenApi::ContentType_Xml, document.data(), document.size(),
                                       GenApi::CacheUsage_Ignore, false)
                   .CreateNodeMap("Device", true);
        ASSERT_TRUE(map_._Connect(&port_, "Device"));
    }

    void set(const char* name, const std::string& value) {
        GenApi::CValuePtr(map_._GetNode(name))->FromString(gcstring(value));
    }
    std::string get(const char* name) {
        return GenApi::CValuePtr(map_._GetNode(name))->ToString().str();
    }
    std::string save() {
        gcstring stream;
        CFeaturePersistence::SaveToString(stream, map_._Ptr());
        return stream.str();
    }
    void restore(const std::string& stream, bool validate = true) {
        CFeaturePersistence::LoadFromString(gcstring(stream), map_._Ptr(), validate);
    }
    std::string restoreMessage(const std::string& stream, bool validate = true) {
        try {
            restore(stream, validate);
            return "no exception";
        } catch (const GenICam::RuntimeException& exception) {
            return exception.GetDescription();
        }
    }

    GenApi::CMemoryPort port_;
    GenApi::CNodeMapRef map_;
};

}  // namespace

TEST_F(FeaturePersistence, SavesWhatIsStreamableAndCanBeReadAndWritten) {
    load(integer("Width", 0, "") +
         integer("Fixed", 8, "<ImposedAccessMode>RO</ImposedAccessMode>") +
         "<Integer Name=\"Volatile\"><Value>5</Value></Integer>"
         "<Command Name=\"Start\"><Streamable>Yes</Streamable><pValue>WidthReg</pValue>"
         "<CommandValue>1</CommandValue></Command>");
    set("Width", "640");
    EXPECT_EQ(save(), header + "Width\t640\n");
}

TEST_F(FeaturePersistence, ARangeComesBehindWhatItDependsOn) {
    load(integer("Offset", 0, "<pMax>Size</pMax>") + integer("Size", 8, ""));
    set("Size", "10");
    set("Offset", "7");
    EXPECT_EQ(save(), header + "Size\t10\nOffset\t7\n");
}

TEST_F(FeaturePersistence, SavesAFeatureOnceForEachValueOfItsSelector) {
    load(gains);
    set("GainSelector", "Digital2");
    set("Gain", "2.5");
    set("GainSelector", "All");
    set("Gain", "0.1");
    EXPECT_EQ(save(), header +
                          "GainSelector\tAll\nGain\t0.1\n"
                          "GainSelector\tDigital2\nGain\t2.5\n"
                          "GainSelector\tAll\n");
    EXPECT_EQ(get("GainSelector"), "All");
}

TEST_F(FeaturePersistence, TwoSelectorsOfOneFeatureMakeTheProduct) {
    const auto selector = [](const std::string& name) {
        return "<Integer Name=\"" + name +
               "\"><Value>0</Value><Min>0</Min><Max>1</Max><pSelected>Gain</pSelected></Integer>";
    };
    load(selector("Tap") + selector("Channel") +
         "<IntReg Name=\"Gain\"><Streamable>Yes</Streamable><Address>0</Address><pIndex "
         "Offset=\"16\">Tap</pIndex><pIndex Offset=\"4\">Channel</pIndex><Length>4</Length>"
         "<AccessMode>RW</AccessMode><pPort>Device</pPort></IntReg>");
    for (int place = 0; place < 4; ++place) {
        set("Tap", std::to_string(place / 2));
        set("Channel", std::to_string(place % 2));
        set("Gain", std::to_string(10 + place));
    }
    const std::string stream = save();
    EXPECT_EQ(get("Tap") + get("Channel"), "11");
    for (const char* gain : {"10", "11", "12", "13"}) {
        EXPECT_NE(stream.find("Gain\t" + std::string(gain) + "\n"), std::string::npos) << stream;
    }
    for (int place = 0; place < 4; ++place) {
        set("Tap", std::to_string(place / 2));
        set("Channel", std::to_string(place % 2));
        set("Gain", "0");
    }
    restore(stream);
    for (int place = 0; place < 4; ++place) {
        set("Tap", std::to_string(place / 2));
        set("Channel", std::to_string(place % 2));
        EXPECT_EQ(get("Gain"), std::to_string(10 + place));
    }
}

// The outer selects the inner, and in the second description also what that selects.
TEST_F(FeaturePersistence, AnInnerSelectorHasAValueForEachOfTheOuter) {
    for (const char* more : {"", "<pSelected>Gain</pSelected>"}) {
        load(
            "<Integer Name=\"Outer\"><Value>0</Value><Min>0</Min><Max>1</Max><pSelected>Inner"
            "</pSelected>" +
            std::string(more) + R"(</Integer>
<Integer Name="Inner"><Streamable>Yes</Streamable><pValue>InnerReg</pValue><Min>0</Min><Max>2</Max>
  <pSelected>Gain</pSelected></Integer>
<IntReg Name="InnerReg"><Address>0x100</Address><pIndex Offset="8">Outer</pIndex><Length>8</Length>
  <AccessMode>RW</AccessMode><pPort>Device</pPort></IntReg>
<IntReg Name="Gain"><Streamable>Yes</Streamable><Address>0</Address>
  <pIndex Offset="32">Outer</pIndex><pIndex Offset="8">Inner</pIndex><Length>8</Length>
  <AccessMode>RW</AccessMode><pPort>Device</pPort></IntReg>)");
        const auto fill = [&](int first, const char* inner0, const char* inner1) {
            for (int place = 0; place < 6; ++place) {
                set("Outer", std::to_string(place / 3));
                set("Inner", std::to_string(place % 3));
                set("Gain", std::to_string(first + place));
            }
            set("Inner", inner1);
            set("Outer", "0");
            set("Inner", inner0);
        };
        const auto read = [&] {
            std::string state;
            for (const char* outer : {"0", "1"}) {
                set("Outer", outer);
                const std::string own = get("Inner");
                state += own + ":";
                for (const char* inner : {"0", "1", "2"}) {
                    set("Inner", inner);
                    state += " " + get("Gain");
                }
                set("Inner", own);
                state += "\n";
            }
            set("Outer", "0");
            return state;
        };
        fill(10, "0", "1");
        const std::string before = read();
        EXPECT_EQ(before, "0: 10 11 12\n1: 13 14 15\n");
        const std::string stream = save();
        EXPECT_EQ(read(), before);
        fill(20, "2", "2");
        restore(stream);
        EXPECT_EQ(get("Outer"), "0");
        EXPECT_EQ(read(), before) << stream;
    }
}

TEST_F(FeaturePersistence, WhatLiesInAChunkIsLeftOut) {
    load(integer("Width", 0, "") +
         "<Integer Name=\"Stamp\"><Streamable>Yes</Streamable><pValue>StampReg</pValue></Integer>"
         "<IntReg Name=\"StampReg\"><Address>0</Address><Length>8</Length><AccessMode>RW"
         "</AccessMode><pPort>Chunk</pPort></IntReg><Port Name=\"Chunk\"><ChunkID>1</ChunkID>"
         "</Port>");
    GenApi::CChunkPort chunk;
    ASSERT_TRUE(map_._Connect(&chunk, "Chunk"));
    std::uint8_t bytes[8] = {};
    chunk.AttachChunk(bytes, 0, sizeof bytes);
    set("Stamp", "5");
    EXPECT_EQ(save(), header + "Width\t0\n");
}

TEST_F(FeaturePersistence, RestoresEveryPlaceAndTheSelectorItself) {
    load(gains);
    restore(header +
            "GainSelector\tAll\nGain\t0.1\nGainSelector\tDigital2\nGain\t2.5\n"
            "GainSelector\tDigital2\n");
    EXPECT_EQ(get("GainSelector"), "Digital2");
    EXPECT_EQ(get("Gain"), "2.5");
    set("GainSelector", "All");
    EXPECT_EQ(GenApi::CFloatPtr(map_._GetNode("Gain"))->GetValue(), 0.1);
}

TEST_F(FeaturePersistence, KeepsFloatsExact) {
    load(gains);
    const GenApi::CFloatPtr gain(map_._GetNode("Gain"));
    gain->SetValue(1.0 / 3.0);
    const std::string stream = save();
    gain->SetValue(5);
    restore(stream);
    EXPECT_EQ(gain->GetValue(), 1.0 / 3.0);
}

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

TEST_F(FeaturePersistence, AFloatThatCantBeWrittenIsLeftOut) {
    load(integer("Bits", 0, "") +
         R"(<FloatReg Name="Level"><Streamable>Yes</Streamable><Address>0</Address>
  <Length>8</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>
  <Endianess>LittleEndian</Endianess></FloatReg>)");
    const std::pair<const char*, const char*> values[] = {
        {"9221120237041090560", "no number"},
        {"9218868437227405312", "infinity"},
        {"-4503599627370496", "minus infinity"},
    };
    for (const auto& [bits, name] : values) {
        set("Bits", bits);
        EXPECT_EQ(save(), header + "Bits\t" + bits + "\n") << name;
        restore(save());
    }
    set("Bits", "4607182418800017408");
    EXPECT_EQ(save(), header + "Bits\t4607182418800017408\nLevel\t1\n");
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

TEST_F(FeaturePersistence, ANullMapIsRefused) {
    gcstring stream;
    EXPECT_THROW(CFeaturePersistence::SaveToString(stream, nullptr),
                 GenICam::InvalidArgumentException);
    EXPECT_THROW(CFeaturePersistence::LoadFromString("", nullptr),
                 GenICam::InvalidArgumentException);
}

TEST_F(FeaturePersistence, AnyTextComesBackAndEachLineLooksLikeOne) {
    load(text("Line1", 0x200) + text("Name", 0x300));
    const std::regex tabForm("[a-zA-Z]+[\t]");
    const std::regex equalsForm("^([a-zA-Z0-9]+)(\\s*=\\s*)");
    for (const std::string value :
         {"", " ", "a=b", "=", "#1", "tab\there", "two\nlines", " both ends ", "back\\slash", "\\e",
          "\\x41", "\r", "\xC3\xA4", "plain"}) {
        set("Line1", value);
        set("Name", value);
        const std::string stream = save();
        std::istringstream lines(stream);
        for (std::string line; std::getline(lines, line);) {
            const bool isComment = line.starts_with("# ");
            EXPECT_TRUE(isComment || std::regex_search(line, tabForm)) << line;
            EXPECT_TRUE(isComment || line.find('#') == std::string::npos) << line;
            EXPECT_FALSE(std::regex_search(line, equalsForm)) << line;
        }
        set("Line1", "other");
        set("Name", "other");
        restore(stream);
        EXPECT_EQ(get("Line1"), value);
        EXPECT_EQ(get("Name"), value);
    }
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
