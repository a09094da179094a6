// The lock interface that nodes, signals and node maps share.
#pragma once

#include "orlixdataprocessingcore/api.h"

namespace Orlix::DataProcessing::Threading {

// A recursive lock: the same thread may lock it repeatedly and unlocks it as often. The order of
// the virtual operations is part of the interface.
class ORLIXDATAPROCESSINGCORE_API IRecursiveLockable {
public:
    virtual ~IRecursiveLockable();

    virtual void lock() = 0;
    // True if the lock was taken.
    [[nodiscard]] virtual bool tryLock() = 0;
    virtual void unlock() = 0;

    // For a wait, by the thread that holds the lock: gives it up at every depth, tells that depth,
    // and takes the lock back at it.
    [[nodiscard]] virtual unsigned int releaseAll() = 0;
    virtual void reacquire(unsigned int depth) = 0;

protected:
    IRecursiveLockable() = default;
    IRecursiveLockable(const IRecursiveLockable&) = default;
    IRecursiveLockable& operator=(const IRecursiveLockable&) = default;
};

}  // namespace Orlix::DataProcessing::Threading
