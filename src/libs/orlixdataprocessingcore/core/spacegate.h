// Where a source waits until the graph can take another job. Closing the gate lets every waiter go.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace Orlix::DataProcessing::Core {

// All operations are safe from any thread. The lock is a leaf: none of the caller's functions runs
// under it, so it may be used with a node's lock held and by threads that drain queues.
class SpaceGate {
public:
    void open() {
        std::lock_guard guard(mutex_);
        open_ = true;
    }

    void close() {
        {
            std::lock_guard guard(mutex_);
            open_ = false;
            ++closings_;
        }
        changed_.notify_all();
    }

    // There may be space now.
    void notify() {
        {
            std::lock_guard guard(mutex_);
            ++changes_;
            if (waiters_ == 0) {
                return;
            }
        }
        changed_.notify_all();
    }

    // True when hasSpace says so; false when the gate is closed, now or later, even if it has been
    // opened again for another run before the waiter got on.
    template <typename HasSpace>
    [[nodiscard]] bool wait(const HasSpace& hasSpace) {
        std::unique_lock lock(mutex_);
        const std::uint64_t entered = closings_;
        const auto lasts = [&] { return open_ && closings_ == entered; };
        while (lasts()) {
            // A change between the question and the wait must not be missed.
            const std::uint64_t asked = changes_;
            lock.unlock();
            const bool space = hasSpace();
            lock.lock();
            if (space) {
                return lasts();
            }
            ++waiters_;
            changed_.wait(lock, [&] { return !lasts() || changes_ != asked; });
            --waiters_;
        }
        return false;
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::uint64_t changes_ = 0;
    std::uint64_t closings_ = 0;
    unsigned int waiters_ = 0;
    bool open_ = false;
};

}  // namespace Orlix::DataProcessing::Core
