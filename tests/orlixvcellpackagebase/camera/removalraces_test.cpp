// A device that vanishes while the node is idle, acquires, stops, releases, allocates or is
// destroyed, with every thread at work. scripts/removal.sh repeats this under the thread sanitizer.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <thread>
#include <vector>

#include "camera/removaltools.h"
#include "orlixdataprocessingcore/core/nodearguments.h"
#include "support/emulatedpool.h"
#include "support/recordingsink.h"

namespace Plugin::OrlixVCellPackageBase {
namespace {

using testing::IsEmpty;

// Each scene as often as ORLIX_REMOVAL_ROUNDS says.
class CameraRemovalRaces : public testing::Test {
protected:
    static int rounds() {
        const char* text = std::getenv("ORLIX_REMOVAL_ROUNDS");
        return text != nullptr ? std::atoi(text) : 5;
    }
    void SetUp() override {
        camera = std::make_unique<Camera>(emulated.pool);
        camera->executeEventPinAdd();
        camera->setEventPinConfiguration(
            "End.Type=Integer.EventName=ExposureEnd.ValueName=EventExposureEndFrameID");
        camera->executeChunkPinAdd();
        camera->setChunkPinValue("Exposure.Type=Float.ValueName=ChunkExposureTime");
        camera->setStreamType(StreamType::CameraDevice);
        camera->setOFSStagedContent(
            "Width=64\nHeight=64\nAcquisitionFrameRateEnable=1\nAcquisitionFrameRate=1000\n"
            "ExposureTime=100\nChunkModeActive=1\nChunkSelector=ExposureTime\nChunkEnable=1");
        camera->executeOFSCommit();
        for (const char* pin : {"Image", "End", "Exposure"}) {
            sinks.push_back(std::make_shared<RecordingSink>());
            handles.push_back(camera->attachOutputSink(pin, sinks.back()));
        }
    }
    // Until the device is there and nothing of a former one is.
    void allocate() {
        emulated.transport->Plug(0);
        camera->freeResources();
        ASSERT_THAT(camera->allocateResources(), IsEmpty());
        ASSERT_FALSE(camera->hasError());
    }
    void start() { camera->start(Core::NodeArgumentCollection()); }
    void unplug() { emulated.transport->Unplug(0); }
    void waitForImages() { sinks[0]->waitForCount(sinks[0]->values().size() + 2); }

    EmulatedPool emulated;
    std::vector<std::shared_ptr<RecordingSink>> sinks;
    std::vector<std::shared_ptr<Core::IHandle>> handles;
    std::unique_ptr<Camera> camera;
};

TEST_F(CameraRemovalRaces, Idle) {
    for (int round = 0; round < rounds(); ++round) {
        allocate();
        Watch watch(*camera);
        unplug();
        watch.waitUntil([&] { return camera->hasError(); });
    }
}

TEST_F(CameraRemovalRaces, DuringAcquisition) {
    for (int round = 0; round < rounds(); ++round) {
        allocate();
        start();
        waitForImages();
        Watch watch(*camera);
        unplug();
        watch.waitUntil([&] { return camera->hasError(); });
        camera->stop();
    }
}

TEST_F(CameraRemovalRaces, DuringStop) {
    for (int round = 0; round < rounds(); ++round) {
        allocate();
        start();
        waitForImages();
        std::thread cable([&] { unplug(); });
        camera->stop();
        cable.join();
    }
}

TEST_F(CameraRemovalRaces, DuringRelease) {
    for (int round = 0; round < rounds(); ++round) {
        allocate();
        std::thread cable([&] { unplug(); });
        camera->freeResources();
        cable.join();
        camera->freeResources();
        EXPECT_FALSE(camera->hasError());
    }
}

TEST_F(CameraRemovalRaces, DuringAllocation) {
    for (int round = 0; round < rounds(); ++round) {
        emulated.transport->Plug(0);
        camera->freeResources();
        std::thread cable([&] { unplug(); });
        static_cast<void>(camera->allocateResources());
        cable.join();
        camera->freeResources();
        EXPECT_FALSE(camera->hasError());
    }
}

TEST_F(CameraRemovalRaces, DuringDestruction) {
    for (int round = 0; round < rounds(); ++round) {
        allocate();
        start();
        waitForImages();
        std::thread cable([&] { unplug(); });
        camera.reset();
        cable.join();
        emulated.transport->Plug(0);
        sinks.clear();
        handles.clear();
        SetUp();
    }
}

}  // namespace
}  // namespace Plugin::OrlixVCellPackageBase
