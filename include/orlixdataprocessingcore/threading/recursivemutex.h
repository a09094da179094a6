// A plain recursive mutex without virtual operations, for an object that has its own lock.
#pragma once

#include "genapi/synch.h"

namespace Orlix::DataProcessing::Threading {

class RecursiveMutex {
public:
    RecursiveMutex() = default;
    RecursiveMutex(const RecursiveMutex&) = delete;
    RecursiveMutex& operator=(const RecursiveMutex&) = delete;

    void lock() { lock_.Lock(); }
    [[nodiscard]] bool tryLock() { return lock_.TryLock(); }
    void unlock() { lock_.Unlock(); }

    // As IRecursiveLockable has them.
    [[nodiscard]] unsigned int releaseAll() { return lock_.ReleaseAll(); }
    void reacquire(unsigned int depth) { lock_.Reacquire(depth); }

private:
    GenApi::CLock lock_;
};

}  // namespace Orlix::DataProcessing::Threading
