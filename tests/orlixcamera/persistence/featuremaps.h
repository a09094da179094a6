// What tests of feature streams share: descriptions of a few features, and a map of them in memory.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "gcbase/gcexception.h"
#include "genapi/genapi.h"
#include "orlixcamera/featurepersistence.h"

namespace FeatureTest {

using GenICam::gcstring;
using Orlix::CFeaturePersistence;

inline const std::string header = "# {05D8C294-F295-4dfb-9D01-096BD04049F4}\n# Tarvek Bench\n";

inline std::string integer(const std::string& name, int address, const std::string& more) {
    return "<Integer Name=\"" + name + "\"><Streamable>Yes</Streamable>" + more + "<pValue>" +
           name + "Reg</pValue></Integer><IntReg Name=\"" + name + "Reg\"><Address>" +
           std::to_string(address) +
           "</Address><Length>8</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>"
           "<Sign>Signed</Sign><Endianess>LittleEndian</Endianess></IntReg>";
}

inline std::string text(const std::string& name, int address) {
    return "<StringReg Name=\"" + name + "\"><Streamable>Yes</Streamable><Address>" +
           std::to_string(address) +
           "</Address><Length>64</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>"
           "</StringReg>";
}

// A gain for each of three places, behind a selector of which the middle entry is missing.
inline const std::string gains = R"(
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

}  // namespace FeatureTest
