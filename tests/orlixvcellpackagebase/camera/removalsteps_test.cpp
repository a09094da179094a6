// The loss of a device beside another operation of the node, step by step: jobs run when the test
// says so.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <semaphore>
#include <string>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

#include "camera/removaltools.h"
#include "gcbase/gcexception.h"
#include "orlixdataprocessingcore/core/services.h"
#include "orlixdataprocessingcore/threading/threadpool.h"
#include "support/scriptedcamera.h"

namespace Plugin::OrlixVCellPackageBase {
namespace {

namespace Threading = Orlix::DataProcessing::Threading;
using testing::ElementsAre;
using testing::IsEmpty;

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

TEST_F(CameraRemovalSteps, AReceiverOfTheErrorMayFreeTheResources) {
    const Utils::ScopedConnection errors(camera->getErrorChangedSignal()->connect(
                                             [&](const Core::ErrorSet&, const Core::ErrorSet& now) {
                                                 if (!now.empty()) {
                                                     camera->freeResources();
                                                 }
                                             }),
                                         true);
    lose()->execute();
    EXPECT_FALSE(camera->hasError());
    EXPECT_THAT(camera->getNodeMapInfos(), testing::SizeIs(2));
    EXPECT_FALSE(device->IsOpen());
}

// With the lock free, and behind the withdrawal of the lost device.
TEST_F(CameraRemovalSteps, AReceiverOfTheMapsMayTakeTheNextDevice) {
    bool isFirst = true;
    const Utils::ScopedConnection maps(camera->getNodeMapsChangedSignal()->connect([&] {
        if (std::exchange(isFirst, false)) {
            camera->freeResources();
            device->Recover();
            EXPECT_THAT(camera->allocateResources(), IsEmpty());
        }
    }),
                                       true);
    lose()->execute();
    EXPECT_FALSE(camera->hasError());
    EXPECT_THAT(camera->getNodeMapInfos(), testing::SizeIs(5));
    EXPECT_TRUE(device->IsOpen());
}

TEST_F(CameraRemovalSteps, TheLossOfTheNextDeviceInsideOfAReceiverIsNotMissed) {
    // The library hears of a loss on a thread of its own.
    std::counting_semaphore<> heard(0);
    camera->afterLoss = [&] { heard.release(); };
    bool isFirst = true;
    const Utils::ScopedConnection maps(camera->getNodeMapsChangedSignal()->connect([&] {
        if (std::exchange(isFirst, false)) {
            camera->freeResources();
            device->Recover();
            EXPECT_THAT(camera->allocateResources(), IsEmpty());
            device->Lose();
            device->JoinLoss();
            heard.acquire();
        }
    }),
                                       true);
    const auto job = lose();
    heard.acquire();
    job->execute();
    EXPECT_THAT(errorsOf(*camera), ElementsAre(std::string("DeviceError: ") + removedText));
    EXPECT_THAT(camera->getNodeMapInfos(), testing::SizeIs(2));
    EXPECT_FALSE(device->IsOpen());
}

TEST_F(CameraRemovalSteps, ReceiversOfTheErrorAndOfTheMapsOfAReleaseInsideOfItFindTheLockFree) {
    int told = 0;
    const auto readOnAnotherThread = [&] {
        ++told;
        std::thread([&] { std::ignore = camera->getNodeMapInfos(); }).join();
    };
    const Utils::ScopedConnection errors(camera->getErrorChangedSignal()->connect(
                                             [&](const Core::ErrorSet&, const Core::ErrorSet& now) {
                                                 if (!now.empty()) {
                                                     readOnAnotherThread();
                                                     camera->freeResources();
                                                 }
                                             }),
                                         true);
    const Utils::ScopedConnection maps(
        camera->getNodeMapsChangedSignal()->connect(readOnAnotherThread), true);
    lose()->execute();
    EXPECT_EQ(told, 3);
    EXPECT_FALSE(camera->hasError());
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

}  // namespace
}  // namespace Plugin::OrlixVCellPackageBase
