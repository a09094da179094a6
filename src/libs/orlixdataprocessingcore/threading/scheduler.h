// Hands work that has become ready to the shared worker threads. The queue in between is ours, so
// that everything an item's maker has written is visible to the worker that serves it; the thread
// library is only asked for "one more thread that takes from the queue".
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <vector>

#include "orlixdataprocessingcore/threading/workerthreads.h"

namespace Orlix::DataProcessing::Threading {

class Activity;

// Work of which there is one piece at a time: the owner schedules it when it becomes ready, and not
// again before serve() has returned Done.
class IReadyItem {
public:
    enum class Turn {
        Done,       // the item may be gone by now and is not touched again
        Again,      // there is more to do, and it is worth another thread
        AgainSoon,  // there is more to do, once this worker has served what it has at hand
    };

    // How long its turns take, as far as is known.
    enum class Weight {
        Light,  // many of them take no longer than it takes to wake a thread
        Short,  // they are worth a thread, but no hurry
        Long,   // nobody should wait for the end of one
    };

    virtual ~IReadyItem() = default;
    // Must not throw. Called with no lock held.
    [[nodiscard]] virtual Turn serve() noexcept = 0;
    // Asked while it is scheduled, and changes only while it is served.
    [[nodiscard]] virtual Weight weight() const noexcept { return Weight::Long; }
    // Counts the item from its schedule() on, until some time after its serve() has returned Done.
    // May be null; outlives the count.
    [[nodiscard]] virtual Activity* activity() const noexcept { return nullptr; }
};

// Process-wide and never destroyed; all operations are safe from any thread and never block.
//
// A worker doesn't wake others for items that it will come to in a moment itself, and a few light
// items are left to the workers that are awake anyway: two of them in one chain of light items
// spend more on carrying values from cache to cache than on the items. If it turns out that nobody
// comes, because a job takes longer than jobs of its kind have taken so far or a worker has a long
// line of items of its own, a monitor gives what waits to another worker.
class Scheduler {
public:
    [[nodiscard]] static Scheduler& instance();

    // The item must stay alive until its serve() has returned Done. It and its producer belong to
    // one owner. A worker that is serving `producer` keeps the first such item and goes on with it
    // itself: the values are still in its cache, and nobody needs to be woken.
    void schedule(IReadyItem& item, const IReadyItem* producer = nullptr);

private:
    struct Worker;
    enum class Wake { AnotherWorker, IfNobodyComes, Nobody };

    Scheduler();
    ~Scheduler() = delete;

    static void count(Activity* activity);
    [[nodiscard]] static Wake wakeFor(const IReadyItem& item);
    void enqueue(IReadyItem& item, Wake wake);
    void startWorker(std::unique_lock<std::mutex>& lock);
    [[nodiscard]] IReadyItem* next(Worker& worker);
    void work();
    void serveChain(Worker& worker, IReadyItem& first);
    void hold(Worker& worker);

    // Under the lock.
    void push(IReadyItem& item);
    [[nodiscard]] std::size_t freeWorkers() const;
    [[nodiscard]] bool isSomebodyComing() const;
    [[nodiscard]] bool areFewLight() const;
    [[nodiscard]] bool isOneTooMany() const;

    [[noreturn]] void monitor();
    [[nodiscard]] bool rescueItems();

    const std::size_t workerLimit_;
    std::mutex mutex_;
    std::deque<IReadyItem*> ready_;
    std::size_t readyNotLight_ = 0;  // of these
    std::size_t workers_ = 0;        // that are running or asked for
    std::vector<Worker*> running_;   // those that are running
    std::uint64_t taken_ = 0;        // items that were taken from the queue
    std::uint64_t takenBefore_ = 0;  // at the monitor's last look
    bool monitorSleeps_ = true;
    std::condition_variable monitorNeeded_;
    WorkerThreads* const threads_;
};

}  // namespace Orlix::DataProcessing::Threading
