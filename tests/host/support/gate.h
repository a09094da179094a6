// Holds threads up until the test opens it.
#pragma once

#include <condition_variable>
#include <mutex>

namespace Orlix::Host::Testing {

// Any thread may call. Once open it stays so.
class Gate {
public:
    void open() {
        const std::scoped_lock lock(mutex_);
        isOpen_ = true;
        opened_.notify_all();
    }
    void wait() {
        std::unique_lock lock(mutex_);
        opened_.wait(lock, [this] { return isOpen_; });
    }

private:
    std::mutex mutex_;
    std::condition_variable opened_;
    bool isOpen_ = false;
};

}  // namespace Orlix::Host::Testing
