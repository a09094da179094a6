// The served description, read by the engine that hosts use.
#include "serveddescription.h"

#include <gtest/gtest.h>

#include "genapi/genapi.h"
#include "genapi/loadreport.h"
#include "orlixcamera/emulated/description.h"

namespace Orlix::Camsim::Testing {
namespace {

using namespace GenApi;

CNodeMapRef load(const std::string& bytes) {
    return CNodeMapFactory(ContentType_Xml, bytes.data(), bytes.size()).CreateNodeMap();
}

std::int64_t addressOf(const CNodeMapRef& map, const char* name) {
    return CRegisterPtr(map->GetNode(name))->GetAddress();
}

const std::string& emulated() {
    return *Emulated::GetDescriptionFile();
}

TEST(ServedDescription, HasTheFeaturesOfTheStandardBesideThoseOfTheCamera) {
    const CNodeMapRef map = load(MakeDescriptionText(emulated(), EventIds::Short));
    for (const char* name :
         {"Width", "AcquisitionStart", "AcquisitionStop", "PayloadSize", "GevSCPSPacketSize",
          "GevCurrentIPAddress", "GevHeartbeatTimeout", "GevSCPSFireTestPacket", "GevCCP",
          "GevMCPHostPort", "GevTimestampTickFrequency", "GevGVSPExtendedIDMode"}) {
        EXPECT_NE(map->GetNode(name), nullptr) << name;
    }
    const CCategoryPtr category = map->GetNode("TransportLayerControl");
    FeatureList_t features;
    category->GetFeatures(features);
    EXPECT_GT(features.size(), 30U);
}

TEST(ServedDescription, MovesTheCamerasRegistersAndNoOthers) {
    const CNodeMapRef map = load(MakeDescriptionText(emulated(), EventIds::Short));
    EXPECT_EQ(addressOf(map, "WidthReg"), cameraBase + 0x1100);
    EXPECT_EQ(addressOf(map, "DeviceVendorName"), cameraBase);
    EXPECT_EQ(addressOf(map, "GevSCDAReg"), 0x0D18);
    EXPECT_EQ(addressOf(map, "ChunkTimestampReg"), 0);
}

TEST(ServedDescription, ReadsEventsBehindTheHeaderOfTheirRecord) {
    EXPECT_EQ(addressOf(load(MakeDescriptionText(emulated(), EventIds::Short)),
                        "EventFrameStartTimestampReg"),
              16);
    EXPECT_EQ(addressOf(load(MakeDescriptionText(emulated(), EventIds::Long)),
                        "EventFrameStartFrameIDReg"),
              24 + 8);
}

TEST(ServedDescription, TheUrlNamesPlaceAndLength) {
    const ServedDescription plain = MakeDescription(emulated(), FileForm::Plain, EventIds::Short);
    char expected[80];
    std::snprintf(expected, sizeof expected, "Local:OrlixEmulatedCamera.xml;200000;%zx",
                  plain.bytes.size());
    EXPECT_EQ(plain.url, expected);
}

TEST(ServedDescription, AZipHoldsTheSameText) {
    const ServedDescription zipped = MakeDescription(emulated(), FileForm::Zipped, EventIds::Short);
    EXPECT_EQ(zipped.url.substr(0, 32), "Local:OrlixEmulatedCamera.zip;20");
    EXPECT_EQ(zipped.bytes.substr(0, 2), "PK");
    EXPECT_LT(zipped.bytes.size(), MakeDescriptionText(emulated(), EventIds::Short).size() / 4);
    EXPECT_EQ(addressOf(load(zipped.bytes), "WidthReg"), cameraBase + 0x1100);
}

}  // namespace
}  // namespace Orlix::Camsim::Testing
