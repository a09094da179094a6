// The errors that hold for a node now: those that it has set itself, and that of its last job.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>

#include "orlixdataprocessingcore/core/inode.h"
#include "orlixdataprocessingcore/core/lazysignal.h"

namespace Orlix::DataProcessing::Core {

// Owned by the node; safe from any thread. The signal fires with no lock of this class held.
class NodeErrors {
public:
    // Both tell whether the set has changed; a null pointer changes nothing.
    bool set(const std::shared_ptr<IError>& error);
    bool reset(const std::shared_ptr<IError>& error);

    // The error of the last job replaces that of an earlier one; null when it went well.
    void setJobError(const std::shared_ptr<IError>& error);
    void clearJobError() {
        if (hasJobError_.load(std::memory_order_acquire)) {
            setJobError(nullptr);
        }
    }

    [[nodiscard]] bool any() const;
    [[nodiscard]] ErrorSet all() const;
    [[nodiscard]] std::shared_ptr<ErrorSignal> changedSignal() const { return changed_.get(); }

private:
    [[nodiscard]] bool contains(const std::shared_ptr<IError>& error) const;

    mutable std::mutex mutex_;
    ErrorSet errors_;
    std::shared_ptr<IError> jobError_;
    std::atomic<bool> hasJobError_{false};  // spares good jobs the lock
    LazySignal<void(const ErrorSet&, const ErrorSet&)> changed_;
};

}  // namespace Orlix::DataProcessing::Core
