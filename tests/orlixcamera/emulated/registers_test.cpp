#include "orlixcamera/emulated/registers.h"

#include <gtest/gtest.h>

#include <vector>

#include "gcbase/gcexception.h"
#include "orlixcamera/emulated/description.h"
#include "orlixcamera/emulated/featuremap.h"
#include "orlixcamera/pixeltypemapper.h"

namespace {

using namespace EmulatedTest;
using Orlix::CPixelTypeMapper;
using Orlix::Emulated::GetDescriptionFile;
using Orlix::Emulated::Registers;
using Orlix::Emulated::Trigger;

class EmulatedRegisters : public testing::Test {
protected:
    void write(std::int64_t address, std::int64_t value) {
        registers.Write(address, &value, sizeof value);
    }

    Registers registers{{"Orlix", "EmulatedCamera", "1.0", "EMU-1", "first", {}}};
    FeatureMap<Registers> features{*GetDescriptionFile(), registers};
};

TEST_F(EmulatedRegisters, DescriptionLoadsWithoutAnyRemark) {
    for (const LoadRemark& remark : features.map().GetLoadReport().remarks) {
        ADD_FAILURE() << remark.line << ": " << remark.name << ": " << remark.reason;
    }
    EXPECT_EQ(features.map().GetLoadReport().notListed, 0U);
}

TEST_F(EmulatedRegisters, EveryFeatureOfTheTreeCanBeAccessed) {
    features.set("UserSetSelector", "UserSet1");
    NodeList_t nodes;
    features.map().GetNodes(nodes);
    std::size_t count = 0;
    for (INode* node : nodes) {
        const std::string name = node->GetName().c_str();
        const bool waitsForData = features.node((name + "Port").c_str()) != nullptr ||
                                  name.ends_with("Timestamp") || name.ends_with("FrameID");
        if (node->IsFeature() && !waitsForData) {
            EXPECT_TRUE(IsAvailable(node->GetAccessMode())) << node->GetName();
            if (IsReadable(node->GetAccessMode())) {
                EXPECT_NO_THROW(static_cast<void>(CValuePtr(node)->ToString())) << node->GetName();
            }
            ++count;
        }
    }
    EXPECT_GT(count, 40U);
}

TEST_F(EmulatedRegisters, IdentityIsReadAndOnlyTheUserDefinedNameIsWritten) {
    EXPECT_EQ(features.get("DeviceVendorName"), "Orlix");
    EXPECT_EQ(features.get("DeviceModelName"), "EmulatedCamera");
    EXPECT_EQ(features.get("DeviceVersion"), "1.0");
    EXPECT_EQ(features.get("DeviceSerialNumber"), "EMU-1");
    EXPECT_EQ(features.mode("DeviceSerialNumber"), RO);
    features.set("DeviceUserID", "left of the belt");
    EXPECT_EQ(features.get("DeviceUserID"), "left of the belt");
    EXPECT_EQ(registers.GetIdentity().userDefinedName, "left of the belt");
    const std::string longest(64, 'x');
    features.set("DeviceUserID", longest.c_str());
    EXPECT_EQ(features.get("DeviceUserID"), longest);
}

TEST_F(EmulatedRegisters, SizeAndOffsetShareTheSensor) {
    EXPECT_EQ(features.integer("Width")->GetMax(), 4096);
    EXPECT_EQ(features.integer("OffsetX")->GetMax(), 4096 - 1024);
    features.integer("Width")->SetValue(4000);
    EXPECT_EQ(features.integer("OffsetX")->GetMax(), 96);
    features.integer("OffsetX")->SetValue(96);
    EXPECT_EQ(features.integer("Width")->GetMax(), 4000);
    EXPECT_THROW(features.integer("Width")->SetValue(4001), GenICam::OutOfRangeException);
    features.integer("Height")->SetValue(3072);
    EXPECT_EQ(features.integer("OffsetY")->GetMax(), 0);
}

TEST_F(EmulatedRegisters, BinningShrinksTheLimitsAndWhatNoLongerFits) {
    features.integer("Width")->SetValue(2048);
    features.integer("OffsetX")->SetValue(2048);
    features.integer("BinningHorizontal")->SetValue(2);
    EXPECT_EQ(features.integer("WidthMax")->GetValue(), 2048);
    EXPECT_EQ(features.integer("Width")->GetValue(), 2048);
    EXPECT_EQ(features.integer("OffsetX")->GetValue(), 0);
    features.integer("BinningHorizontal")->SetValue(3);
    EXPECT_EQ(features.integer("Width")->GetValue(), 1360);
    EXPECT_EQ(features.integer("Width")->GetMax(), 1360);
    features.integer("BinningVertical")->SetValue(4);
    EXPECT_EQ(features.integer("Height")->GetMax(), 768);
    EXPECT_THROW(features.integer("BinningVertical")->SetValue(5), GenICam::OutOfRangeException);
}

TEST_F(EmulatedRegisters, EveryPixelFormatHasItsNameItsNumberAndItsPayload) {
    NodeList_t entries;
    features.enumeration("PixelFormat")->GetEntries(entries);
    EXPECT_EQ(entries.size(), 55U);
    for (INode* node : entries) {
        const CEnumEntryPtr entry(node);
        const auto type = static_cast<Orlix::EPixelType>(entry->GetValue());
        EXPECT_EQ(CPixelTypeMapper::GetPixelTypeByName(entry->GetSymbolic()), type);
        features.enumeration("PixelFormat")->FromString(entry->GetSymbolic());
        EXPECT_EQ(features.integer("PayloadSize")->GetValue(),
                  static_cast<std::int64_t>(Orlix::ComputeBufferSize(type, 1024, 768)))
            << entry->GetSymbolic();
        EXPECT_EQ(features.integer("Width")->GetMax() % features.integer("Width")->GetInc(), 0);
        EXPECT_EQ(features.integer("Width")->GetInc() * Orlix::BitsPerPixel(type) % 8, 0);
    }
}

TEST_F(EmulatedRegisters, FormatThatNeedsWiderStepsRoundsTheRegionDown) {
    features.integer("Width")->SetValue(1021);
    features.integer("OffsetX")->SetValue(13);
    features.integer("Height")->SetValue(7);
    features.set("PixelFormat", "Mono1p");
    EXPECT_EQ(features.integer("Width")->GetValue(), 1016);
    EXPECT_EQ(features.integer("OffsetX")->GetValue(), 8);
    EXPECT_EQ(features.integer("Width")->GetInc(), 8);
    EXPECT_EQ(features.integer("Width")->GetMin(), 8);
    features.set("PixelFormat", "BayerRG8");
    EXPECT_EQ(features.integer("Height")->GetValue(), 6);
    EXPECT_EQ(features.integer("PayloadSize")->GetValue(), 1016 * 6);
}

TEST_F(EmulatedRegisters, ChangeTellsTheCallbacksOfAllThatDependsOnIt) {
    std::vector<std::string> changed;
    for (const char* name : {"Width", "OffsetX", "PayloadSize", "ResultingFrameRate", "Gain"}) {
        Register(features.node(name),
                 [&](INode* node) { changed.emplace_back(node->GetName().c_str()); });
    }
    features.integer("BinningHorizontal")->SetValue(2);
    EXPECT_EQ(changed.size(), 4U);
    changed.clear();
    features.execute("UserSetLoad");
    EXPECT_EQ(changed.size(), 5U);
}

TEST_F(EmulatedRegisters, GeometryIsLockedWhileTheDeviceAcquires) {
    for (const char* name : {"Width", "Height", "OffsetX", "OffsetY", "BinningHorizontal",
                             "BinningVertical", "ReverseX", "ReverseY", "PixelFormat"}) {
        EXPECT_EQ(features.mode(name), RW) << name;
        features.execute("AcquisitionStart");
        EXPECT_EQ(features.mode(name), RO) << name;
        features.execute("AcquisitionStop");
        EXPECT_EQ(features.mode(name), RW) << name;
    }
    features.execute("AcquisitionStart");
    EXPECT_FALSE(IsWritable(features.mode("UserSetLoad")));
    EXPECT_FALSE(IsWritable(features.mode("AcquisitionStart")));
    EXPECT_EQ(features.mode("ExposureTime"), RW);
    EXPECT_THROW(write(0x1100, 64), GenICam::AccessException) << "the device itself refuses, too";
}

TEST_F(EmulatedRegisters, GeometryIsLockedWhileTheHostStreams) {
    features.integer("TLParamsLocked")->SetValue(1);
    EXPECT_EQ(features.mode("Width"), RO);
    features.integer("TLParamsLocked")->SetValue(0);
    EXPECT_EQ(features.mode("Width"), RW);
}

TEST_F(EmulatedRegisters, EndOfAnAcquisitionShowsWithoutAnyCommand) {
    features.execute("AcquisitionStart");
    EXPECT_EQ(features.mode("Width"), RO);
    registers.EndAcquisition();
    EXPECT_EQ(features.mode("Width"), RW);
}

TEST_F(EmulatedRegisters, ResultingFrameRateFollowsExposureAndTheRateAsked) {
    features.real("ExposureTime")->SetValue(10000);
    EXPECT_DOUBLE_EQ(features.real("ResultingFrameRate")->GetValue(), 100);
    features.real("AcquisitionFrameRate")->SetValue(25);
    EXPECT_DOUBLE_EQ(features.real("ResultingFrameRate")->GetValue(), 100);
    features.set("AcquisitionFrameRateEnable", "1");
    EXPECT_DOUBLE_EQ(features.real("ResultingFrameRate")->GetValue(), 25);
    features.real("AcquisitionFrameRate")->SetValue(1000);
    EXPECT_DOUBLE_EQ(features.real("ResultingFrameRate")->GetValue(), 100);
    EXPECT_THROW(features.real("ExposureTime")->SetValue(0.5), GenICam::OutOfRangeException);
}

TEST_F(EmulatedRegisters, SmallFramesMayComeTenThousandTimesASecond) {
    features.integer("Width")->SetValue(64);
    features.integer("Height")->SetValue(64);
    features.real("ExposureTime")->SetValue(50);
    EXPECT_GT(features.real("ResultingFrameRate")->GetValue(), 10000);
}

TEST_F(EmulatedRegisters, EachColourHasItsOwnGainOnTopOfTheCommonOne) {
    features.set("Gain", "6");
    features.set("GainSelector", "Blue");
    EXPECT_DOUBLE_EQ(features.real("Gain")->GetValue(), 0);
    features.set("Gain", "3");
    features.set("GainSelector", "All");
    EXPECT_DOUBLE_EQ(features.real("Gain")->GetValue(), 6);
    const auto settings = registers.GetPictureSettings();
    EXPECT_DOUBLE_EQ(settings.gainDecibels[0], 6);
    EXPECT_DOUBLE_EQ(settings.gainDecibels[1], 0);
    EXPECT_DOUBLE_EQ(settings.gainDecibels[3], 3);
}

TEST_F(EmulatedRegisters, SoftwareTriggerCountsOnlyInAnAcquisitionThatWaitsForIt) {
    features.set("TriggerMode", "On");
    EXPECT_TRUE(registers.IsTriggerOn(Trigger::FrameStart));
    EXPECT_FALSE(registers.IsTriggerOn(Trigger::AcquisitionStart));
    features.execute("TriggerSoftware");
    EXPECT_FALSE(registers.TakeTrigger(Trigger::FrameStart));
    features.execute("AcquisitionStart");
    features.execute("TriggerSoftware");
    EXPECT_TRUE(registers.TakeTrigger(Trigger::FrameStart));
    EXPECT_FALSE(registers.TakeTrigger(Trigger::FrameStart));
    features.set("TriggerSelector", "AcquisitionStart");
    EXPECT_EQ(features.get("TriggerMode"), "Off");
    features.execute("TriggerSoftware");
    EXPECT_FALSE(registers.TakeTrigger(Trigger::AcquisitionStart));
}

TEST_F(EmulatedRegisters, FrameLimitIsThatOfTheMode) {
    EXPECT_EQ(registers.GetFrameLimit(), 0U);
    features.set("AcquisitionMode", "SingleFrame");
    EXPECT_EQ(registers.GetFrameLimit(), 1U);
    features.set("AcquisitionMode", "MultiFrame");
    features.integer("AcquisitionFrameCount")->SetValue(7);
    EXPECT_EQ(registers.GetFrameLimit(), 7U);
}

TEST_F(EmulatedRegisters, UserSetsKeepSettingsButNotTheName) {
    features.integer("Width")->SetValue(640);
    features.set("DeviceUserID", "kept");
    features.set("UserSetSelector", "UserSet2");
    features.execute("UserSetSave");
    features.set("UserSetSelector", "Default");
    EXPECT_FALSE(IsWritable(features.mode("UserSetSave")));
    features.execute("UserSetLoad");
    EXPECT_EQ(features.integer("Width")->GetValue(), 1024);
    EXPECT_EQ(features.get("DeviceUserID"), "kept");
    features.set("UserSetSelector", "UserSet2");
    features.execute("UserSetLoad");
    EXPECT_EQ(features.integer("Width")->GetValue(), 640);
}

TEST_F(EmulatedRegisters, PowerBringsTheChosenUserSetAndEndsTheAcquisition) {
    features.integer("Height")->SetValue(480);
    features.set("UserSetSelector", "UserSet1");
    features.execute("UserSetSave");
    features.set("UserSetDefault", "UserSet1");
    features.integer("Height")->SetValue(100);
    features.execute("AcquisitionStart");
    registers.PowerUp();
    features.map().InvalidateNodes();
    EXPECT_EQ(features.integer("Height")->GetValue(), 480);
    EXPECT_EQ(features.get("UserSetDefault"), "UserSet1");
    EXPECT_FALSE(registers.IsAcquiring());
}

TEST_F(EmulatedRegisters, RawAccessIsCheckedByTheDevice) {
    std::int64_t values[3] = {};
    EXPECT_THROW(registers.Read(0x1104, values, 8), GenICam::InvalidArgumentException);
    EXPECT_THROW(registers.Read(0x1100, values, 7), GenICam::InvalidArgumentException);
    EXPECT_THROW(registers.Read(-8, values, 8), GenICam::InvalidArgumentException);
    EXPECT_THROW(registers.Read(0x1208, values, 8), GenICam::AccessException);
    EXPECT_THROW(write(0x1030, 5), GenICam::AccessException);
    EXPECT_THROW(write(0x0000, 5), GenICam::AccessException);
    EXPECT_THROW(write(0x1140, 0x01080002), GenICam::OutOfRangeException);
    EXPECT_THROW(write(0x1100, -1), GenICam::OutOfRangeException);
    EXPECT_THROW(write(0x1100, 0), GenICam::OutOfRangeException);
    registers.Read(0x1100, values, sizeof values);
    EXPECT_EQ(values[0], 1024);
    EXPECT_EQ(values[1], 768);
    EXPECT_EQ(values[2], 0);
    try {
        write(0x1118, 4096);
        FAIL();
    } catch (const GenICam::OutOfRangeException& error) {
        EXPECT_STREQ(error.GetDescription(), "Register 'OffsetY' can't take the value 4096.");
    }
}

}  // namespace
