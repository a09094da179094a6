#include "orlixdataprocessingcore/core/lockedconnection.h"

#include <atomic>
#include <mutex>
#include <utility>

#include "gcbase/gcexception.h"
#include "orlixdataprocessingcore/threading/lockable.h"
#include "orlixdataprocessingcore/threading/threadpool.h"
#include "orlixdataprocessingcore/threading/uniquelock.h"

namespace Orlix::DataProcessing::Core {

namespace {

using Threading::IRecursiveLockable;
using Utils::IConnection;

// The work and the job that does it later. The work is called through a signal of its own, which
// knows how to end a connection while calls are under way. Kept alive by the connection and by a
// job that is under way; any thread.
class LockedWork final : public Threading::IJob, public std::enable_shared_from_this<LockedWork> {
public:
    LockedWork(const std::shared_ptr<IRecursiveLockable>& lock,
               const std::shared_ptr<Threading::IThreadPool>& threadPool)
        : lock_(lock), threadPool_(threadPool) {}

    [[nodiscard]] std::shared_ptr<IConnection> connect(std::function<void()> work) {
        return work_.connect(std::move(work));
    }

    void runNowOrLater() {
        if (lock_->tryLock()) {
            const std::lock_guard<IRecursiveLockable> guard(*lock_, std::adopt_lock);
            work_();
        } else if (!isPending_.exchange(true)) {
            submit();
        }
    }

    void execute() override {
        const Threading::UniqueLock<IRecursiveLockable> guard(*lock_);
        // What is told of from here on is for another job, since the work may have looked already.
        isPending_ = false;
        work_();
    }
    [[nodiscard]] GenICam::gcstring getName() const override { return "work under a node's lock"; }

private:
    void submit() {
        try {
            threadPool_->submit(shared_from_this());
        } catch (...) {
            isPending_ = false;
            throw;
        }
    }

    const std::shared_ptr<IRecursiveLockable> lock_;
    const std::shared_ptr<Threading::IThreadPool> threadPool_;
    Utils::Signal<void()> work_;
    std::atomic<bool> isPending_{false};  // a job is on its way and has not looked yet
};

// Both ends of the way: that from the signal, and that to the work.
class LockedConnection final : public IConnection {
public:
    LockedConnection(std::shared_ptr<IConnection> fromSignal, std::shared_ptr<IConnection> toWork)
        : fromSignal_(std::move(fromSignal)), toWork_(std::move(toWork)) {}

    void disconnect() override {
        fromSignal_->disconnect();
        toWork_->disconnect();
    }
    bool isConnected() const override { return fromSignal_->isConnected(); }
    void setBlocked(bool unblock, bool waitForRunningCalls) override {
        fromSignal_->setBlocked(unblock, waitForRunningCalls);
        toWork_->setBlocked(unblock, waitForRunningCalls);
    }
    bool isEnabled() const override { return fromSignal_->isEnabled(); }
    bool hasExpiredTrackable() const override { return fromSignal_->hasExpiredTrackable(); }

private:
    const std::shared_ptr<IConnection> fromSignal_;
    const std::shared_ptr<IConnection> toWork_;
};

}  // namespace

std::shared_ptr<IConnection> connectUnderLock(
    Utils::ISignal<void()>& signal, const std::shared_ptr<IRecursiveLockable>& lock,
    const std::shared_ptr<Threading::IThreadPool>& threadPool, std::function<void()> work) {
    if (lock == nullptr || threadPool == nullptr) {
        throw GenICam::InvalidArgumentException(
            "Work under a lock needs the lock and a thread pool; one of them is null.", __FILE__,
            __LINE__);
    }
    const auto lockedWork = std::make_shared<LockedWork>(lock, threadPool);
    auto toWork = lockedWork->connect(std::move(work));
    auto fromSignal = signal.connect([lockedWork] { lockedWork->runNowOrLater(); });
    return std::make_shared<LockedConnection>(std::move(fromSignal), std::move(toWork));
}

}  // namespace Orlix::DataProcessing::Core
