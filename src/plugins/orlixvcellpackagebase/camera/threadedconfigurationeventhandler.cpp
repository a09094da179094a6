#include "orlixvcellpackagebase/threadedconfigurationeventhandler.h"

#include <utility>

#include "gcbase/gcexception.h"

namespace Plugin::OrlixVCellPackageBase {

namespace Threading = Orlix::DataProcessing::Threading;
using Job = ThreadedConfigurationEventHandler::CameraDeviceRemovalJob;

ThreadedConfigurationEventHandler::ThreadedConfigurationEventHandler(
    std::shared_ptr<Threading::IThreadPool> threadPool)
    : threadPool_(std::move(threadPool)),
      mutex_(std::make_shared<Mutex>()),
      conditionVariable_(std::make_shared<Threading::ConditionVariableAny>()) {
    if (!threadPool_) {
        throw GenICam::InvalidArgumentException("ThreadPool must not be nullptr", __FILE__,
                                                __LINE__);
    }
}

ThreadedConfigurationEventHandler::~ThreadedConfigurationEventHandler() {
    waitForCameraDeviceRemoval();
}

void ThreadedConfigurationEventHandler::OnCameraDeviceRemoved(Orlix::CInstantCamera& /*camera*/) {
    const Guard guard(*mutex_);
    if (currentJob_) {
        currentJob_->isDueAgain_ = currentJob_->isGivenUp_;
        return;
    }
    currentJob_ = std::make_shared<CameraDeviceRemovalJob>(this);
    try {
        threadPool_->submit(currentJob_);
    } catch (...) {
        currentJob_.reset();  // or nobody would ever hear of a removal again
        throw;
    }
}

void ThreadedConfigurationEventHandler::waitForCameraDeviceRemoval() {
    Guard guard(*mutex_);
    const std::shared_ptr<CameraDeviceRemovalJob> job = currentJob_;
    if (!job) {
        return;
    }
    job->isDueAgain_ = false;  // whoever comes here has given that device up, too
    // A receiver of a signal of the work comes here on the thread whose end it would wait for.
    if (job->runner_ == std::this_thread::get_id()) {
        job->isGivenUp_ = true;
        return;
    }
    if (job->state_ == Job::State::Waiting) {
        job->finish();
    }
    while (job->state_ != Job::State::Finished) {
        conditionVariable_->wait(guard);
    }
}

Job::CameraDeviceRemovalJob(ThreadedConfigurationEventHandler* handler) : handler_(handler) {
    if (handler == nullptr) {
        throw GenICam::InvalidArgumentException(
            "ThreadedConfigurationEventHandler must not be nullptr.", __FILE__, __LINE__);
    }
    mutex_ = handler->mutex_;
    if (!mutex_) {
        throw GenICam::RuntimeException(
            "Could not get mutex from ThreadedConfigurationEventHandler.", __FILE__, __LINE__);
    }
    conditionVariable_ = handler->conditionVariable_;
    if (!conditionVariable_) {
        throw GenICam::RuntimeException(
            "Could not get condition variable from ThreadedConfigurationEventHandler.", __FILE__,
            __LINE__);
    }
}

void Job::execute() {
    Guard guard(*mutex_);
    if (state_ != State::Waiting) {
        return;
    }
    state_ = State::Running;
    runner_ = std::this_thread::get_id();

    // Those who wait must not wait for ever if the work throws.
    struct Finish {
        CameraDeviceRemovalJob& job;
        Guard& guard;
        ~Finish() {
            if (!guard.isOwned()) {
                guard.lock();
            }
            job.finish();
        }
    };
    const Finish finish{*this, guard};
    do {
        isGivenUp_ = false;
        isDueAgain_ = false;
        guard.unlock();
        handler_->handleCameraDeviceRemoved();
        guard.lock();
    } while (isDueAgain_);
}

void Job::finish() {
    if (handler_->currentJob_.get() == this) {
        handler_->currentJob_.reset();  // the pool or the waiting thread still holds this object
    }
    handler_ = nullptr;
    runner_ = {};
    state_ = State::Finished;
    conditionVariable_->notifyAll();
}

GenICam::gcstring Job::getName() const {
    return "CameraDeviceRemovalJob";
}

}  // namespace Plugin::OrlixVCellPackageBase
