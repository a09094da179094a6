#include "orlixcamera/nodeparameter.h"

#include <gtest/gtest.h>

#include <cstring>

#include "gcbase/gcexception.h"
#include "genapi/genapi.h"

namespace Orlix {
namespace {

constexpr const char* description = R"(<?xml version="1.0" encoding="UTF-8"?>
<RegisterDescription xmlns="http://www.genicam.org/GenApi/Version_1_1" ModelName="Parameters"
    VendorName="Orlix" StandardNameSpace="None" SchemaMajorVersion="1" SchemaMinorVersion="1"
    SchemaSubMinorVersion="0" MajorVersion="1" MinorVersion="0" SubMinorVersion="0"
    ProductGuid="2E6E1B0C-6C8B-4C0E-9D54-2B1A6A2F7D11"
    VersionGuid="27C0D7F2-1C5A-4D4B-8E0F-53A4A2C9E612">
  <Category Name="Root"><pFeature>Number</pFeature></Category>
  <Integer Name="Number"><ToolTip>A number.</ToolTip><DisplayName>The Number</DisplayName>
    <Value>12</Value><Min>2</Min><Max>22</Max><Inc>2</Inc></Integer>
  <Boolean Name="Flag"><pValue>FlagValue</pValue><OnValue>1</OnValue><OffValue>0</OffValue></Boolean>
  <Integer Name="FlagValue"><Value>1</Value></Integer>
  <Float Name="Real"><Value>1.5</Value><Min>-2</Min><Max>3</Max></Float>
  <String Name="Text"><Value>abc</Value></String>
  <Enumeration Name="Choice">
    <EnumEntry Name="One"><Value>1</Value></EnumEntry>
    <EnumEntry Name="Two"><Value>2</Value></EnumEntry>
    <EnumEntry Name="Away"><pIsAvailable>Zero</pIsAvailable><Value>3</Value></EnumEntry>
    <Value>1</Value></Enumeration>
  <Integer Name="Zero"><Value>0</Value></Integer>
  <Integer Name="HiddenNumber"><pIsAvailable>Zero</pIsAvailable><Value>3</Value></Integer>
  <Boolean Name="HiddenFlag"><pIsAvailable>Zero</pIsAvailable><pValue>FlagValue</pValue></Boolean>
  <Float Name="HiddenReal"><pIsAvailable>Zero</pIsAvailable><Value>1</Value></Float>
  <String Name="HiddenText"><pIsAvailable>Zero</pIsAvailable><Value>x</Value></String>
  <Enumeration Name="HiddenChoice"><pIsAvailable>Zero</pIsAvailable>
    <EnumEntry Name="One"><Value>1</Value></EnumEntry><Value>1</Value></Enumeration>
  <Integer Name="Locked"><pIsLocked>FlagValue</pIsLocked><Value>5</Value></Integer>
</RegisterDescription>
)";

class NodeParameter : public testing::Test {
protected:
    [[nodiscard]] GenApi::INode* node(const char* name) const { return map->GetNode(name); }

    const GenApi::CNodeMapRef map =
        GenApi::CNodeMapFactory(GenApi::ContentType_Xml, description, std::strlen(description))
            .CreateNodeMap();
};

TEST_F(NodeParameter, ReadsAndWritesTheFeatureOfItsType) {
    CIntegerParameter number(node("Number"));
    number.SetValue(14);
    EXPECT_EQ(number.GetValue(false, false), 14);
    EXPECT_EQ(number.GetMin(), 2);
    EXPECT_EQ(number.GetMax(), 22);
    EXPECT_EQ(number.GetInc(), 2);
    EXPECT_EQ(number.GetInfo(ParameterInfo_Name), "Number");
    EXPECT_EQ(number.GetInfo(ParameterInfo_DisplayName), "The Number");
    EXPECT_EQ(number.GetInfo(ParameterInfo_ToolTip), "A number.");
    CBooleanParameter flag(*map, "Flag");
    flag.SetValue(false);
    EXPECT_FALSE(flag.GetValue(false, false));
    CFloatParameter real(map._Ptr(), "Real");
    real.SetValue(2.25);
    EXPECT_EQ(real.GetValue(false, false), 2.25);
    EXPECT_EQ(real.GetMin(), -2);
    EXPECT_EQ(real.GetMax(), 3);
    CStringParameter text(node("Text"));
    text.SetValue("new");
    EXPECT_EQ(text.GetValue(false, false), "new");
    CEnumParameter choice(*map, "Choice");
    choice.SetValue("Two");
    EXPECT_EQ(choice.GetValue(), "Two");
}

TEST_F(NodeParameter, FailuresOfTheFeatureAreItsExceptions) {
    CIntegerParameter number(*map, "Number");
    EXPECT_THROW(number.SetValue(100), GenICam::OutOfRangeException);
    EXPECT_EQ(number.GetValue(), 12);
    EXPECT_THROW(CEnumParameter(*map, "Choice").SetValue("Four"), GenICam::GenericException);
    EXPECT_THROW(CIntegerParameter(*map, "Locked").SetValue(6), GenICam::AccessException);
}

// A null node, a null map, an unknown name, a node of another type.
TEST_F(NodeParameter, ThatRefersToNothingIsNotValidAndThrowsOnAccess) {
    GenApi::INode* const none = nullptr;
    GenApi::INodeMap* const noMap = nullptr;
    EXPECT_FALSE(CIntegerParameter(none).IsValid());
    EXPECT_FALSE(CIntegerParameter(noMap, "Number").IsValid());
    EXPECT_FALSE(CIntegerParameter(*map, "Nothing").IsValid());
    EXPECT_FALSE(CIntegerParameter(*map, "Text").IsValid());
    EXPECT_FALSE(CBooleanParameter(none).IsValid());
    EXPECT_FALSE(CFloatParameter(noMap, "Real").IsReadable());
    EXPECT_FALSE(CStringParameter(*map, "Real").IsValid());
    EXPECT_FALSE(CEnumParameter(*map, "Number").IsWritable());
    EXPECT_THROW(static_cast<void>(CIntegerParameter(none).GetValue()), GenICam::AccessException);
    EXPECT_THROW(CBooleanParameter(none).SetValue(true), GenICam::AccessException);
    EXPECT_THROW(static_cast<void>(CFloatParameter(none).GetValue()), GenICam::AccessException);
    EXPECT_THROW(static_cast<void>(CStringParameter(none).GetValue()), GenICam::AccessException);
    EXPECT_THROW(CEnumParameter(none).SetValue("One"), GenICam::AccessException);
}

TEST_F(NodeParameter, GivesTheDefaultForAnAbsentOrUnreadableFeature) {
    for (const char* name : {"HiddenNumber", "Nothing"}) {
        EXPECT_EQ(CIntegerParameter(*map, name).GetValueOrDefault(9), 9);
        EXPECT_FALSE(CIntegerParameter(*map, name).IsValid());
    }
    EXPECT_EQ(CIntegerParameter(*map, "Number").GetValueOrDefault(9), 12);
    EXPECT_TRUE(CIntegerParameter(*map, "Number").IsValid());
    EXPECT_TRUE(CBooleanParameter(*map, "HiddenFlag").GetValueOrDefault(true));
    EXPECT_TRUE(CBooleanParameter(*map, "Flag").GetValueOrDefault(false));
    EXPECT_EQ(CFloatParameter(*map, "HiddenReal").GetValueOrDefault(7), 7);
    EXPECT_EQ(CFloatParameter(*map, "Real").GetValueOrDefault(7), 1.5);
    EXPECT_EQ(CStringParameter(*map, "HiddenText").GetValueOrDefault("d"), "d");
    EXPECT_EQ(CStringParameter(*map, "Text").GetValueOrDefault("d"), "abc");
    EXPECT_EQ(CEnumParameter(*map, "HiddenChoice").GetValueOrDefault("Mono8"), "Mono8");
    EXPECT_EQ(CEnumParameter(*map, "Choice").GetValueOrDefault("Mono8"), "One");
}

TEST_F(NodeParameter, TryingToSetTellsInsteadOfThrowing) {
    EXPECT_TRUE(CEnumParameter(*map, "Choice").TrySetValue("Two"));
    EXPECT_EQ(CEnumParameter(*map, "Choice").GetValue(), "Two");
    EXPECT_FALSE(CEnumParameter(*map, "Choice").TrySetValue("Four"));
    EXPECT_FALSE(CEnumParameter(*map, "Choice").TrySetValue("Away"));
    EXPECT_FALSE(CEnumParameter(*map, "HiddenChoice").TrySetValue("One"));
    EXPECT_FALSE(CEnumParameter(*map, "Nothing").TrySetValue("One"));
    EXPECT_FALSE(CEnumParameter(static_cast<GenApi::INode*>(nullptr)).TrySetValue("One"));
    EXPECT_TRUE(CBooleanParameter(*map, "Flag").TrySetValue(false));
    EXPECT_FALSE(CBooleanParameter(*map, "HiddenFlag").TrySetValue(true));
    EXPECT_TRUE(CFloatParameter(*map, "Real").TrySetValue(0.5));
    EXPECT_FALSE(CFloatParameter(*map, "HiddenReal").TrySetValue(0.5));
    EXPECT_TRUE(CStringParameter(*map, "Text").TrySetValue("t"));
    EXPECT_FALSE(CStringParameter(*map, "HiddenText").TrySetValue("t"));
}

}  // namespace
}  // namespace Orlix
