// How a signal calls its slots; included by its header only. The connections themselves are in
// signal_impl.h.
#pragma once

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <utility>

#include "orlixdataprocessingcore/utils/emissionframe.h"
#include "orlixdataprocessingcore/utils/signal_impl.h"

namespace Orlix::DataProcessing::Utils {

template <typename... Args, typename Combiner>
class Signal<void(Args...), Combiner>::Emission final : public Detail::EmissionFrame {
public:
    Emission(Connections ready, const ConnectionList* list)
        : ready_(std::move(ready)), list_(list) {}
    // Calls that are left over, after an exception, count as ended.
    ~Emission() {
        while (!isDone()) {
            endCall();
        }
    }

    [[nodiscard]] bool isDone() const { return next_ == ready_.size(); }
    // Null if the slot was not called.
    std::unique_ptr<ISlotResult<void>> callNext(Args&... args) {
        isRunning_ = true;
        auto result = ready_[next_]->invoke(args...);
        isRunning_ = false;
        endCall();
        return result;
    }

private:
    void endCall() {
        // The thread's own count first, then the common one.
        const std::size_t ended = next_++;
        ready_[ended]->endCall();
    }
    void parkHere(const void* list, std::int64_t step) const override {
        if (list == list_) {
            for (std::size_t i = next_ + (isRunning_ ? 1 : 0); i < ready_.size(); ++i) {
                ready_[i]->addParked(step);
            }
        }
    }
    bool isRunningHere(const void* connection) const override {
        return isRunning_ && ready_[next_].get() == connection;
    }

    const Connections ready_;
    const ConnectionList* const list_;
    std::size_t next_ = 0;
    bool isRunning_ = false;
};

template <typename... Args, typename Combiner>
void Signal<void(Args...), Combiner>::operator()(Args... args) const {
    if (connections_->count.load(std::memory_order_acquire) != 0) {
        // A slot may destroy this object, so nothing of it is used from here on.
        emit(lockable_, connections_, args...);
    }
}

template <typename... Args, typename Combiner>
void Signal<void(Args...), Combiner>::emit(std::shared_ptr<Threading::IRecursiveLockable> lockable,
                                           std::shared_ptr<ConnectionList> connections,
                                           Args&... args) {
    bool hasExpired = false;
    typename Combiner::Results results;
    // Memory that isn't there is missed before the first slot runs, and not between two.
    results.reserve(connections->count);
    Emission emission(getReady(*connections, *lockable, hasExpired), connections.get());
    while (!emission.isDone()) {
        auto result = emission.callNext(args...);
        if (result != nullptr) {
            results.push_back(std::move(result));
        } else {
            hasExpired = true;
        }
    }
    if (hasExpired) {
        removeExpired(*connections, *lockable);
    }
    Combiner()(results);
}

template <typename... Args, typename Combiner>
typename Signal<void(Args...), Combiner>::Connections Signal<void(Args...), Combiner>::getReady(
    ConnectionList& list, Threading::IRecursiveLockable& lockable, bool& hasExpired) {
    Connections ready;
    Threading::UniqueLock<Threading::IRecursiveLockable> lock(lockable);
    ready.reserve(list.items.size());
    for (const auto& connection : list.items) {
        if (connection->hasExpiredTrackable()) {
            hasExpired = true;
        } else if (connection->isReady()) {
            connection->beginCall();
            ready.push_back(connection);
        }
    }
    return ready;
}

template <typename... Args, typename Combiner>
void Signal<void(Args...), Combiner>::removeExpired(ConnectionList& list,
                                                    Threading::IRecursiveLockable& lockable) {
    Connections expired;
    Threading::UniqueLock<Threading::IRecursiveLockable> lock(lockable);
    const auto isLive = [](const auto& item) { return !item->hasExpiredTrackable(); };
    const auto firstExpired = std::stable_partition(list.items.begin(), list.items.end(), isLive);
    expired.assign(std::make_move_iterator(firstExpired),
                   std::make_move_iterator(list.items.end()));
    list.items.erase(firstExpired, list.items.end());
    list.count = list.items.size();
}

}  // namespace Orlix::DataProcessing::Utils
