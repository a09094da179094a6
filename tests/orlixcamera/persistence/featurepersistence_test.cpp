// The state of a node map as text: what is taken in, in which order, and how it comes back.
#include "orlixcamera/featurepersistence.h"

#include <gtest/gtest.h>

#include <regex>
#include <sstream>
#include <string>
#include <utility>

#include "orlixcamera/persistence/featuremaps.h"

namespace FeatureTest {
namespace {

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
std::string nestedSelectors(const std::string& more) {
    return "<Integer Name=\"Outer\"><Value>0</Value><Min>0</Min><Max>1</Max><pSelected>Inner"
           "</pSelected>" +
           more + R"(</Integer>
<Integer Name="Inner"><Streamable>Yes</Streamable><pValue>InnerReg</pValue><Min>0</Min><Max>2</Max>
  <pSelected>Gain</pSelected></Integer>
<IntReg Name="InnerReg"><Address>0x100</Address><pIndex Offset="8">Outer</pIndex><Length>8</Length>
  <AccessMode>RW</AccessMode><pPort>Device</pPort></IntReg>
<IntReg Name="Gain"><Streamable>Yes</Streamable><Address>0</Address>
  <pIndex Offset="32">Outer</pIndex><pIndex Offset="8">Inner</pIndex><Length>8</Length>
  <AccessMode>RW</AccessMode><pPort>Device</pPort></IntReg>)";
}

TEST_F(FeaturePersistence, ALineIsForTheValueThatAnInnerSelectorHasWhereTheOuterIsSet) {
    for (const char* more : {"", "<pSelected>Gain</pSelected>"}) {
        for (const char* rest : {"", "Inner\t2\nGain\t6\n"}) {
            load(nestedSelectors(more));
            set("Outer", "1");
            for (const char* inner : {"0", "2", "1"}) {
                set("Inner", inner);
                set("Gain", "0");
            }
            set("Outer", "0");
            restore(header + "Outer\t1\nGain\t5\n" + rest);
            EXPECT_EQ(get("Inner"), *rest == '\0' ? "1" : "2");
            std::string gains;
            for (const char* inner : {"0", "1", "2"}) {
                set("Inner", inner);
                gains += get("Gain") + " ";
            }
            EXPECT_EQ(gains, *rest == '\0' ? "0 5 0 " : "0 5 6 ");
        }
    }
}

TEST_F(FeaturePersistence, AnInnerSelectorHasAValueForEachOfTheOuter) {
    for (const char* more : {"", "<pSelected>Gain</pSelected>"}) {
        load(nestedSelectors(more));
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

}  // namespace
}  // namespace FeatureTest
