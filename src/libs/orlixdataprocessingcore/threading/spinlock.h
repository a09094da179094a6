// A lock for a few instructions at a time, which costs half of what a mutex does.
#pragma once

#include <atomic>
#include <thread>

namespace Orlix::DataProcessing::Threading {

// A leaf lock: its holder waits for nothing and calls nothing foreign. A thread that finds it taken
// looks again and gives its time away after a while, so a holder that was interrupted gets on.
class SpinLock {
public:
    SpinLock() = default;
    SpinLock(const SpinLock&) = delete;
    SpinLock& operator=(const SpinLock&) = delete;

    void lock() noexcept {
        while (taken_.exchange(true, std::memory_order_acquire)) {
            waitUntilFree();
        }
    }
    void unlock() noexcept { taken_.store(false, std::memory_order_release); }

private:
    static constexpr unsigned int looksBeforeYield = 64;

    void waitUntilFree() const noexcept {
        for (unsigned int looks = 1; taken_.load(std::memory_order_relaxed); ++looks) {
            if (looks % looksBeforeYield == 0) {
                std::this_thread::yield();
            }
        }
    }

    std::atomic<bool> taken_{false};
};

}  // namespace Orlix::DataProcessing::Threading
