// Waits for a change of what a recursive lock guards. The wait gives the lock up at every depth
// that the thread holds and takes it back at the same depth.
//
//     UniqueLock<IRecursiveLockable> lock(*lockable);
//     while (!done) {
//         changed.wait(lock);
//     }
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

#include "orlixdataprocessingcore/api.h"
#include "orlixdataprocessingcore/threading/lockable.h"
#include "orlixdataprocessingcore/threading/recursivemutex.h"
#include "orlixdataprocessingcore/threading/uniquelock.h"

namespace Orlix::DataProcessing::Threading {

// All operations are safe from any thread. A wake-up may be spurious, so callers test their
// condition again. A change that is made under the lock before notifyAll is never missed.
class ORLIXDATAPROCESSINGCORE_API ConditionVariableAny {
public:
    ConditionVariableAny();
    ~ConditionVariableAny();
    ConditionVariableAny(const ConditionVariableAny&) = delete;
    ConditionVariableAny& operator=(const ConditionVariableAny&) = delete;

    void notifyAll();

    // Throws InvalidArgumentException if `lock` does not own a lockable.
    template <typename L>
    void wait(UniqueLock<L>& lock);

    // As wait, but no longer than that; false if the time ran out.
    template <typename L>
    bool waitUntil(UniqueLock<L>& lock, std::chrono::steady_clock::time_point deadline);

private:
    // A null deadline waits without limit.
    bool waitInternal(IRecursiveLockable& lockable,
                      const std::chrono::steady_clock::time_point* deadline);
    bool waitInternal(RecursiveMutex& lockable,
                      const std::chrono::steady_clock::time_point* deadline);
    template <typename L>
    bool waitReleased(L& lockable, const std::chrono::steady_clock::time_point* deadline);

    std::mutex mutex_;
    std::condition_variable condition_;
};

}  // namespace Orlix::DataProcessing::Threading

#include "orlixdataprocessingcore/threading/conditionvariable_impl.h"
