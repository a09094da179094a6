// What a node does whose device vanishes, idle or during acquisition.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <vector>

#include "camera/removaltools.h"
#include "support/scriptedcamera.h"

namespace Plugin::OrlixVCellPackageBase {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class CameraRemoval : public ScriptedCamera {
protected:
    void allocate() { ASSERT_THAT(camera().allocateResources(), IsEmpty()); }
    void lose() {
        device->Lose();
        device->JoinLoss();
    }
    [[nodiscard]] static std::string deviceError() {
        return std::string("DeviceError: ") + removedText;
    }
};

TEST_F(CameraRemoval, OfAnIdleNodeSetsTheErrorAndResetsWhatDescribedTheDevice) {
    allocate();
    const Utils::LogCapture capture;
    std::atomic<bool> owned{true};
    GenApi::CLock& lock = cameraMap().GetLock();
    const Utils::ScopedConnection connection(
        camera().getNodeMapsChangedSignal()->connect([&] { owned = lock.IsOwned(); }), true);
    Watch watch(camera());
    lose();
    watch.waitUntil([&] { return watch.mapChanges() == 1; });
    camera().waitForCameraDeviceRemoval();  // it closes the device when it has told of the maps
    EXPECT_FALSE(device->IsOpen());
    EXPECT_THAT(errorsOf(camera()), ElementsAre(deviceError()));
    EXPECT_THAT(publishedMaps(), ElementsAre("@vCell", "@CameraInstance"));
    EXPECT_FALSE(isShown("SelectedDeviceSerialNumber"));
    camera().freeResources();
    EXPECT_FALSE(owned);
    EXPECT_THAT(getLines(capture, category),
                ElementsAre("3 Camera " + toText(static_cast<const Camera*>(&camera())) +
                            ": Device has been removed."));
}

TEST_F(CameraRemoval, TheErrorStaysUntilTheResourcesAreFreed) {
    allocate();
    Watch watch(camera());
    lose();
    watch.waitUntil([&] { return camera().hasError(); });
    camera().freeResources();
    EXPECT_FALSE(camera().hasError());
}

TEST_F(CameraRemoval, AnotherOpeningEndsTheError) {
    allocate();
    Watch watch(camera());
    lose();
    watch.waitUntil([&] { return publishedMaps().size() == 2; });
    device->Recover();
    // The job lets the device go after it has told of the maps.
    while (publishedMaps().size() == 2) {
        EXPECT_THAT(camera().allocateAdditionalResources(resources.pool, true), IsEmpty());
    }
    EXPECT_FALSE(camera().hasError());
    EXPECT_EQ(publishedMaps().size(), 5U);
}

TEST_F(CameraRemoval, AFreeWithFalseClearsTheErrorOfANodeWithoutADevice) {
    allocate();
    Watch watch(camera());
    lose();
    watch.waitUntil([&] { return camera().hasError(); });
    camera().waitForCameraDeviceRemoval();  // the job lets the device go at its end
    EXPECT_TRUE(camera().hasError());
    camera().freeAdditionalResources(false);
    EXPECT_FALSE(camera().hasError());
}

TEST_F(CameraRemoval, DuringAcquisitionEndsTheImagesAndTellsWhy) {
    allocate();
    const auto sink = attach("Image");
    start();
    device->WaitForQueued(1);
    ASSERT_TRUE(device->Send());
    sink->waitForCount(1);
    Watch watch(camera());
    lose();
    watch.waitUntil([&] { return camera().hasError(); });
    EXPECT_THAT(errorsOf(camera()), ElementsAre(deviceError()));
    EXPECT_EQ(camera().getState(), Core::NodeState::Running);
    camera().stop();
    camera().freeResources();
    EXPECT_FALSE(camera().hasError());
}

TEST_F(CameraRemoval, RepeatedKeepsTheFirstError) {
    allocate();
    Watch watch(camera());
    const auto remove = [&](int times) {
        Orlix::CInstantCamera other;
        camera().OnCameraDeviceRemoved(other);
        watch.waitUntil([&] { return watch.mapChanges() == times; });
        camera().waitForCameraDeviceRemoval();  // it has begun, and is not cancelled
        return camera().getErrors();
    };
    const Core::ErrorSet first = remove(1);
    EXPECT_THAT(first, testing::SizeIs(1));
    EXPECT_EQ(remove(2), first);
}

TEST_F(CameraRemoval, ThePortsTellThatNoDeviceIsSelected) {
    const auto texts = [this] {
        return std::vector<std::string>{
            hiddenText("SelectedDeviceModelName"), hiddenText("SelectedDeviceVendorName"),
            hiddenText("SelectedDeviceSerialNumber"), hiddenText("SelectedDeviceUserDefinedName")};
    };
    allocate();
    EXPECT_THAT(texts(), ElementsAre("", "", "1", ""));
    Watch watch(camera());
    lose();
    watch.waitUntil([&] { return watch.mapChanges() == 1; });
    EXPECT_THAT(texts(), testing::Each(testing::Eq("No device selected")));
}

}  // namespace
}  // namespace Plugin::OrlixVCellPackageBase
