// Tells a layer's owner that cameras came or went. Shared by the layer and its cameras, which may
// outlive it. Any thread may call.
#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace Orlix::Transport {

class Announcer {
public:
    // When it returns, no call of the function before is under way, but for one that runs on this
    // very thread.
    void Set(std::function<void()> changed) {
        std::unique_lock lock(mutex_);
        changed_ = std::move(changed);
        callEnded_.wait(lock, [this] {
            return caller_ == std::thread::id() || caller_ == std::this_thread::get_id();
        });
    }
    // To be called by one thread only.
    void Tell() {
        std::unique_lock lock(mutex_);
        const std::function<void()> changed = changed_;
        if (!changed) {
            return;
        }
        caller_ = std::this_thread::get_id();
        lock.unlock();
        changed();
        lock.lock();
        caller_ = std::thread::id();
        callEnded_.notify_all();
    }

private:
    std::mutex mutex_;
    std::condition_variable callEnded_;
    std::function<void()> changed_;
    std::thread::id caller_;
};

}  // namespace Orlix::Transport
