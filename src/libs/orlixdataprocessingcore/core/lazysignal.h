// A signal that comes into being when somebody asks for it. Until then an emission costs one load,
// which matters for the signals of every job.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>

#include "orlixdataprocessingcore/utils/signal.h"

namespace Orlix::DataProcessing::Core {

// Lives in the object that emits it; all operations are safe from any thread. The signal has a lock
// of its own, so an emission never takes the lock of a node.
template <typename Signature>
class LazySignal {
public:
    using Interface = Utils::ISignal<Signature>;
    using Implementation = Utils::Signal<Signature, Utils::VoidCombiner>;

    [[nodiscard]] std::shared_ptr<Interface> get() const {
        std::lock_guard guard(mutex_);
        if (!signal_) {
            signal_ = std::make_shared<Implementation>();
            handedOut_.store(signal_.get(), std::memory_order_release);
        }
        return signal_;
    }

    // Whether a slot may be connected.
    [[nodiscard]] bool isUsed() const noexcept {
        return handedOut_.load(std::memory_order_acquire) != nullptr;
    }

    template <typename... Arguments>
    void emit(const Arguments&... arguments) const {
        if (Implementation* signal = handedOut_.load(std::memory_order_acquire)) {
            (*signal)(arguments...);
        }
    }

private:
    mutable std::mutex mutex_;
    mutable std::shared_ptr<Implementation> signal_;
    mutable std::atomic<Implementation*> handedOut_{nullptr};
};

}  // namespace Orlix::DataProcessing::Core
