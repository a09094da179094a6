#include "orlixdataprocessingcore/threading/recursiveclock.h"

namespace Orlix::DataProcessing::Threading {

RecursiveCLock::RecursiveCLock() = default;
RecursiveCLock::~RecursiveCLock() = default;

void RecursiveCLock::lock() {
    lock_.Lock();
}
bool RecursiveCLock::tryLock() {
    return lock_.TryLock();
}
void RecursiveCLock::unlock() {
    lock_.Unlock();
}
unsigned int RecursiveCLock::releaseAll() {
    return lock_.ReleaseAll();
}
void RecursiveCLock::reacquire(unsigned int depth) {
    lock_.Reacquire(depth);
}

}  // namespace Orlix::DataProcessing::Threading
