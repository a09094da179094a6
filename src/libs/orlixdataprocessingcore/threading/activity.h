// Counts the items of one owner that are scheduled or at work, and lets a thread wait until none
// is.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <mutex>

namespace Orlix::DataProcessing::Threading {

// All operations are safe from any thread. Whoever waits may destroy the object afterwards: the
// last one to leave does so under the lock and touches nothing behind it.
class Activity {
public:
    void enter() noexcept { count_.fetch_add(1, std::memory_order_relaxed); }

    void leave() {
        std::size_t count = count_.load(std::memory_order_relaxed);
        while (count > 1) {
            if (count_.compare_exchange_weak(count, count - 1, std::memory_order_release)) {
                return;
            }
        }
        std::lock_guard guard(mutex_);
        if (count_.fetch_sub(1, std::memory_order_acq_rel) == 1) {
            idle_.notify_all();
        }
    }

    void waitUntilIdle() {
        std::unique_lock lock(mutex_);
        idle_.wait(lock, [this] { return isIdle(); });
    }

    [[nodiscard]] bool isIdle() const noexcept {
        return count_.load(std::memory_order_acquire) == 0;
    }

private:
    std::atomic<std::size_t> count_{0};
    std::mutex mutex_;
    std::condition_variable idle_;
};

}  // namespace Orlix::DataProcessing::Threading
