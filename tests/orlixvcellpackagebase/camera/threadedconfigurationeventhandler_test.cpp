// The removal of a device: one job at a time, cancelled before it begins, waited for after.
#include "orlixvcellpackagebase/threadedconfigurationeventhandler.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <future>
#include <stdexcept>
#include <thread>
#include <vector>

#include "gcbase/gcexception.h"
#include "orlixcamera/instantcamera.h"
#include "orlixdataprocessingcore/core/services.h"
#include "support/sleeper.h"
#include "support/texts.h"

namespace Plugin::OrlixVCellPackageBase {

namespace {

using Orlix::DataProcessing::Threading::IJob;
using Orlix::DataProcessing::Threading::IThreadPool;
using Job = ThreadedConfigurationEventHandler::CameraDeviceRemovalJob;

// Runs its jobs when the test says so.
class HeldPool final : public IThreadPool {
public:
    void submit(std::shared_ptr<IJob> job) override {
        if (refuses) {
            throw std::runtime_error("no thread");
        }
        jobs.push_back(std::move(job));
    }

    bool refuses = false;
    std::vector<std::shared_ptr<IJob>> jobs;
};

class Handler final : public ThreadedConfigurationEventHandler {
public:
    using ThreadedConfigurationEventHandler::ThreadedConfigurationEventHandler;
    ~Handler() override { waitForCameraDeviceRemoval(); }

    using ThreadedConfigurationEventHandler::waitForCameraDeviceRemoval;
    void notify() { OnCameraDeviceRemoved(camera_); }

    std::function<void()> work = [] {};
    std::atomic<int> handled{0};

private:
    void handleCameraDeviceRemoved() override {
        ++handled;
        work();
    }

    Orlix::CInstantCamera camera_;
};

class CameraDeviceRemoval : public testing::Test {
protected:
    const std::shared_ptr<HeldPool> pool = std::make_shared<HeldPool>();
    Handler handler{pool};
};

}  // namespace

TEST_F(CameraDeviceRemoval, NeedsAThreadPool) {
    EXPECT_EQ(getFailure<GenICam::InvalidArgumentException>([] { Handler without(nullptr); }),
              "ThreadPool must not be nullptr");
}

TEST_F(CameraDeviceRemoval, AJobNeedsItsHandler) {
    EXPECT_EQ(getFailure<GenICam::InvalidArgumentException>([] { Job job(nullptr); }),
              "ThreadedConfigurationEventHandler must not be nullptr.");
}

TEST_F(CameraDeviceRemoval, IsHandledByTheJobAndNotByTheNotification) {
    handler.notify();
    EXPECT_EQ(handler.handled, 0);
    ASSERT_EQ(pool->jobs.size(), 1U);
    EXPECT_EQ(pool->jobs[0]->getName(), "CameraDeviceRemovalJob");
    pool->jobs[0]->execute();
    EXPECT_EQ(handler.handled, 1);
}

TEST_F(CameraDeviceRemoval, TwoNotificationsInARowMakeOneJob) {
    handler.notify();
    handler.notify();
    EXPECT_EQ(pool->jobs.size(), 1U);
}

TEST_F(CameraDeviceRemoval, ANotificationDuringTheWorkChangesNothing) {
    handler.work = [&] { handler.notify(); };
    handler.notify();
    pool->jobs[0]->execute();
    EXPECT_EQ(pool->jobs.size(), 1U);
}

TEST_F(CameraDeviceRemoval, ANotificationBehindAReleaseInsideOfTheWorkRepeatsTheWork) {
    handler.work = [&] {
        if (handler.handled == 1) {
            handler.waitForCameraDeviceRemoval();
            handler.notify();
        }
    };
    handler.notify();
    pool->jobs[0]->execute();
    EXPECT_EQ(handler.handled, 2);
    handler.notify();
    EXPECT_EQ(pool->jobs.size(), 2U);
}

TEST_F(CameraDeviceRemoval, AReleaseInsideOfTheWorkForgetsANotificationBeforeIt) {
    handler.work = [&] {
        handler.notify();
        handler.waitForCameraDeviceRemoval();
        handler.notify();
        handler.waitForCameraDeviceRemoval();
    };
    handler.notify();
    pool->jobs[0]->execute();
    EXPECT_EQ(handler.handled, 1);
}

TEST_F(CameraDeviceRemoval, ANotificationAfterAFinishedJobMakesANewOne) {
    handler.notify();
    pool->jobs[0]->execute();
    handler.notify();
    ASSERT_EQ(pool->jobs.size(), 2U);
    pool->jobs[1]->execute();
    EXPECT_EQ(handler.handled, 2);
}

TEST_F(CameraDeviceRemoval, WaitingWithNoJobReturnsAtOnce) {
    handler.waitForCameraDeviceRemoval();
    EXPECT_EQ(handler.handled, 0);
}

TEST_F(CameraDeviceRemoval, WaitingCancelsAJobThatHasNotBegun) {
    handler.notify();
    handler.waitForCameraDeviceRemoval();
    pool->jobs[0]->execute();
    EXPECT_EQ(handler.handled, 0);
}

TEST_F(CameraDeviceRemoval, ANotificationAfterACancelledJobMakesANewOne) {
    handler.notify();
    handler.waitForCameraDeviceRemoval();
    handler.notify();
    EXPECT_EQ(pool->jobs.size(), 2U);
}

TEST_F(CameraDeviceRemoval, AFinishedJobDoesNothingWhenItIsRunAgain) {
    handler.notify();
    pool->jobs[0]->execute();
    pool->jobs[0]->execute();
    EXPECT_EQ(handler.handled, 1);
}

TEST_F(CameraDeviceRemoval, ACancelledJobMayOutliveItsHandler) {
    {
        Handler gone(pool);
        gone.notify();
    }
    ASSERT_EQ(pool->jobs.size(), 1U);
    pool->jobs[0]->execute();
    pool->jobs.clear();
}

TEST_F(CameraDeviceRemoval, AJobThatThrowsKeepsNobodyWaiting) {
    handler.work = [] { throw std::runtime_error("lost twice"); };
    handler.notify();
    EXPECT_THROW(pool->jobs[0]->execute(), std::runtime_error);
    handler.waitForCameraDeviceRemoval();
    handler.notify();
    EXPECT_EQ(pool->jobs.size(), 2U);
}

TEST_F(CameraDeviceRemoval, APoolThatRefusesAJobIsAskedAgainNextTime) {
    pool->refuses = true;
    EXPECT_THROW(handler.notify(), std::runtime_error);
    pool->refuses = false;
    handler.notify();
    EXPECT_EQ(pool->jobs.size(), 1U);
}

TEST_F(CameraDeviceRemoval, WaitingLastsUntilARunningJobHasEnded) {
    std::promise<void> begun;
    std::promise<void> mayEnd;
    std::atomic<bool> ended{false};
    handler.work = [&] {
        begun.set_value();
        mayEnd.get_future().wait();
        ended = true;
    };
    handler.notify();
    std::thread worker([&] { pool->jobs[0]->execute(); });
    begun.get_future().wait();
    Orlix::Test::Sleeper sleeper;
    auto waiting = std::async(std::launch::async, [&] {
        sleeper.GoIn();
        handler.waitForCameraDeviceRemoval();
        return ended.load();
    });
    sleeper.WaitUntilAsleep();
    EXPECT_EQ(waiting.wait_for(std::chrono::seconds(0)), std::future_status::timeout);
    mayEnd.set_value();
    EXPECT_TRUE(waiting.get());
    worker.join();
}

TEST_F(CameraDeviceRemoval, TheWorkItselfDoesNotWaitForItsEnd) {
    handler.work = [&] { handler.waitForCameraDeviceRemoval(); };
    handler.notify();
    pool->jobs[0]->execute();
    EXPECT_EQ(handler.handled, 1);
    handler.notify();
    EXPECT_EQ(pool->jobs.size(), 2U);
}

TEST_F(CameraDeviceRemoval, NotificationsWorkAndEndMeetOnAnyThread) {
    for (int round = 0; round < 100; ++round) {
        Handler live(Orlix::DataProcessing::Core::getDefaultThreadPool());
        std::thread first([&] { live.notify(); });
        std::thread second([&] { live.notify(); });
        live.waitForCameraDeviceRemoval();
        first.join();
        second.join();
        EXPECT_LE(live.handled, 2);
    }
}

}  // namespace Plugin::OrlixVCellPackageBase
