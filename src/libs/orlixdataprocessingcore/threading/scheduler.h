// Hands work that has become ready to the shared worker threads. The queue in between is ours, so
// that everything an item's maker has written is visible to the worker that serves it; the worker
// library is only asked for "one more thread that takes from the queue".
#pragma once

#include <cstddef>
#include <deque>
#include <mutex>

#include "orlixdataprocessingcore/threading/workerthreads.h"

namespace Orlix::DataProcessing::Threading {

// Work of which there is one piece at a time: the owner schedules it when it becomes ready, and not
// again before serve() has returned Done.
class IReadyItem {
public:
    enum class Turn {
        Done,       // the item may be gone by now and is not touched again
        Again,      // there is more to do, and it is worth another thread
        AgainSoon,  // there is more to do, once this worker has served what it has at hand
    };

    virtual ~IReadyItem() = default;
    // Must not throw. Called with no lock held.
    [[nodiscard]] virtual Turn serve() noexcept = 0;
};

// Process-wide and never destroyed; all operations are safe from any thread and never block.
class Scheduler {
public:
    [[nodiscard]] static Scheduler& instance();

    // The item must stay alive until its serve() has returned Done. A worker that is serving
    // `producer` keeps the first such item and goes on with it itself: the values are still in its
    // cache, and nobody needs to be woken.
    void schedule(IReadyItem& item, const IReadyItem* producer = nullptr);

    // As many items as this can be served at the same time.
    [[nodiscard]] std::size_t workerLimit() const noexcept { return workerLimit_; }

private:
    struct Worker;

    Scheduler();
    ~Scheduler() = delete;

    enum class Wake { AnotherWorker, Nobody };

    void enqueue(IReadyItem& item, Wake wake);
    [[nodiscard]] IReadyItem* next();
    void work();
    void serveChain(Worker& worker, IReadyItem& first);

    const std::size_t workerLimit_;
    std::mutex mutex_;
    std::deque<IReadyItem*> ready_;
    std::size_t workers_ = 0;  // that are running or asked for
    WorkerThreads* const threads_;
};

}  // namespace Orlix::DataProcessing::Threading
