#include "host/runstate.h"

namespace Orlix::Host {

RunClock::time_point deadlineAfter(RunClock::time_point start,
                                   const std::optional<double>& seconds) {
    using Seconds = std::chrono::duration<double>;
    // A second less, since a double can't tell the very end.
    const Seconds longest = RunClock::time_point::max() - start - std::chrono::seconds(1);
    if (!seconds || *seconds > longest.count()) {
        return RunClock::time_point::max();
    }
    return start + std::chrono::duration_cast<RunClock::duration>(Seconds(*seconds));
}

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

std::string RunState::failure() const {
    const std::lock_guard lock(mutex_);
    return failure_;
}

}  // namespace Orlix::Host
