// Takes the removal of a device off the camera library's thread: the notification only submits a
// job, and the job may wait for whatever lock it needs.
#pragma once

#include <cstdint>
#include <memory>
#include <thread>

#include "orlixcamera/configurationeventhandler.h"
#include "orlixdataprocessingcore/threading/conditionvariable.h"
#include "orlixdataprocessingcore/threading/recursivemutex.h"
#include "orlixdataprocessingcore/threading/threadpool.h"

namespace Plugin::OrlixVCellPackageBase {

// One job at a time is under way. The mutex guards only the job: it is held for a few steps, never
// while the work is done, and no code takes a node's lock under it. The owner calls
// waitForCameraDeviceRemoval() before what the work touches goes away, with no node lock held.
class ThreadedConfigurationEventHandler : public Orlix::CConfigurationEventHandler {
public:
    class CameraDeviceRemovalJob;

    // Throws InvalidArgumentException without a thread pool.
    explicit ThreadedConfigurationEventHandler(
        std::shared_ptr<Orlix::DataProcessing::Threading::IThreadPool> threadPool);
    ~ThreadedConfigurationEventHandler() override;

    // A further notification during a removal changes nothing, unless the work itself has given the
    // device up and so may have taken another one: then the job does its work once more.
    void OnCameraDeviceRemoved(Orlix::CInstantCamera& camera) override;

protected:
    // Cancels a job that has not begun, and waits for the end of one that has, unless the calling
    // thread is the one that is inside of it: then it returns at once, and the work goes on behind.
    // A loss that was to be handled behind the work is forgotten: its device is given up.
    void waitForCameraDeviceRemoval();

    // The work, on a thread of the pool. An exception ends the job and goes to the pool.
    virtual void handleCameraDeviceRemoved() = 0;

private:
    using Mutex = Orlix::DataProcessing::Threading::RecursiveMutex;
    using Guard = Orlix::DataProcessing::Threading::UniqueLock<Mutex>;

    const std::shared_ptr<Orlix::DataProcessing::Threading::IThreadPool> threadPool_;
    const std::shared_ptr<Mutex> mutex_;
    const std::shared_ptr<Orlix::DataProcessing::Threading::ConditionVariableAny>
        conditionVariable_;
    std::shared_ptr<CameraDeviceRemovalJob> currentJob_;
};

// Shares mutex and variable with the handler, for the pool may hold the job longer than the
// handler lives.
class ThreadedConfigurationEventHandler::CameraDeviceRemovalJob final
    : public Orlix::DataProcessing::Threading::IJob {
public:
    // Throws InvalidArgumentException for a null handler, RuntimeException for one that has no
    // mutex or no condition variable.
    explicit CameraDeviceRemovalJob(ThreadedConfigurationEventHandler* handler);

    void execute() override;
    [[nodiscard]] GenICam::gcstring getName() const override;

private:
    friend class ThreadedConfigurationEventHandler;

    enum class State : std::int32_t { Waiting, Running, Finished };

    // Under the mutex: lets go of the handler and wakes those who wait.
    void finish();

    ThreadedConfigurationEventHandler* handler_;  // null once the job is over
    std::shared_ptr<Mutex> mutex_;
    std::shared_ptr<Orlix::DataProcessing::Threading::ConditionVariableAny> conditionVariable_;
    State state_ = State::Waiting;
    std::thread::id runner_;  // while running
    // Of the device that the work is about, and of the one that was taken and lost since.
    bool isGivenUp_ = false;
    bool isDueAgain_ = false;
};

}  // namespace Plugin::OrlixVCellPackageBase
