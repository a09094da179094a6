#include "host/runstate.h"

namespace Orlix::Host {

void RunState::end(const std::string& failure) {
    const std::lock_guard lock(mutex_);
    ending_ = true;
    if (failure_.empty()) {
        failure_ = failure;
    }
    changed_.notify_all();
}

bool RunState::waitUntil(RunClock::time_point deadline) {
    std::unique_lock lock(mutex_);
    return changed_.wait_until(lock, deadline, [this] { return ending_; });
}

bool RunState::isEnding() const {
    const std::lock_guard lock(mutex_);
    return ending_;
}

std::string RunState::failure() const {
    const std::lock_guard lock(mutex_);
    return failure_;
}

}  // namespace Orlix::Host
