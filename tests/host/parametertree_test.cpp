#include "orlixhost/parametertree.h"

#include <gtest/gtest.h>

#include <array>

#include "genapi/inodemap.h"
#include "host/support/message.h"
#include "host/support/temporaryfolder.h"
#include "orlixhost/descriptionfile.h"

namespace Orlix::Host {
namespace {

using Testing::messageOf;

constexpr const char* description = R"(<?xml version="1.0" encoding="utf-8"?>
<RegisterDescription ModelName="Model" VendorName="Vendor" StandardNameSpace="None"
  SchemaMajorVersion="1" SchemaMinorVersion="1" SchemaSubMinorVersion="0" MajorVersion="1"
  MinorVersion="0" SubMinorVersion="0" ProductGuid="1" VersionGuid="1"
  xmlns="http://www.genicam.org/GenApi/Version_1_1">
  <Category Name="Root"><pFeature>Gain</pFeature><pFeature>Width</pFeature>
    <pFeature>Mode</pFeature><pFeature>Reset</pFeature><pFeature>Label</pFeature>
    <pFeature>Fixed</pFeature></Category>
  <Float Name="Gain"><Value>1.5</Value><Min>0</Min><Max>10</Max><Unit>dB</Unit></Float>
  <Integer Name="Width"><Visibility>Expert</Visibility><Value>16</Value><Min>8</Min><Max>64</Max>
    <Inc>8</Inc></Integer>
  <Enumeration Name="Mode"><EnumEntry Name="Off"><Value>0</Value></EnumEntry>
    <EnumEntry Name="On"><Value>1</Value></EnumEntry><Value>0</Value></Enumeration>
  <Command Name="Reset"><pValue>ResetReg</pValue><CommandValue>7</CommandValue></Command>
  <IntReg Name="ResetReg"><Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode>
    <pPort>Device</pPort><Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess></IntReg>
  <StringReg Name="Label"><Address>0x100</Address><Length>8</Length><AccessMode>RW</AccessMode>
    <pPort>Device</pPort></StringReg>
  <IntReg Name="Fixed"><Address>0</Address><Length>4</Length><AccessMode>RO</AccessMode>
    <pPort>Device</pPort><Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess></IntReg>
  <Integer Name="Hidden"><Value>1</Value></Integer>
  <Port Name="Device"/>
</RegisterDescription>
)";

class ParameterTree : public testing::Test {
protected:
    [[nodiscard]] Parameter read(const std::string& name) {
        for (Parameter& parameter : readParameters(file_.nodeMap())) {
            if (parameter.name == name) {
                return std::move(parameter);
            }
        }
        ADD_FAILURE() << "no parameter " << name;
        return {};
    }

    void set(const std::string& name, const std::string& value) {
        static_cast<void>(setParameter(file_.nodeMap(), name, value));
    }

    [[nodiscard]] std::string refusal(const std::string& name, const std::string& value) {
        return messageOf([&] { set(name, value); });
    }

    Testing::TemporaryFolder folder_;
    DescriptionFile file_{folder_.write("camera.xml", description)};
};

TEST_F(ParameterTree, ListsFeaturesInTheOrderOfTheDescription) {
    std::vector<std::string> names;
    for (const Parameter& parameter : readParameters(file_.nodeMap())) {
        names.push_back(parameter.name);
    }
    EXPECT_EQ(names,
              (std::vector<std::string>{"Gain", "Width", "Mode", "Reset", "Label", "Fixed"}));
}

TEST_F(ParameterTree, FloatHasValueRangeAndUnit) {
    const Parameter gain = read("Gain");
    EXPECT_EQ(gain.category, "Root");
    EXPECT_EQ(gain.kind, "Float");
    EXPECT_EQ(gain.access, "RW");
    EXPECT_EQ(gain.value, ParameterValue(1.5));
    EXPECT_EQ(gain.min, ParameterValue(0.0));
    EXPECT_EQ(gain.max, ParameterValue(10.0));
    EXPECT_EQ(gain.inc, ParameterValue());
    EXPECT_EQ(gain.unit, "dB");
    EXPECT_EQ(gain.visibility, "Beginner");
}

TEST_F(ParameterTree, IntegerHasAnIncrement) {
    const Parameter width = read("Width");
    EXPECT_EQ(width.value, ParameterValue(std::int64_t{16}));
    EXPECT_EQ(width.inc, ParameterValue(std::int64_t{8}));
    EXPECT_EQ(width.visibility, "Expert");
}

TEST_F(ParameterTree, SetsEveryKindOfParameter) {
    set("Gain", "2.25");
    set("Width", "0x20");
    set("Mode", "On");
    set("Label", "front");
    set("Reset", "1");
    EXPECT_EQ(read("Gain").value, ParameterValue(2.25));
    EXPECT_EQ(read("Width").value, ParameterValue(std::int64_t{32}));
    EXPECT_EQ(read("Mode").value, ParameterValue(std::string("On")));
    EXPECT_EQ(read("Label").value, ParameterValue(std::string("front")));
    // The command has written its value to the register that the last feature reads.
    EXPECT_EQ(read("Fixed").value, ParameterValue(std::int64_t{7}));
}

TEST_F(ParameterTree, RefusalsNameValueAndWhatIsAllowed) {
    const std::vector<std::array<std::string, 3>> cases = {
        {"Gain", "11", ": its range is 0 to 10."},
        {"Gain", "loud", "; it takes 0 to 10"},
        {"Width", "12", "; it takes 8 to 64 in steps of 8"},
        {"Mode", "Auto", "; it takes Off, On"},
    };
    for (const auto& [name, value, allowed] : cases) {
        const std::string message = refusal(name, value);
        EXPECT_EQ(message.find("parameter \"" + name + "\": can not be set to \"" + value + "\": "),
                  0U)
            << message;
        ASSERT_GE(message.size(), allowed.size());
        EXPECT_EQ(message.substr(message.size() - allowed.size()), allowed);
    }
}

TEST_F(ParameterTree, CommandIsExecutedByOneOnly) {
    EXPECT_EQ(refusal("Reset", "yes"),
              "parameter \"Reset\": can not be set to \"yes\": a command is executed by 1");
    EXPECT_EQ(read("Fixed").value, ParameterValue(std::int64_t{0}));
}

TEST_F(ParameterTree, ParameterThatIsReadOnlyIsNotSet) {
    EXPECT_EQ(refusal("Fixed", "1"),
              "parameter \"Fixed\": can not be set to \"1\": it is not writable now (RO)");
}

TEST_F(ParameterTree, NodeThatIsNoFeatureIsUnknown) {
    EXPECT_EQ(refusal("Hidden", "1"),
              "there is no parameter \"Hidden\"; there are Gain, Width, Mode, Reset, Label, Fixed");
}

TEST_F(ParameterTree, TextThatIsTooLongIsRefusedAndNotCut) {
    EXPECT_NE(refusal("Label", "too long a text"), "nothing was thrown");
    EXPECT_EQ(read("Label").value, ParameterValue(std::string()));
}

}  // namespace
}  // namespace Orlix::Host
