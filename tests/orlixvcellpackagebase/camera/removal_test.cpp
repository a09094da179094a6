// The scenes of a device that vanishes: idle, during acquisition, stop, release, allocation and
// destruction. The program of scripts/removal.sh repeats them under the thread sanitizer.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "gcbase/gcexception.h"
#include "orlixdataprocessingcore/core/errors.h"
#include "orlixdataprocessingcore/core/services.h"
#include "orlixdataprocessingcore/threading/threadpool.h"
#include "support/emulatedpool.h"
#include "support/scriptedcamera.h"

namespace Plugin::OrlixVCellPackageBase {
namespace {

namespace Core = Orlix::DataProcessing::Core;
namespace Threading = Orlix::DataProcessing::Threading;
namespace Utils = Orlix::DataProcessing::Utils;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto removedText = "vCell has stopped working because the camera has been disconnected.";

// Waits on the signals of a node until something holds.
class Watch {
public:
    explicit Watch(Camera& camera)
        : errors_(camera.getErrorChangedSignal()->connect(
                      [this](const Core::ErrorSet&, const Core::ErrorSet&) { wake(); }),
                  true),
          maps_(camera.getNodeMapsChangedSignal()->connect([this] {
              ++mapChanges_;
              wake();
          }),
                true) {}

    [[nodiscard]] int mapChanges() const { return mapChanges_; }

    // The condition may take the node's lock, under which errors are told: it is asked with the
    // mutex free.
    template <typename Condition>
    void waitUntil(Condition condition) {
        std::unique_lock lock(mutex_);
        for (;;) {
            const std::uint64_t seen = changes_;
            lock.unlock();
            if (condition()) {
                return;
            }
            lock.lock();
            changed_.wait(lock, [&] { return changes_ != seen; });
        }
    }

private:
    void wake() {
        const std::lock_guard guard(mutex_);
        ++changes_;
        changed_.notify_all();
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::uint64_t changes_ = 0;
    std::atomic<int> mapChanges_{0};
    Utils::ScopedConnection errors_;
    Utils::ScopedConnection maps_;
};

// Runs no job before the test says so.
class HeldThreads final : public Threading::IThreadPool {
public:
    void submit(std::shared_ptr<Threading::IJob> job) override {
        const std::lock_guard guard(mutex_);
        jobs_.push_back(std::move(job));
        changed_.notify_all();
    }
    [[nodiscard]] std::shared_ptr<Threading::IJob> waitForJob() {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return !jobs_.empty(); });
        auto job = jobs_.front();
        jobs_.erase(jobs_.begin());
        return job;
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<std::shared_ptr<Threading::IJob>> jobs_;
};

class PoolWithHeldThreads final : public Core::DefaultResourcePool {
public:
    std::shared_ptr<Threading::IThreadPool> getThreadPool() override { return threads; }

    const std::shared_ptr<HeldThreads> threads = std::make_shared<HeldThreads>();
};

std::vector<std::string> errorsOf(Camera& camera) {
    std::vector<std::string> texts;
    for (const auto& error : camera.getErrors()) {
        texts.push_back(error->getName().str() + ": " + error->getDescription().str());
    }
    return texts;
}

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
    camera().freeAdditionalResources(false);
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

// A feature whose value is read from the device each time.
constexpr auto liveFeature = R"(
  <Integer Name="Live"><Streamable>Yes</Streamable><pValue>LiveReg</pValue></Integer>
  <IntReg Name="LiveReg"><Address>56</Address><Length>8</Length><AccessMode>RW</AccessMode>
    <pPort>Device</pPort><Cachable>NoCache</Cachable><Sign>Signed</Sign>
    <Endianess>LittleEndian</Endianess></IntReg>
)";

// With jobs that run when the test says so, each scene has one order of steps.
class CameraRemovalSteps : public testing::Test {
protected:
    CameraRemovalSteps() {
        device->description.replace(device->description.find("<Port Name=\"Device\"/>"), 0,
                                    liveFeature);
        pool->addResource(makeInfo({{"FullName", "Scripted#1"}}), resource);
        camera = std::make_unique<WatchedCamera>(pool);
        EXPECT_THAT(camera->allocateResources(), IsEmpty());
    }
    std::shared_ptr<Threading::IJob> lose() {
        device->Lose();
        device->JoinLoss();
        return pool->threads->waitForJob();
    }

    const std::shared_ptr<CameraTest::ScriptedDevice> device =
        std::make_shared<CameraTest::ScriptedDevice>();
    const std::shared_ptr<TestDeviceResource> resource =
        std::make_shared<TestDeviceResource>(Orlix::CreateCameraDevice(device));
    const std::shared_ptr<PoolWithHeldThreads> pool = std::make_shared<PoolWithHeldThreads>();
    std::unique_ptr<WatchedCamera> camera;
};

TEST_F(CameraRemovalSteps, ARemovalThatHasNotBegunIsCancelledByTheRelease) {
    const auto job = lose();
    camera->freeResources();
    job->execute();
    EXPECT_FALSE(camera->hasError());
    EXPECT_THAT(camera->getNodeMapInfos(), testing::SizeIs(2));
}

TEST_F(CameraRemovalSteps, ARemovalThatHasBegunIsWaitedForByTheReleaseWhichClearsItsError) {
    const auto job = lose();
    std::atomic<bool> begun{false};
    std::thread worker;
    // The release tells of the maps with its lock free, and then lets the device go.
    std::mutex mutex;
    std::condition_variable handled;
    bool errorSet = false;
    const Utils::ScopedConnection errors(camera->getErrorChangedSignal()->connect(
                                             [&](const Core::ErrorSet&, const Core::ErrorSet& now) {
                                                 const std::lock_guard guard(mutex);
                                                 errorSet = errorSet || !now.empty();
                                                 handled.notify_all();
                                             }),
                                         true);
    const Utils::ScopedConnection maps(camera->getNodeMapsChangedSignal()->connect([&] {
        if (!begun.exchange(true)) {
            worker = std::thread([&] { job->execute(); });
            std::unique_lock lock(mutex);
            handled.wait(lock, [&] { return errorSet; });
        }
    }),
                                       true);
    camera->freeResources();
    EXPECT_FALSE(camera->hasError());
    worker.join();
}

TEST_F(CameraRemovalSteps, ARemovalDuringTheStopRunsAsForAnIdleNode) {
    camera->start(Core::NodeArgumentCollection());
    const auto job = lose();
    camera->stop();
    job->execute();
    EXPECT_THAT(errorsOf(*camera), ElementsAre(std::string("DeviceError: ") + removedText));
    EXPECT_FALSE(device->IsOpen());
}

TEST_F(CameraRemovalSteps, ARemovalAfterASuccessfulAllocationTakesTheDeviceAway) {
    camera->freeResources();
    std::shared_ptr<Threading::IJob> job;
    camera->onCall = [&](const std::string& call) {
        if (call == "opened") {
            job = lose();
            device->Recover();
        }
    };
    EXPECT_THAT(camera->allocateResources(), IsEmpty());
    EXPECT_THAT(camera->getNodeMapInfos(), testing::SizeIs(5));
    ASSERT_NE(job, nullptr);
    job->execute();
    EXPECT_THAT(errorsOf(*camera), ElementsAre(std::string("DeviceError: ") + removedText));
    EXPECT_THAT(camera->getNodeMapInfos(), testing::SizeIs(2));
    camera->onCall = [](const std::string&) {};
}

TEST_F(CameraRemovalSteps, ARemovalInAFailingAllocationLeavesNoError) {
    camera->freeResources();
    camera->setStreamType(StreamType::CameraDevice);
    camera->setOFSStagedContent("NoSuchFeature=1");
    camera->executeOFSCommit();
    std::shared_ptr<Threading::IJob> job;
    camera->onCall = [&](const std::string& call) {
        if (call == "opened") {
            job = lose();
            device->Recover();
        }
    };
    EXPECT_THAT(camera->allocateResources(), testing::SizeIs(1));
    EXPECT_FALSE(camera->hasError());
    job->execute();
    EXPECT_FALSE(camera->hasError());
    camera->onCall = [](const std::string&) {};
}

TEST_F(CameraRemovalSteps, ADestructionCancelsTheJobWhichDoesNothingAfterwards) {
    const auto job = lose();
    camera.reset();
    job->execute();
    EXPECT_FALSE(device->IsOpen());
}

TEST_F(CameraRemovalSteps, AFetchFromALostDeviceIsLoggedAndRethrown) {
    const auto job = lose();
    camera->setStreamType(StreamType::CameraDevice);
    camera->setOFSStagedContent("Width=8");
    const Utils::LogCapture capture;
    EXPECT_EQ(getFailure<GenICam::RuntimeException>([&] { camera->executeOFSFetch(); }),
              "Device 'scripted' was removed.");
    EXPECT_THAT(getLines(capture, "orlix.dataprocessing.vcell.Camera"),
                ElementsAre("3 Camera " + toText(static_cast<const Camera*>(camera.get())) +
                            ": Exception caught while fetching feature stream. Message: "
                            "\"Device 'scripted' was removed.\""));
    EXPECT_EQ(camera->getOFSStagedContent(), "Width=8");
    job->execute();
}

TEST_F(CameraRemovalSteps, TwoNotificationsMakeOneJobAndALaterOneANewJob) {
    const auto job = lose();
    Orlix::CInstantCamera other;
    camera->OnCameraDeviceRemoved(other);
    job->execute();
    const auto first = *camera->getErrors().begin();
    camera->OnCameraDeviceRemoved(other);
    pool->threads->waitForJob()->execute();
    EXPECT_THAT(camera->getErrors(), ElementsAre(first));
}

// The scenes with every thread at work, as long as ORLIX_REMOVAL_ROUNDS says.
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
