#include "orlixdataprocessingcore/threading/scheduler.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>

#include "orlixdataprocessingcore/threading/activity.h"

namespace Orlix::DataProcessing::Threading {

namespace {

// One item that takes long must not hold up all others, also on a machine with few cores.
constexpr std::size_t fewestWorkers = 4;
// Items in a row that a worker may serve while others wait in the queue.
constexpr unsigned int longestChain = 32;
// How long an item may wait behind a job that was expected to be short.
constexpr std::chrono::milliseconds monitorInterval{2};
// Looks without any worker after which the monitor goes to sleep.
constexpr unsigned int idleLooks = 100;

std::size_t chooseWorkerLimit() {
    return std::max<std::size_t>(fewestWorkers, std::thread::hardware_concurrency());
}

}  // namespace

// A thread that serves items. Only the thread itself fills `next`; the monitor may empty it.
struct Scheduler::Worker {
    const IReadyItem* serving = nullptr;
    std::atomic<IReadyItem*> next{nullptr};
    std::atomic<std::uint64_t> turns{0};
    std::uint64_t turnsBefore = 0;  // of the monitor
    // Still counts an item that is done: the next one of the same owner takes the count over, so
    // that a chain of items doesn't change what all workers share. Empty at the end of the chain.
    Activity* spareCount = nullptr;

    void keepCount(Activity* activity) {
        if (spareCount == nullptr) {
            spareCount = activity;
        } else if (activity != nullptr) {
            activity->leave();
        }
    }
    void giveCountBack() {
        if (spareCount != nullptr) {
            std::exchange(spareCount, nullptr)->leave();
        }
    }

    // Found without a call, since it is asked for with every value.
    __attribute__((tls_model("initial-exec"))) static thread_local Worker* current;
};

thread_local Scheduler::Worker* Scheduler::Worker::current = nullptr;

Scheduler& Scheduler::instance() {
    // Never destroyed: items may still be under way while the process ends.
    static Scheduler* const scheduler = new Scheduler();
    return *scheduler;
}

Scheduler::Scheduler()
    : workerLimit_(chooseWorkerLimit()),
      threads_(new WorkerThreads(workerLimit_, [] { instance().work(); })) {
    std::thread([this] { monitor(); }).detach();
}

void Scheduler::count(Activity* activity) {
    Worker* const worker = Worker::current;
    if (worker != nullptr && worker->spareCount == activity) {
        worker->spareCount = nullptr;
    } else if (activity != nullptr) {
        activity->enter();
    }
}

void Scheduler::schedule(IReadyItem& item, const IReadyItem* producer) {
    count(item.activity());
    Worker* const worker = Worker::current;
    if (producer != nullptr && worker != nullptr && worker->serving == producer &&
        worker->next.load(std::memory_order_relaxed) == nullptr) {
        worker->next.store(&item, std::memory_order_release);
        return;
    }
    enqueue(item, Wake::AnotherWorker);
}

void Scheduler::enqueue(IReadyItem& item, Wake wake) {
    bool monitorSleeps = false;
    {
        std::lock_guard guard(mutex_);
        ready_.push_back(&item);
        if (wake == Wake::Nobody || workers_ == workerLimit_) {
            return;
        }
        ++workers_;
        monitorSleeps = std::exchange(monitorSleeps_, false);
    }
    threads_->startOne();
    if (monitorSleeps) {
        monitorNeeded_.notify_one();
    }
}

IReadyItem* Scheduler::next() {
    std::lock_guard guard(mutex_);
    if (ready_.empty()) {
        return nullptr;
    }
    ++taken_;
    IReadyItem* const item = ready_.front();
    ready_.pop_front();
    return item;
}

void Scheduler::work() {
    Worker worker;
    Worker* const outer = std::exchange(Worker::current, &worker);
    {
        std::lock_guard guard(mutex_);
        running_.push_back(&worker);
    }
    for (;;) {
        if (IReadyItem* const item = next()) {
            serveChain(worker, *item);
            continue;
        }
        std::lock_guard guard(mutex_);
        if (ready_.empty()) {
            --workers_;
            std::erase(running_, &worker);
            break;
        }
    }
    Worker::current = outer;
}

void Scheduler::serveChain(Worker& worker, IReadyItem& first) {
    IReadyItem* item = &first;
    for (unsigned int length = 0; item != nullptr; ++length) {
        if (length == longestChain) {
            enqueue(*item, Wake::AnotherWorker);
            break;
        }
        worker.serving = item;
        Activity* const activity = item->activity();
        const auto turn = item->serve();
        worker.serving = nullptr;
        worker.turns.store(worker.turns.load(std::memory_order_relaxed) + 1,
                           std::memory_order_relaxed);
        IReadyItem* const following = worker.next.exchange(nullptr, std::memory_order_acq_rel);
        if (turn == IReadyItem::Turn::Done) {
            worker.keepCount(activity);
        } else {
            const bool alone = turn == IReadyItem::Turn::AgainSoon &&
                               (following == nullptr || !following->mayTakeLong());
            enqueue(*item, alone ? Wake::Nobody : Wake::AnotherWorker);
        }
        item = following;
    }
    worker.giveCountBack();
}

void Scheduler::monitor() {
    std::unique_lock lock(mutex_);
    for (unsigned int looks = 0;; ++looks) {
        looks = workers_ == 0 ? looks : 0;
        if (looks == idleLooks) {
            monitorSleeps_ = true;
            monitorNeeded_.wait(lock, [this] { return !monitorSleeps_; });
        }
        monitorNeeded_.wait_for(lock, monitorInterval);
        if (rescueItems()) {
            lock.unlock();
            threads_->startOne();
            lock.lock();
        }
    }
}

// Whether another worker is needed. The lock is held.
bool Scheduler::rescueItems() {
    for (Worker* const worker : running_) {
        const std::uint64_t turns = worker->turns.load(std::memory_order_relaxed);
        if (std::exchange(worker->turnsBefore, turns) == turns) {
            if (IReadyItem* const item =
                    worker->next.exchange(nullptr, std::memory_order_acq_rel)) {
                ready_.push_back(item);
            }
        }
    }
    const bool stuck = !ready_.empty() && taken_ == takenBefore_;
    takenBefore_ = taken_;
    if (!stuck || workers_ == workerLimit_) {
        return false;
    }
    ++workers_;
    return true;
}

}  // namespace Orlix::DataProcessing::Threading
