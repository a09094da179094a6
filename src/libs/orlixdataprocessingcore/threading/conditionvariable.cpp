#include "orlixdataprocessingcore/threading/conditionvariable.h"

namespace Orlix::DataProcessing::Threading {

ConditionVariableAny::ConditionVariableAny() = default;
ConditionVariableAny::~ConditionVariableAny() = default;

void ConditionVariableAny::notifyAll() {
    const std::lock_guard<std::mutex> guard(mutex_);
    condition_.notify_all();
}

bool ConditionVariableAny::waitInternal(IRecursiveLockable& lockable,
                                        const std::chrono::steady_clock::time_point* deadline) {
    return waitReleased(lockable, deadline);
}

bool ConditionVariableAny::waitInternal(RecursiveMutex& lockable,
                                        const std::chrono::steady_clock::time_point* deadline) {
    return waitReleased(lockable, deadline);
}

template <typename L>
bool ConditionVariableAny::waitReleased(L& lockable,
                                        const std::chrono::steady_clock::time_point* deadline) {
    // Taken before the lockable is given up, so that no notification falls in between; given up
    // before the lockable is taken back, since a notifying thread may hold that.
    std::unique_lock<std::mutex> guard(mutex_);
    const unsigned int depth = lockable.releaseAll();
    bool isInTime = true;
    if (deadline == nullptr) {
        condition_.wait(guard);
    } else {
        isInTime = condition_.wait_until(guard, *deadline) == std::cv_status::no_timeout;
    }
    guard.unlock();
    lockable.reacquire(depth);
    return isInTime;
}

}  // namespace Orlix::DataProcessing::Threading
