// The recursive lock that guards a node map, and its scope guard. A map takes the lock once per
// public call; a caller may pass its own lock to a map, so that one lock covers both.
#pragma once

#include <pthread.h>

#include <atomic>
#include <mutex>

namespace GenApi {

// Recursive; one thread may hold it at any depth. All operations are safe from any thread.
class CLock {
public:
    CLock() = default;
    CLock(const CLock&) = delete;
    CLock& operator=(const CLock&) = delete;
    virtual ~CLock() = default;

    void Lock() {
        if (IsOwned()) {
            ++depth_;
            return;
        }
        mutex_.lock();
        take(1);
    }

    [[nodiscard]] bool TryLock() {
        if (IsOwned()) {
            ++depth_;
            return true;
        }
        if (!mutex_.try_lock()) {
            return false;
        }
        take(1);
        return true;
    }

    // Only by the thread that holds the lock.
    void Unlock() {
        if (--depth_ == 0) {
            owner_.store(pthread_t{}, std::memory_order_relaxed);
            mutex_.unlock();
        }
    }

    // Whether the calling thread holds the lock.
    [[nodiscard]] bool IsOwned() const noexcept {
        // Only this thread can have stored its own id, so no ordering is needed.
        return owner_.load(std::memory_order_relaxed) == pthread_self();
    }

    // Gives the lock up at every depth, for a wait; the result goes to Reacquire.
    [[nodiscard]] unsigned int ReleaseAll() {
        const unsigned int depth = depth_;
        depth_ = 0;
        owner_.store(pthread_t{}, std::memory_order_relaxed);
        mutex_.unlock();
        return depth;
    }

    // Takes the lock back at the depth that ReleaseAll reported.
    void Reacquire(unsigned int depth) {
        mutex_.lock();
        take(depth);
    }

private:
    void take(unsigned int depth) {
        owner_.store(pthread_self(), std::memory_order_relaxed);
        depth_ = depth;
    }

    std::mutex mutex_;
    std::atomic<pthread_t> owner_{};
    unsigned int depth_ = 0;
};

// Holds a lock for a scope.
class AutoLock {
public:
    explicit AutoLock(CLock& lock) : lock_(lock) { lock_.Lock(); }
    ~AutoLock() { lock_.Unlock(); }
    AutoLock(const AutoLock&) = delete;
    AutoLock& operator=(const AutoLock&) = delete;

private:
    CLock& lock_;
};

}  // namespace GenApi
