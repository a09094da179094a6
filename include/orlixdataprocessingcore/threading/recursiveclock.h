// The lock of a node, in the form that a node map takes too, so that one lock covers both. Nodes
// hold it by std::shared_ptr; it must outlive the node map that uses it.
#pragma once

#include "genapi/synch.h"
#include "orlixdataprocessingcore/api.h"
#include "orlixdataprocessingcore/threading/lockable.h"

namespace Orlix::DataProcessing::Threading {

class ORLIXDATAPROCESSINGCORE_API RecursiveCLock : public IRecursiveLockable {
public:
    RecursiveCLock();
    ~RecursiveCLock() override;
    RecursiveCLock(const RecursiveCLock&) = delete;
    RecursiveCLock& operator=(const RecursiveCLock&) = delete;

    void lock() override;
    bool tryLock() override;
    void unlock() override;
    unsigned int releaseAll() override;
    void reacquire(unsigned int depth) override;

    // The same lock, for GenApi.
    [[nodiscard]] GenApi::CLock& getLock() noexcept { return lock_; }

private:
    GenApi::CLock lock_;
};

}  // namespace Orlix::DataProcessing::Threading
