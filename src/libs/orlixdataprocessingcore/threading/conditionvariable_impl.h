// Bodies of ConditionVariableAny's templates; included by its header only.
#pragma once

#include "gcbase/gcexception.h"
#include "orlixdataprocessingcore/threading/conditionvariable.h"

namespace Orlix::DataProcessing::Threading {

template <typename L>
void ConditionVariableAny::wait(UniqueLock<L>& lock) {
    if (lock.getLockable() == nullptr || !lock.isOwned()) {
        throw GenICam::InvalidArgumentException("Passed unique lock does not own a lockable.",
                                                __FILE__, __LINE__);
    }
    waitInternal(*lock.getLockable(), nullptr);
}

template <typename L>
bool ConditionVariableAny::waitUntil(UniqueLock<L>& lock,
                                     std::chrono::steady_clock::time_point deadline) {
    if (lock.getLockable() == nullptr || !lock.isOwned()) {
        throw GenICam::InvalidArgumentException("Passed unique lock does not own a lockable.",
                                                __FILE__, __LINE__);
    }
    return waitInternal(*lock.getLockable(), &deadline);
}

}  // namespace Orlix::DataProcessing::Threading
