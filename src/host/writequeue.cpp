#include "host/writequeue.h"

#include <utility>

namespace Orlix::Host {

WriteQueue::WriteQueue(std::size_t capacity, std::size_t threads, Work work,
                       std::function<void()> onSpace)
    : capacity_(capacity), work_(std::move(work)), onSpace_(std::move(onSpace)) {
    try {
        for (std::size_t i = 0; i < threads; ++i) {
            threads_.emplace_back([this] { writeValues(); });
        }
    } catch (...) {
        discard();  // ends those that are there
        throw;
    }
}

WriteQueue::~WriteQueue() {
    finish();
}

void WriteQueue::add(OutputValue value) {
    {
        const std::lock_guard lock(mutex_);
        if (discarding_) {
            return;
        }
        waiting_.push_back(std::move(value));
        if (waiting_.size() < capacity_ || begun_) {
            changed_.notify_one();
            return;
        }
        begun_ = true;
    }
    changed_.notify_all();
}

bool WriteQueue::hasSpace() const {
    const std::lock_guard lock(mutex_);
    return waiting_.size() < capacity_;
}

std::size_t WriteQueue::size() const {
    const std::lock_guard lock(mutex_);
    return waiting_.size() + busy_;
}

void WriteQueue::begin() {
    {
        const std::lock_guard lock(mutex_);
        begun_ = true;
    }
    changed_.notify_all();
}

void WriteQueue::finish() {
    {
        const std::lock_guard lock(mutex_);
        finishing_ = true;
    }
    endThreads();
}

void WriteQueue::discard() {
    std::deque<OutputValue> dropped;  // ends after the lock has been released
    {
        const std::lock_guard lock(mutex_);
        finishing_ = true;
        discarding_ = true;
        dropped.swap(waiting_);
    }
    endThreads();
}

void WriteQueue::endThreads() {
    changed_.notify_all();
    for (std::thread& thread : threads_) {
        if (thread.joinable()) {
            thread.join();
        }
    }
}

void WriteQueue::writeValues() {
    std::unique_lock lock(mutex_);
    for (;;) {
        changed_.wait(lock, [this] { return finishing_ || (begun_ && !waiting_.empty()); });
        if (waiting_.empty() || !begun_) {
            return;
        }
        const bool wasFull = waiting_.size() == capacity_;
        OutputValue value = std::move(waiting_.front());
        waiting_.pop_front();
        ++busy_;
        lock.unlock();
        if (wasFull) {
            onSpace_();
        }
        work_(value);
        // The pixels go back to their pool before the next wait.
        value = OutputValue();
        lock.lock();
        --busy_;
    }
}

}  // namespace Orlix::Host
