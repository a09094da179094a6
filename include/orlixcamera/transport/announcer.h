// Tells a layer's owner that cameras came or went. Shared by the layer and its cameras, which may
// outlive it. Any thread may call.
#pragma once

#include <functional>
#include <mutex>
#include <utility>

#include "orlixcamera/transport/guardedcall.h"

namespace Orlix::Transport {

class Announcer {
public:
    // When it returns, no call of the function before is under way, but for one that runs on this
    // very thread.
    void Set(std::function<void()> changed) {
        GuardedCall::Lock lock(mutex_);
        changed_ = std::move(changed);
        call_.AwaitEnd(lock);
    }
    // To be called by one thread only.
    void Tell() {
        GuardedCall::Lock lock(mutex_);
        const std::function<void()> changed = changed_;
        if (changed) {
            call_.Make(lock, changed);
        }
    }

private:
    std::mutex mutex_;
    GuardedCall call_;
    std::function<void()> changed_;
};

}  // namespace Orlix::Transport
