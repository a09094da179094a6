// The parameter tree of Camera.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/camerafixture.h"
#include "support/golden.h"

namespace Plugin::OrlixVCellPackageBase {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class CameraParameters : public CameraFixture {
protected:
    std::vector<std::string> featuresOf(const char* name) {
        GenApi::FeatureList_t features;
        GenApi::CCategoryPtr(feature(name))->GetFeatures(features);
        std::vector<std::string> names;
        for (auto* value : features) {
            names.push_back(value->GetNode()->GetName().str());
        }
        return names;
    }

    std::vector<std::string> selectedBy(const char* selector) {
        GenApi::FeatureList_t features;
        GenApi::CSelectorPtr(feature(selector))->GetSelectedFeatures(features);
        std::vector<std::string> names;
        for (auto* value : features) {
            names.push_back(value->GetNode()->GetName().str());
        }
        return names;
    }

    std::vector<std::string> entriesOf(const char* enumeration) {
        GenApi::NodeList_t entries;
        GenApi::CEnumerationPtr(feature(enumeration))->GetEntries(entries);
        std::vector<std::string> names;
        for (auto* entry : entries) {
            names.push_back(GenApi::CEnumEntryPtr(entry)->GetSymbolic().str());
        }
        return names;
    }
};

TEST_F(CameraParameters, DescriptionIsTheGoldenOne) {
    expectGolden(node().describeParameters().str(), "camera.xml");
}

TEST_F(CameraParameters, CategoriesStandInTheirOrderWithTheConfigurationSetsLast) {
    EXPECT_THAT(
        featuresOf("Root"),
        ElementsAre("DeviceEnumerationControl", "SelectedDeviceInformation", "AcquisitionControl",
                    "EventOutputControl", "ChunkOutputControl", "ConfigurationSetPersistence"));
}

TEST_F(CameraParameters, FeaturesStandInTheirOrder) {
    EXPECT_THAT(featuresOf("AcquisitionControl"),
                ElementsAre("AcquisitionMode", "FixCorruptImages"));
    EXPECT_THAT(featuresOf("SelectedDeviceInformation"),
                ElementsAre("SelectedDeviceModelName", "SelectedDeviceSerialNumber",
                            "SelectedDeviceVendorName", "SelectedDeviceUserDefinedName"));
    EXPECT_THAT(featuresOf("DeviceEnumerationControl"),
                ElementsAre("DeviceListUpdate", "DeviceSelector", "DeviceModelName",
                            "DeviceVendorName", "DeviceSerialNumber", "DeviceUserDefinedName",
                            "DeviceChoose", "DevicePropertySelector", "DevicePropertyKey",
                            "DevicePropertyValue", "DevicePropertyAdd", "DevicePropertyRemove"));
    EXPECT_THAT(
        featuresOf("EventOutputControl"),
        ElementsAre("EventPinSelector", "EventPinConfiguration", "EventPinAdd", "EventPinRemove"));
    EXPECT_THAT(featuresOf("ChunkOutputControl"),
                ElementsAre("ChunkPinSelector", "ChunkPinValue", "ChunkPinAdd", "ChunkPinRemove"));
    EXPECT_THAT(
        featuresOf("ConfigurationSetPersistence"),
        ElementsAre("ConfigurationSetSelector", "ConfigurationSetFetch", "ConfigurationSetStaged",
                    "ConfigurationSetCommit", "ConfigurationSetActive", "ConfigurationSetClear"));
}

TEST_F(CameraParameters, SelectorsNameWhatTheySelect) {
    EXPECT_THAT(selectedBy("DeviceSelector"),
                ElementsAre("DeviceModelName", "DeviceVendorName", "DeviceSerialNumber",
                            "DeviceUserDefinedName", "DeviceChoose"));
    EXPECT_THAT(selectedBy("DevicePropertySelector"),
                ElementsAre("DevicePropertyKey", "DevicePropertyValue", "DevicePropertyAdd",
                            "DevicePropertyRemove"));
    EXPECT_THAT(selectedBy("EventPinSelector"),
                ElementsAre("EventPinConfiguration", "EventPinAdd", "EventPinRemove"));
    EXPECT_THAT(selectedBy("ChunkPinSelector"),
                ElementsAre("ChunkPinValue", "ChunkPinAdd", "ChunkPinRemove"));
    EXPECT_THAT(selectedBy("ConfigurationSetSelector"), IsEmpty());
}

TEST_F(CameraParameters, EntriesStandInTheirOrderWhichIsNotThatOfTheirValues) {
    EXPECT_THAT(entriesOf("AcquisitionMode"), ElementsAre("SingleFrame", "Continuous"));
    EXPECT_THAT(entriesOf("FixCorruptImages"), ElementsAre("On", "Off"));
    EXPECT_THAT(
        entriesOf("ConfigurationSetSelector"),
        ElementsAre("CameraDevice", "CameraInstance", "DeviceTransportLayer", "StreamGrabber"));
    const GenApi::CEnumerationPtr sets(feature("ConfigurationSetSelector"));
    EXPECT_EQ(sets->GetEntryByName("CameraInstance")->GetValue(), 0);
    EXPECT_EQ(sets->GetEntryByName("StreamGrabber")->GetValue(), 1);
    EXPECT_EQ(sets->GetEntryByName("CameraDevice")->GetValue(), 2);
    EXPECT_EQ(sets->GetEntryByName("DeviceTransportLayer")->GetValue(), 3);
}

TEST_F(CameraParameters, OddNamesAndTextsAreKept) {
    EXPECT_EQ(feature("ChunkPinValue")->GetDisplayName(), "Chunk Pin Configuration");
    EXPECT_EQ(feature("EventPinConfiguration")->GetDisplayName(), "Event Pin Configuration");
    EXPECT_EQ(feature("DeviceListUpdate")->GetDisplayName(), "Device List Update");
    EXPECT_EQ(feature("FixCorruptImages")->GetDescription(),
              "Enables the Fix Corrupt Images feature. Images marked as failed by the orlix "
              "acquisition engine, e.g., because of image content lost in transfer, are corrected "
              "and provided at the ouptput by using a best effort approach.");
    EXPECT_EQ(feature("ChunkPinValue")->GetToolTip(),
              "String that maps a camera's data chunk to the vCell's output pin.");
}

TEST_F(CameraParameters, ActiveSetStartsWithTheTextForNoDevice) {
    EXPECT_EQ(text("ConfigurationSetActive"), "No device listed");
    node().setStreamType(StreamType::CameraInstance);
    EXPECT_EQ(text("ConfigurationSetActive"), "");
}

TEST_F(CameraParameters, AFreshNodeHasItsFirstStates) {
    EXPECT_EQ(GenApi::CEnumerationPtr(feature("AcquisitionMode"))->ToString(), "Continuous");
    EXPECT_EQ(GenApi::CEnumerationPtr(feature("FixCorruptImages"))->ToString(), "Off");
    for (const char* name :
         {"SelectedDeviceModelName", "SelectedDeviceSerialNumber", "SelectedDeviceVendorName",
          "SelectedDeviceUserDefinedName", "DeviceSelector", "DeviceChoose",
          "DevicePropertySelector", "DevicePropertyKey", "DevicePropertyValue",
          "DevicePropertyRemove", "EventPinSelector", "EventPinConfiguration", "EventPinRemove",
          "ChunkPinSelector", "ChunkPinValue", "ChunkPinRemove"}) {
        EXPECT_FALSE(isAvailable(name)) << name;
    }
    for (const char* name :
         {"AcquisitionMode", "FixCorruptImages", "DeviceListUpdate", "DevicePropertyAdd",
          "EventPinAdd", "ChunkPinAdd", "ConfigurationSetSelector", "ConfigurationSetFetch",
          "ConfigurationSetStaged", "ConfigurationSetCommit", "ConfigurationSetActive",
          "ConfigurationSetClear"}) {
        EXPECT_TRUE(isAvailable(name)) << name;
    }
}

TEST_F(CameraParameters, CommandsAreWriteOnlyWhateverTheirFlagSays) {
    for (const char* name : {"DeviceListUpdate", "DevicePropertyAdd", "EventPinAdd"}) {
        EXPECT_EQ(feature(name)->GetAccessMode(), GenApi::WO) << name;
    }
}

class CameraWithOpenLock final : public Camera {
public:
    using Camera::Camera;
    using Camera::getLock;
    ~CameraWithOpenLock() override { cleanup(); }
};

TEST_F(CameraParameters, NodeAndMapShareOneLock) {
    CameraWithOpenLock camera(resources.pool);
    GenApi::INodeMap& ownMap = *camera.getNodeMapInfos().at(0).GetNodeMap();
    camera.getLock()->lock();
    EXPECT_TRUE(ownMap.GetLock().IsOwned());
    camera.getLock()->unlock();
    EXPECT_FALSE(ownMap.GetLock().IsOwned());
}

}  // namespace
}  // namespace Plugin::OrlixVCellPackageBase
