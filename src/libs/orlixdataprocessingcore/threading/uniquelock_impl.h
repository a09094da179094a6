// Bodies of UniqueLock; included by its header only.
#pragma once

#include <utility>

#include "gcbase/gcexception.h"
#include "orlixdataprocessingcore/threading/uniquelock.h"

namespace Orlix::DataProcessing::Threading {

template <typename L>
UniqueLock<L>::UniqueLock(L& lockable) : lockable_(&lockable) {
    lock();
}

template <typename L>
UniqueLock<L>::UniqueLock(UniqueLock&& other) noexcept
    : lockable_(std::exchange(other.lockable_, nullptr)),
      owned_(std::exchange(other.owned_, false)) {}

template <typename L>
UniqueLock<L>& UniqueLock<L>::operator=(UniqueLock&& other) noexcept {
    // What this object held goes out of scope, and is unlocked, with the temporary.
    UniqueLock taken(std::move(other));
    std::swap(lockable_, taken.lockable_);
    std::swap(owned_, taken.owned_);
    return *this;
}

template <typename L>
UniqueLock<L>::~UniqueLock() {
    if (owned_) {
        lockable_->unlock();
    }
}

template <typename L>
void UniqueLock<L>::lock() {
    if (lockable_ == nullptr) {
        throw GenICam::RuntimeException("No lockable is associated with this unique lock.",
                                        __FILE__, __LINE__);
    }
    if (owned_) {
        throw GenICam::RuntimeException("Lockable is already owned by this unique lock.", __FILE__,
                                        __LINE__);
    }
    lockable_->lock();
    owned_ = true;
}

template <typename L>
void UniqueLock<L>::unlock() {
    if (lockable_ == nullptr) {
        throw GenICam::RuntimeException("No lockable is associated with this unique lock.",
                                        __FILE__, __LINE__);
    }
    if (!owned_) {
        throw GenICam::RuntimeException("Lockable is not owned by this unique lock.", __FILE__,
                                        __LINE__);
    }
    lockable_->unlock();
    owned_ = false;
}

}  // namespace Orlix::DataProcessing::Threading
