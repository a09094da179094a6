#include "orlixdataprocessingcore/threading/scheduler.h"

#include <algorithm>
#include <thread>
#include <utility>

namespace Orlix::DataProcessing::Threading {

namespace {

// One item that takes long must not hold up all others, also on a machine with few cores.
constexpr std::size_t fewestWorkers = 4;
// Items in a row that a worker may serve while others wait in the queue.
constexpr unsigned int longestChain = 32;

std::size_t chooseWorkerLimit() {
    return std::max<std::size_t>(fewestWorkers, std::thread::hardware_concurrency());
}

}  // namespace

// What a thread that serves items knows of itself.
struct Scheduler::Worker {
    const IReadyItem* serving = nullptr;
    IReadyItem* next = nullptr;

    static thread_local Worker* current;
};

thread_local Scheduler::Worker* Scheduler::Worker::current = nullptr;

Scheduler& Scheduler::instance() {
    // Never destroyed: items may still be under way while the process ends.
    static Scheduler* const scheduler = new Scheduler();
    return *scheduler;
}

Scheduler::Scheduler()
    : workerLimit_(chooseWorkerLimit()),
      threads_(new WorkerThreads(workerLimit_, [] { instance().work(); })) {}

void Scheduler::schedule(IReadyItem& item, const IReadyItem* producer) {
    Worker* const worker = Worker::current;
    if (producer != nullptr && worker != nullptr && worker->serving == producer &&
        worker->next == nullptr) {
        worker->next = &item;
        return;
    }
    enqueue(item, Wake::AnotherWorker);
}

void Scheduler::enqueue(IReadyItem& item, Wake wake) {
    {
        std::lock_guard guard(mutex_);
        ready_.push_back(&item);
        if (wake == Wake::Nobody || workers_ == workerLimit_) {
            return;
        }
        ++workers_;
    }
    threads_->startOne();
}

IReadyItem* Scheduler::next() {
    std::lock_guard guard(mutex_);
    if (ready_.empty()) {
        --workers_;
        return nullptr;
    }
    IReadyItem* const item = ready_.front();
    ready_.pop_front();
    return item;
}

void Scheduler::work() {
    Worker worker;
    Worker* const outer = Worker::current;
    Worker::current = &worker;
    while (IReadyItem* const item = next()) {
        serveChain(worker, *item);
    }
    Worker::current = outer;
}

void Scheduler::serveChain(Worker& worker, IReadyItem& first) {
    IReadyItem* item = &first;
    for (unsigned int length = 0; item != nullptr; ++length) {
        if (length == longestChain) {
            enqueue(*item, Wake::Nobody);  // this worker comes back to it by way of the queue
            return;
        }
        worker.serving = item;
        const auto turn = item->serve();
        worker.serving = nullptr;
        IReadyItem* const following = std::exchange(worker.next, nullptr);
        if (turn != IReadyItem::Turn::Done) {
            enqueue(*item, turn == IReadyItem::Turn::Again ? Wake::AnotherWorker : Wake::Nobody);
        }
        item = following;
    }
}

}  // namespace Orlix::DataProcessing::Threading
