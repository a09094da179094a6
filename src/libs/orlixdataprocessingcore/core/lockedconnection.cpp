#include "orlixdataprocessingcore/core/lockedconnection.h"

#include <map>
#include <mutex>
#include <utility>
#include <vector>

#include "gcbase/gcexception.h"
#include "orlixdataprocessingcore/threading/lockable.h"
#include "orlixdataprocessingcore/threading/threadpool.h"
#include "orlixdataprocessingcore/threading/uniquelock.h"

namespace Orlix::DataProcessing::Core {

namespace {

using Threading::IRecursiveLockable;
using Utils::IConnection;

class LockedWork;

// What waits for a lock, by the signal that it belongs to: a job will do it, unless somebody who
// holds the lock comes first.
class PutOffWorks {
public:
    static PutOffWorks& instance() {
        static auto* const works = new PutOffWorks;  // outlives every work of the process
        return *works;
    }

    // False if it waits already.
    bool add(const void* signal, const std::shared_ptr<LockedWork>& work) {
        const std::lock_guard guard(mutex_);
        return works_.try_emplace(work.get(), Entry{signal, work}).second;
    }
    // False if it doesn't wait any more.
    bool take(const LockedWork& work) {
        const std::lock_guard guard(mutex_);
        return works_.erase(&work) != 0;
    }
    [[nodiscard]] std::vector<std::shared_ptr<LockedWork>> of(const void* signal) {
        std::vector<std::shared_ptr<LockedWork>> found;
        const std::lock_guard guard(mutex_);
        for (const auto& [key, entry] : works_) {
            if (auto work = entry.signal == signal ? entry.work.lock() : nullptr) {
                found.push_back(std::move(work));
            }
        }
        return found;
    }

private:
    struct Entry {
        const void* signal;
        std::weak_ptr<LockedWork> work;
    };

    std::mutex mutex_;
    std::map<const LockedWork*, Entry> works_;
};

// The work and the job that does it later. The work is called through a signal of its own, which
// knows how to end a connection while calls are under way. Kept alive by the connection and by a
// job that is under way; any thread.
class LockedWork final : public Threading::IJob, public std::enable_shared_from_this<LockedWork> {
public:
    LockedWork(const void* signal, const std::shared_ptr<IRecursiveLockable>& lock,
               const std::shared_ptr<Threading::IThreadPool>& threadPool)
        : signal_(signal), lock_(lock), threadPool_(threadPool) {}
    ~LockedWork() override { PutOffWorks::instance().take(*this); }
    LockedWork(const LockedWork&) = delete;
    LockedWork& operator=(const LockedWork&) = delete;

    [[nodiscard]] std::shared_ptr<IConnection> connect(std::function<void()> work) {
        return work_.connect(std::move(work));
    }

    void runNowOrLater() {
        if (lock_->tryLock()) {
            const std::lock_guard<IRecursiveLockable> guard(*lock_, std::adopt_lock);
            work_();
        } else if (PutOffWorks::instance().add(signal_, shared_from_this())) {
            submit();
        }
    }

    void runIfPutOff() {
        if (lock_->tryLock()) {
            const std::lock_guard<IRecursiveLockable> guard(*lock_, std::adopt_lock);
            runOnce();
        }
    }

    void execute() override {
        const Threading::UniqueLock<IRecursiveLockable> guard(*lock_);
        runOnce();
    }
    [[nodiscard]] GenICam::gcstring getName() const override { return "work under a node's lock"; }

private:
    // What is told of from here on is put off anew, since the work may have looked already.
    void runOnce() {
        if (PutOffWorks::instance().take(*this)) {
            work_();
        }
    }

    void submit() {
        try {
            threadPool_->submit(shared_from_this());
        } catch (...) {
            PutOffWorks::instance().take(*this);
            throw;
        }
    }

    const void* const signal_;
    const std::shared_ptr<IRecursiveLockable> lock_;
    const std::shared_ptr<Threading::IThreadPool> threadPool_;
    Utils::Signal<void()> work_;
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
    const auto lockedWork = std::make_shared<LockedWork>(&signal, lock, threadPool);
    auto toWork = lockedWork->connect(std::move(work));
    auto fromSignal = signal.connect([lockedWork] { lockedWork->runNowOrLater(); });
    return std::make_shared<LockedConnection>(std::move(fromSignal), std::move(toWork));
}

void runPutOffWork(const Utils::ISignal<void()>& signal) {
    for (const auto& work : PutOffWorks::instance().of(&signal)) {
        work->runIfPutOff();
    }
}

}  // namespace Orlix::DataProcessing::Core
