// Configuration sets between a camera and the node: when they travel, and what a failure looks
// like.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "gcbase/gcexception.h"
#include "support/scriptedcamera.h"
#include "support/treesettings.h"

namespace Plugin::OrlixVCellPackageBase {
namespace {

namespace Utils = Orlix::DataProcessing::Utils;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

constexpr auto refused = "Failed to load feature streams from active configuration set.";

class CameraConfigurationTransfer : public ScriptedCamera {
protected:
    void allocate() { ASSERT_THAT(camera().allocateResources(), IsEmpty()); }
    std::string errorStart() { return "3 Camera " + toText(static_cast<const Camera*>(&camera())); }
    std::string failed(const char* function, const std::string& message) {
        return errorStart() + ": Plugin::OrlixVCellPackageBase::Camera::" + function +
               " failed. Message: \"" + message + "\" (src/plugins/";
    }
    std::int64_t cameraSetting(const char* name) {
        GenApi::INodeMap& map = *camera().getNodeMapInfos().at(1).GetNodeMap();
        return GenApi::CIntegerPtr(map.GetNode(name))->GetValue();
    }
    // Of the camera's own features, with a device that fails as told; what the node logs of it.
    std::vector<std::string> fetch(const std::function<void()>& failure, std::string& thrown) {
        device->onAccess = failure;
        const Utils::LogCapture capture;
        thrown = getFailure<GenICam::GenericException>([&] { camera().executeOFSFetch(); });
        device->onAccess = nullptr;
        return getLines(capture, category);
    }
    std::vector<std::string> commitWidth(const std::function<void()>& failure) {
        camera().setStreamType(StreamType::CameraDevice);
        camera().setOFSStagedContent("Width=16");
        device->onAccess = failure;
        const Utils::LogCapture capture;
        EXPECT_EQ(getFailure<GenICam::RuntimeException>([&] { camera().executeOFSCommit(); }),
                  refused);
        device->onAccess = nullptr;
        return getLines(capture, category);
    }

    static constexpr auto failLibrary = [] {
        throw GenICam::TimeoutException("no answer", __FILE__, __LINE__);
    };
    static constexpr auto failStandard = [] { throw std::runtime_error("standard"); };
    static constexpr auto failUnknown = [] { throw 1; };
};

TEST_F(CameraConfigurationTransfer, ASetOfTheCameraObjectWaitsForTheNextAllocation) {
    allocate();
    const std::int64_t before = cameraSetting("MaxNumBuffer");
    commit(StreamType::CameraInstance, "MaxNumBuffer=7");
    EXPECT_EQ(shownText("ConfigurationSetActive"),
              "# {05D8C294-F295-4dfb-9D01-096BD04049F4}\nMaxNumBuffer\t7\n");
    ASSERT_NE(before, 7);
    EXPECT_EQ(cameraSetting("MaxNumBuffer"), before);
    camera().freeResources();
    EXPECT_EQ(cameraSetting("MaxNumBuffer"), before);
    allocate();
    EXPECT_EQ(cameraSetting("MaxNumBuffer"), 7);
}

TEST_F(CameraConfigurationTransfer, ASetOfARecipeReachesAnOpenDeviceWithTheNextAllocation) {
    allocate();
    const auto store = std::make_shared<TreeSettings>();
    store->createSection(TreeSettings::path("FeatureStreams"))
        ->setString(TreeSettings::path("@CameraDevice"), "Width\t24\n");
    camera().loadSettings(store);
    EXPECT_EQ(device->Get(CameraTest::Address::width), 8);
    camera().freeResources();
    allocate();
    EXPECT_EQ(device->Get(CameraTest::Address::width), 24);
}

TEST_F(CameraConfigurationTransfer, ASetOfTheStreamReachesItWithTheAllocationAndAtOnceWhenOpen) {
    commit(StreamType::StreamGrabber, "MaxNumBuffer=9");
    EXPECT_NE(cameraSetting("MaxNumBuffer"), 9);
    allocate();
    EXPECT_EQ(cameraSetting("MaxNumBuffer"), 9);
    commit(StreamType::StreamGrabber, "MaxNumBuffer=11");
    EXPECT_EQ(cameraSetting("MaxNumBuffer"), 11);
}

TEST_F(CameraConfigurationTransfer, TheStreamsSetComesFirstThenThatOfTheLayerThenTheDevices) {
    const std::pair<StreamType, std::string> sets[] = {
        {StreamType::StreamGrabber, "OfTheStream"},
        {StreamType::DeviceTransportLayer, "OfTheLayer"},
        {StreamType::CameraDevice, "OfTheDevice"}};
    for (const auto& [type, name] : sets) {
        commit(type, (name + "=1").c_str());
    }
    for (const auto& [type, name] : sets) {
        const Utils::LogCapture capture;
        EXPECT_THAT(descriptionsOf(camera().allocateResources()), ElementsAre(refused));
        EXPECT_THAT(publishedMaps(), ElementsAre("@vCell", "@CameraInstance"));
        EXPECT_FALSE(device->IsOpen());
        std::vector<std::string> failed;
        for (const std::string& line : getLines(capture, category)) {
            const std::size_t place = line.find("Line 2, ");
            if (place != std::string::npos) {
                failed.push_back(line.substr(place));
            }
        }
        EXPECT_THAT(failed, ElementsAre("Line 2, " + name + ": there is no such feature.\""));
        camera().setStreamType(type);
        camera().executeOFSClear();
    }
    allocate();
}

TEST_F(CameraConfigurationTransfer, EveryAllocationWritesACommittedSetAgain) {
    commit(StreamType::CameraDevice, "Width=24");
    for (int round = 0; round < 2; ++round) {
        device->Set(CameraTest::Address::width, 8);
        allocate();
        EXPECT_EQ(device->Get(CameraTest::Address::width), 24);
        camera().freeResources();
    }
    device->Set(CameraTest::Address::width, 8);
    camera().executeOFSClear();
    allocate();
    EXPECT_EQ(device->Get(CameraTest::Address::width), 8);
}

TEST_F(CameraConfigurationTransfer, ACommitOfAnEmptyTextLeavesTheDeviceAsItIs) {
    commit(StreamType::CameraDevice, "Width=24");
    allocate();
    device->Set(CameraTest::Address::width, 8);
    const Utils::LogCapture capture;
    commit(StreamType::CameraDevice, "");
    EXPECT_EQ(device->Get(CameraTest::Address::width), 8);
    EXPECT_EQ(shownText("ConfigurationSetActive"), "");
    EXPECT_THAT(getLines(capture, category), IsEmpty());
    camera().freeResources();
    allocate();
    EXPECT_EQ(device->Get(CameraTest::Address::width), 8);
}

TEST_F(CameraConfigurationTransfer, AFetchTellsNoObserverOfTheSettings) {
    allocate();
    camera().setStreamType(StreamType::CameraDevice);
    int changes = 0;
    const auto connection = camera().getSettingsChangedSignal()->connect([&] { ++changes; });
    camera().executeOFSFetch();
    EXPECT_EQ(changes, 0);
    EXPECT_THAT(shownText("ConfigurationSetStaged"), testing::HasSubstr("Width\t8\n"));
}

TEST_F(CameraConfigurationTransfer, AFetchThatFailsLeavesTheStagedTextAndTellsWhy) {
    allocate();
    camera().setStreamType(StreamType::CameraDevice);
    camera().setOFSStagedContent("Width=16");
    std::string thrown;
    EXPECT_THAT(
        fetch(failLibrary, thrown),
        ElementsAre(errorStart() +
                    ": Exception caught while fetching feature stream. Message: \"no answer\""));
    EXPECT_EQ(thrown, "no answer");
    EXPECT_THAT(fetch(failStandard, thrown),
                ElementsAre(StartsWith(failed("executeOFSFetch", "&standard"))));
    EXPECT_EQ(thrown, "standard");
    const std::string unknown = "Unknown exception caught while fetching feature stream.";
    EXPECT_THAT(fetch(failUnknown, thrown),
                ElementsAre(StartsWith(failed("executeOFSFetch", unknown))));
    EXPECT_EQ(thrown, unknown);
    EXPECT_EQ(camera().getOFSStagedContent(), "Width=16");
}

TEST_F(CameraConfigurationTransfer, ACommitThatFailsTellsWhyAndThatTheSetsWereNotLoaded) {
    allocate();
    const std::string caught = ": Exception caught while loading feature stream. Message: \"";
    const auto commitFailed = StartsWith(failed("commitOFS", refused));
    EXPECT_THAT(commitWidth(failStandard),
                ElementsAre(errorStart() + caught + "standard\"", commitFailed));
    EXPECT_THAT(
        commitWidth(failUnknown),
        ElementsAre(StartsWith(failed("transferOFSActiveContentToCamera",
                                      "Unknown exception caught while loading feature stream.")),
                    commitFailed));
    EXPECT_EQ(camera().getOFSStagedContent(), "Width=16");
    camera().executeOFSCommit();
    EXPECT_EQ(device->Get(CameraTest::Address::width), 16);
}

TEST_F(CameraConfigurationTransfer, AClosedCameraIsNotFetchedFromAndNotWrittenTo) {
    allocate();
    camera().freeResources();
    device->onAccess = failUnknown;
    camera().setStreamType(StreamType::CameraDevice);
    camera().setOFSStagedContent("Width=16");
    camera().executeOFSFetch();
    EXPECT_EQ(camera().getOFSStagedContent(), "Width=16");
    camera().executeOFSCommit();
    device->onAccess = nullptr;
    EXPECT_EQ(device->Get(CameraTest::Address::width), 8);
}

}  // namespace
}  // namespace Plugin::OrlixVCellPackageBase
