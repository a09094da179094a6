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
// Light items that may wait for a worker that is awake; they are worth another one when it would
// be at work for longer than its waking takes.
constexpr std::size_t mostLightItems = 8;
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
    bool isHeld = false;  // at something long, or stuck; under the scheduler's lock
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
    enqueue(item, wakeFor(item));
}

Scheduler::Wake Scheduler::wakeFor(const IReadyItem& item) {
    return item.weight() == IReadyItem::Weight::Light ? Wake::IfNobodyComes : Wake::AnotherWorker;
}

void Scheduler::enqueue(IReadyItem& item, Wake wake) {
    std::unique_lock lock(mutex_);
    push(item);
    if (wake == Wake::Nobody || workers_ == workerLimit_) {
        return;
    }
    const bool isFew = ready_.size() <= mostLightItems;
    if (wake == Wake::IfNobodyComes && isFew && isSomebodyComing()) {
        return;
    }
    startWorker(lock);
}

// Releases the lock.
void Scheduler::startWorker(std::unique_lock<std::mutex>& lock) {
    ++workers_;
    const bool monitorSleeps = std::exchange(monitorSleeps_, false);
    lock.unlock();
    threads_->startOne();
    if (monitorSleeps) {
        monitorNeeded_.notify_one();
    }
}

void Scheduler::push(IReadyItem& item) {
    readyNotLight_ += item.weight() == IReadyItem::Weight::Light ? 0U : 1U;
    ready_.push_back(&item);
}

// Those that will look at the queue in a moment.
std::size_t Scheduler::freeWorkers() const {
    const auto count = std::count_if(running_.begin(), running_.end(),
                                     [](const Worker* worker) { return !worker->isHeld; });
    return static_cast<std::size_t>(count);
}

bool Scheduler::isSomebodyComing() const {
    return workers_ > running_.size() || freeWorkers() != 0;
}

bool Scheduler::areFewLight() const {
    return readyNotLight_ == 0 && ready_.size() <= mostLightItems;
}

// Of the free workers, one that asks for work.
bool Scheduler::isOneTooMany() const {
    return ready_.empty() || (areFewLight() && freeWorkers() > 1);
}

// Null if there is nothing for this worker, which then ends.
IReadyItem* Scheduler::next(Worker& worker) {
    std::lock_guard guard(mutex_);
    worker.isHeld = false;
    if (isOneTooMany()) {
        --workers_;
        std::erase(running_, &worker);
        return nullptr;
    }
    ++taken_;
    IReadyItem* const item = ready_.front();
    ready_.pop_front();
    readyNotLight_ -= item->weight() == IReadyItem::Weight::Light ? 0U : 1U;
    return item;
}

void Scheduler::work() {
    Worker worker;
    Worker* const outer = std::exchange(Worker::current, &worker);
    {
        std::lock_guard guard(mutex_);
        running_.push_back(&worker);
    }
    while (IReadyItem* const item = next(worker)) {
        serveChain(worker, *item);
    }
    Worker::current = outer;
}

void Scheduler::serveChain(Worker& worker, IReadyItem& first) {
    IReadyItem* item = &first;
    for (unsigned int length = 0; item != nullptr; ++length) {
        if (length == longestChain) {
            enqueue(*item, wakeFor(*item));
            break;
        }
        if (item->weight() == IReadyItem::Weight::Long) {
            hold(worker);
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
            const bool alone =
                turn == IReadyItem::Turn::AgainSoon &&
                (following == nullptr || following->weight() != IReadyItem::Weight::Long);
            enqueue(*item, alone ? Wake::Nobody : Wake::AnotherWorker);
        }
        item = following;
    }
    worker.giveCountBack();
}

// The worker begins something long: what was left to it is somebody else's now.
void Scheduler::hold(Worker& worker) {
    std::unique_lock lock(mutex_);
    worker.isHeld = true;
    if (!ready_.empty() && workers_ < workerLimit_ && !isSomebodyComing()) {
        startWorker(lock);
    }
}

void Scheduler::monitor() {
    std::unique_lock lock(mutex_);
    unsigned int looksWithoutWorker = 0;
    for (;;) {
        if (looksWithoutWorker == idleLooks) {
            monitorSleeps_ = true;
            monitorNeeded_.wait(lock, [this] { return !monitorSleeps_; });
            looksWithoutWorker = 0;
        }
        monitorNeeded_.wait_for(lock, monitorInterval);
        looksWithoutWorker = workers_ == 0 ? looksWithoutWorker + 1 : 0;
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
            worker->isHeld = true;
            if (IReadyItem* const item =
                    worker->next.exchange(nullptr, std::memory_order_acq_rel)) {
                push(*item);
            }
        }
    }
    const bool nobodyCame = std::exchange(takenBefore_, taken_) == taken_;
    if (ready_.empty() || !nobodyCame || workers_ == workerLimit_) {
        return false;
    }
    for (Worker* const worker : running_) {
        worker->isHeld = true;  // at a long line of items, which takes as long as a long one
    }
    ++workers_;
    return true;
}

}  // namespace Orlix::DataProcessing::Threading
