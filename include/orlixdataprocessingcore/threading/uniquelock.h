// Holds a lock for a scope, and can give it up and take it back in between. It doesn't own the
// lockable; one UniqueLock belongs to one thread.
#pragma once

namespace Orlix::DataProcessing::Threading {

// Asks the constructor not to lock.
struct DeferLock {};
inline constexpr DeferLock deferLock{};

// Ownership is tracked here, not in the lockable: a second lock() is an error even where the
// lockable is recursive. Wrong use throws RuntimeException.
template <typename L>
class UniqueLock {
public:
    // Associated with no lockable.
    UniqueLock() noexcept = default;
    explicit UniqueLock(L& lockable);
    UniqueLock(L& lockable, DeferLock) noexcept : lockable_(&lockable) {}
    UniqueLock(UniqueLock&& other) noexcept;
    // Unlocks what it holds first.
    UniqueLock& operator=(UniqueLock&& other) noexcept;
    UniqueLock(const UniqueLock&) = delete;
    UniqueLock& operator=(const UniqueLock&) = delete;
    ~UniqueLock();

    void lock();
    void unlock();

    [[nodiscard]] bool isOwned() const noexcept { return owned_; }
    [[nodiscard]] L* getLockable() const noexcept { return lockable_; }

private:
    L* lockable_ = nullptr;
    bool owned_ = false;
};

}  // namespace Orlix::DataProcessing::Threading

#include "orlixdataprocessingcore/threading/uniquelock_impl.h"
