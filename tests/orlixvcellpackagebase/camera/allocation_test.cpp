// How Camera picks a device, takes it and gives it back.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "gcbase/gcexception.h"
#include "orlixdataprocessingcore/core/errors.h"
#include "support/scriptedcamera.h"

namespace Plugin::OrlixVCellPackageBase {
namespace {

namespace Core = Orlix::DataProcessing::Core;
namespace Utils = Orlix::DataProcessing::Utils;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

constexpr auto selectedPorts = {"SelectedDeviceModelName", "SelectedDeviceVendorName",
                                "SelectedDeviceSerialNumber", "SelectedDeviceUserDefinedName"};

class CameraAllocation : public ScriptedCamera {
protected:
    std::string failure(const char* message) {
        return "3 Camera " + toText(static_cast<const Camera*>(&camera())) +
               ": Plugin::OrlixVCellPackageBase::Camera::allocateAdditionalResources failed. "
               "Message: \"" +
               message + "\" (src/plugins/";
    }
    std::string warning(const std::string& message) {
        return "4 Camera " + toText(static_cast<const Camera*>(&camera())) +
               ": Exception caught while allocating camera resource.. Message: " + message;
    }
    Errors allocate(bool flag = true) {
        return camera().allocateAdditionalResources(resources.pool, flag);
    }
};

TEST_F(CameraAllocation, ADeviceIsShownAndItsMapsArePublished) {
    EXPECT_THAT(publishedMaps(), ElementsAre("@vCell", "@CameraInstance"));
    for (const char* name : selectedPorts) {
        EXPECT_FALSE(isShown(name)) << name;
    }
    const Utils::LogCapture capture;
    EXPECT_THAT(allocate(), IsEmpty());
    EXPECT_THAT(publishedMaps(), ElementsAre("@vCell", "@CameraInstance", "@DeviceTransportLayer",
                                             "@CameraDevice", "@StreamGrabber0"));
    const auto infos = camera().getNodeMapInfos();
    EXPECT_EQ(infos[1].GetDisplayName(), "Camera Instance");
    EXPECT_EQ(infos[2].GetDisplayName(), "Device Transport Layer");
    EXPECT_EQ(infos[3].GetDisplayName(), "Camera");
    EXPECT_EQ(infos[4].GetDisplayName(), "Stream Parameters");
    EXPECT_NE(infos[3].GetNodeMap()->GetNode("Width"), nullptr);
    EXPECT_EQ(shownText("SelectedDeviceSerialNumber"), "1");
    EXPECT_EQ(shownText("SelectedDeviceModelName"), "");
    EXPECT_THAT(camera().calls, ElementsAre("attached", "opened"));
    EXPECT_FALSE(resource->lastShared);
    EXPECT_THAT(getLines(capture, category),
                ElementsAre("5 Camera " + toText(static_cast<const Camera*>(&camera())) +
                            ": Using camera \"Scripted#1\""));
}

TEST_F(CameraAllocation, MapsAreToldOfWithTheLockFreeAndTheSettingsInPlace) {
    device->Set(CameraTest::Address::width, 8);
    commit(StreamType::CameraDevice, "Width=16");
    int emissions = 0;
    bool owned = true;
    std::int64_t width = 0;
    GenApi::CLock& lock = cameraMap().GetLock();
    const Utils::ScopedConnection connection(camera().getNodeMapsChangedSignal()->connect([&] {
        ++emissions;
        owned = lock.IsOwned();
        width = device->Get(CameraTest::Address::width);
    }),
                                             false);
    EXPECT_THAT(allocate(), IsEmpty());
    EXPECT_EQ(emissions, 1);
    EXPECT_FALSE(owned);
    EXPECT_EQ(width, 16);
}

TEST_F(CameraAllocation, ASecondAllocationTouchesNoCamera) {
    EXPECT_THAT(allocate(), IsEmpty());
    EXPECT_THAT(allocate(), IsEmpty());
    EXPECT_EQ(resource->acquired, 1);
    EXPECT_THAT(camera().calls, ElementsAre("attached", "opened"));
}

TEST_F(CameraAllocation, AFreeClosesAndDetachesAfterTheMapsWereWithdrawn) {
    EXPECT_THAT(allocate(), IsEmpty());
    std::vector<std::string> seen;
    bool open = false;
    const Utils::ScopedConnection connection(camera().getNodeMapsChangedSignal()->connect([&] {
        seen = publishedMaps();
        open = device->IsOpen();
    }),
                                             false);
    camera().freeAdditionalResources(false);
    EXPECT_THAT(seen, ElementsAre("@vCell", "@CameraInstance"));
    EXPECT_TRUE(open);
    EXPECT_FALSE(device->IsOpen());
    EXPECT_THAT(camera().calls, ElementsAre("attached", "opened", "closed", "detached"));
    for (const char* name : selectedPorts) {
        EXPECT_FALSE(isShown(name)) << name;
    }
    EXPECT_THAT(allocate(), IsEmpty());
}

TEST_F(CameraAllocation, AFreeWithTrueLeavesWhatWasAllocatedWithFalse) {
    EXPECT_THAT(allocate(false), IsEmpty());
    camera().freeAdditionalResources(true);
    EXPECT_TRUE(device->IsOpen());
    camera().freeAdditionalResources(false);
    EXPECT_FALSE(device->IsOpen());
    EXPECT_THAT(allocate(true), IsEmpty());
    camera().freeAdditionalResources(true);
    EXPECT_FALSE(device->IsOpen());
}

TEST_F(CameraAllocation, AnEmptyListTakesTheFirstUnusedDeviceInThePoolsOrder) {
    const auto before = resources.add(makeInfo({{"FullName", "A"}}));
    before->unused = false;
    const auto after = resources.add(makeInfo({{"FullName", "Z"}}));
    EXPECT_THAT(allocate(), IsEmpty());
    EXPECT_EQ(resource->acquired, 1);
    EXPECT_EQ(before->acquired, 0);
    EXPECT_EQ(after->acquired, 0);
    EXPECT_EQ(resources.refreshes, 0);
}

TEST_F(CameraAllocation, PropertiesFilterThePool) {
    resources.add(makeInfo({{"FullName", "A"}, {"ModelName", "M"}}));
    camera().setActiveAssignmentProperties(makeInfo({{"FullName", "Scripted#1"}}));
    EXPECT_THAT(allocate(), IsEmpty());
    EXPECT_EQ(resource->acquired, 1);
}

TEST_F(CameraAllocation, AFilterThatMatchesNothingIsSearchedForTwiceWithTrue) {
    camera().setActiveAssignmentProperties(makeInfo({{"NoSuchKey", "x"}}));
    const Utils::LogCapture capture;
    const Errors errors = allocate(true);
    EXPECT_THAT(descriptionsOf(errors), ElementsAre("No suitable camera found to allocate."));
    EXPECT_EQ(errors[0]->getName(), "GenICamExceptionError");
    EXPECT_EQ(resources.refreshes, 1);
    EXPECT_THAT(getLines(capture, category),
                ElementsAre(StartsWith(failure("No suitable camera found to allocate.")),
                            warning("No suitable camera found to allocate.")));
    EXPECT_EQ(resource->acquired, 0);
}

TEST_F(CameraAllocation, WithFalseAFailedSearchRefreshesNothing) {
    camera().setActiveAssignmentProperties(makeInfo({{"NoSuchKey", "x"}}));
    EXPECT_THAT(descriptionsOf(allocate(false)),
                ElementsAre("No suitable camera found to allocate."));
    resource->unused = false;
    camera().setActiveAssignmentProperties(makeInfo({}));
    EXPECT_THAT(descriptionsOf(allocate(false)),
                ElementsAre("No unused camera found to allocate."));
    EXPECT_EQ(resources.refreshes, 0);
}

TEST_F(CameraAllocation, ADeviceThatARefreshFindsIsTaken) {
    camera().setActiveAssignmentProperties(makeInfo({{"ModelName", "late"}}));
    resources.onRefresh = [this](CountingPool::Pool& pool) {
        pool.addResource(makeInfo({{"ModelName", "late"}}), resource);
    };
    EXPECT_THAT(allocate(true), IsEmpty());
    EXPECT_EQ(resources.refreshes, 1);
}

TEST_F(CameraAllocation, ACameraInUseIsLookedForASecondTime) {
    resource->unused = false;
    EXPECT_THAT(descriptionsOf(allocate()), ElementsAre("No unused camera found to allocate."));
    EXPECT_EQ(resources.refreshes, 1);
}

TEST_F(CameraAllocation, APoolThatGivesNoDeviceIsAskedTwice) {
    const auto empty = resources.add(makeInfo({{"ModelName", "empty"}}));
    camera().setActiveAssignmentProperties(makeInfo({{"ModelName", "empty"}}));
    EXPECT_THAT(descriptionsOf(allocate()),
                ElementsAre("Could not get camera device to allocate."));
    EXPECT_EQ(empty->acquired, 2);
    EXPECT_EQ(resources.refreshes, 1);
}

TEST_F(CameraAllocation, WithoutTheFlagAPoolThatGivesNoDeviceIsAskedOnce) {
    const auto empty = resources.add(makeInfo({{"ModelName", "empty"}}));
    camera().setActiveAssignmentProperties(makeInfo({{"ModelName", "empty"}}));
    EXPECT_THAT(descriptionsOf(camera().allocateAdditionalResources(resources.pool, false)),
                ElementsAre("Could not get camera device to allocate."));
    EXPECT_EQ(empty->acquired, 1);
    EXPECT_EQ(resources.refreshes, 0);
}

TEST_F(CameraAllocation, ARejectedCameraInstanceSetGivesTheDeviceBackUnattached) {
    commit(StreamType::CameraInstance, "NoSuchFeature=1");
    const Errors errors = allocate();
    EXPECT_THAT(descriptionsOf(errors),
                ElementsAre("Failed to load camera feature stream from active configuration set."));
    EXPECT_THAT(camera().calls, IsEmpty());
    EXPECT_THAT(publishedMaps(), ElementsAre("@vCell", "@CameraInstance"));
    camera().executeOFSClear();
    EXPECT_THAT(allocate(), IsEmpty());
}

TEST_F(CameraAllocation, AFailingCameraDeviceSetUndoesTheAllocationBeforeAnybodyWasTold) {
    commit(StreamType::CameraDevice, "NoSuchFeature=1");
    int emissions = 0;
    const Utils::ScopedConnection connection(
        camera().getNodeMapsChangedSignal()->connect([&] { ++emissions; }), false);
    const Utils::LogCapture capture;
    EXPECT_THAT(descriptionsOf(allocate()),
                ElementsAre("Failed to load feature streams from active configuration set."));
    EXPECT_EQ(emissions, 0);
    EXPECT_THAT(publishedMaps(), ElementsAre("@vCell", "@CameraInstance"));
    EXPECT_FALSE(isShown("SelectedDeviceModelName"));
    EXPECT_FALSE(device->IsOpen());
    EXPECT_THAT(camera().calls, ElementsAre("attached", "opened", "closed", "detached"));
    EXPECT_THAT(getLines(capture, category),
                testing::Contains(StartsWith(
                    failure("Failed to load feature streams from active configuration set."))));
    camera().executeOFSClear();
    EXPECT_THAT(allocate(), IsEmpty());
}

TEST_F(CameraAllocation, ADeviceThatCantBeOpenedStaysUntilAFree) {
    device->Lose();
    device->JoinLoss();
    EXPECT_EQ(allocate().size(), 1U);
    EXPECT_THAT(publishedMaps(), ElementsAre("@vCell", "@CameraInstance"));
    device->Recover();
    EXPECT_THAT(allocate(), IsEmpty());
    EXPECT_FALSE(device->IsOpen());
    camera().freeAdditionalResources(false);
    EXPECT_THAT(allocate(), IsEmpty());
    EXPECT_TRUE(device->IsOpen());
}

TEST_F(CameraAllocation, EveryKindOfFailureIsAnErrorOfItsKind) {
    const Utils::LogCapture capture;
    camera().onCall = [](const std::string& call) {
        if (call == "opened") {
            throw std::runtime_error("standard");
        }
    };
    Errors errors = allocate();
    ASSERT_THAT(descriptionsOf(errors), ElementsAre("standard"));
    EXPECT_EQ(errors[0]->getName(), "StdExceptionError");
    camera().freeAdditionalResources(false);
    camera().onCall = [](const std::string& call) {
        if (call == "opened") {
            throw 1;
        }
    };
    errors = allocate();
    EXPECT_THAT(descriptionsOf(errors),
                ElementsAre("Unknown exception caught while allocating camera resource."));
    EXPECT_EQ(errors[0]->getName(), "UnknownExceptionError");
    EXPECT_THAT(getLines(capture, category),
                ElementsAre(warning("standard"),
                            "4 Camera " + toText(static_cast<const Camera*>(&camera())) +
                                ": Unknown exception caught while allocating camera resource.."));
    camera().onCall = [](const std::string&) {};
}

TEST_F(CameraAllocation, ThePortsTellBeforeAnyAllocationAndAfterAFree) {
    for (const char* name : selectedPorts) {
        EXPECT_EQ(hiddenText(name), "No device listed") << name;
    }
    EXPECT_THAT(allocate(), IsEmpty());
    EXPECT_EQ(hiddenText("SelectedDeviceSerialNumber"), "1");
    camera().freeAdditionalResources(false);
    for (const char* name : selectedPorts) {
        EXPECT_FALSE(isShown(name)) << name;
        EXPECT_EQ(hiddenText(name), "No device selected") << name;
    }
    EXPECT_THAT(allocate(), IsEmpty());
    EXPECT_EQ(shownText("SelectedDeviceVendorName"), "");
}

TEST_F(CameraAllocation, ANodeThatNeverHadADeviceIsDestroyedWithoutTouchingOne) {
    std::vector<std::string> calls;
    camera().onCall = [&](const std::string& call) { calls.push_back(call); };
    destroyCamera();
    EXPECT_THAT(calls, IsEmpty());
    EXPECT_EQ(resource->acquired, 0);
}

TEST_F(CameraAllocation, FetchFollowsTheStateOfTheCamera) {
    EXPECT_TRUE(isShown("ConfigurationSetFetch"));
    EXPECT_THAT(allocate(), IsEmpty());
    EXPECT_FALSE(isShown("ConfigurationSetFetch"));
    for (const StreamType type :
         {StreamType::StreamGrabber, StreamType::CameraDevice, StreamType::DeviceTransportLayer}) {
        camera().setStreamType(type);
        EXPECT_TRUE(isShown("ConfigurationSetFetch"));
    }
    camera().freeAdditionalResources(false);
    EXPECT_FALSE(isShown("ConfigurationSetFetch"));
}

TEST_F(CameraAllocation, FetchCommitAndLoadRestoreTheDevice) {
    EXPECT_THAT(allocate(), IsEmpty());
    device->Set(CameraTest::Address::width, 24);
    camera().setStreamType(StreamType::CameraDevice);
    camera().executeOFSFetch();
    const std::string fetched = camera().getOFSStagedContent().str();
    EXPECT_THAT(fetched, StartsWith("# {05D8C294-F295-4dfb-9D01-096BD04049F4}\n"));
    EXPECT_THAT(fetched, testing::HasSubstr("Width\t24\n"));
    camera().executeOFSCommit();
    EXPECT_EQ(shownText("ConfigurationSetActive"), fetched);
    camera().freeAdditionalResources(false);
    device->Set(CameraTest::Address::width, 8);
    EXPECT_THAT(allocate(), IsEmpty());
    EXPECT_EQ(device->Get(CameraTest::Address::width), 24);
}

TEST_F(CameraAllocation, ACommitReachesAnOpenCameraAtOnceButForTheCameraInstance) {
    EXPECT_THAT(allocate(), IsEmpty());
    commit(StreamType::CameraDevice, "Width=32");
    EXPECT_EQ(device->Get(CameraTest::Address::width), 32);
    commit(StreamType::CameraInstance, "NoSuchFeature=1");
    EXPECT_EQ(shownText("ConfigurationSetActive"),
              "# {05D8C294-F295-4dfb-9D01-096BD04049F4}\nNoSuchFeature\t1\n");
    commit(StreamType::CameraDevice, "");
    EXPECT_EQ(device->Get(CameraTest::Address::width), 32);
}

TEST_F(CameraAllocation, ACommitThatTheCameraRefusesIsActiveAllTheSame) {
    EXPECT_THAT(allocate(), IsEmpty());
    int changes = 0;
    const Utils::ScopedConnection connection(
        camera().getSettingsChangedSignal()->connect([&] { ++changes; }), false);
    camera().setStreamType(StreamType::CameraDevice);
    camera().setOFSStagedContent("Width=-5");
    changes = 0;
    const Utils::LogCapture capture;
    EXPECT_EQ(getFailure<GenICam::RuntimeException>([&] { camera().executeOFSCommit(); }),
              "Failed to load feature streams from active configuration set.");
    EXPECT_EQ(changes, 0);
    EXPECT_EQ(shownText("ConfigurationSetActive"),
              "# {05D8C294-F295-4dfb-9D01-096BD04049F4}\nWidth\t-5\n");
    const auto lines = getLines(capture, category);
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_THAT(lines[0],
                StartsWith("3 Camera " + toText(static_cast<const Camera*>(&camera())) +
                           ": Exception caught while loading feature stream. Message: \""));
    EXPECT_THAT(lines[1], testing::HasSubstr("Camera::commitOFS failed. Message: \"Failed to load "
                                             "feature streams from active configuration set.\""));
}

TEST_F(CameraAllocation, ANodeIsDestroyedWithADeviceInItsHand) {
    EXPECT_THAT(allocate(), IsEmpty());
    destroyCamera();
    EXPECT_FALSE(device->IsOpen());
}

}  // namespace
}  // namespace Plugin::OrlixVCellPackageBase
