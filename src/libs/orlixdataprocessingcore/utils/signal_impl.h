// Bodies of Signal and its connections; included by its header only. Emissions are in
// signalemission_impl.h.
#pragma once

#include <algorithm>
#include <exception>
#include <new>
#include <utility>

#include "gcbase/gcexception.h"
#include "orlixdataprocessingcore/threading/recursiveclock.h"
#include "orlixdataprocessingcore/utils/emissionframe.h"
#include "orlixdataprocessingcore/utils/signal.h"

namespace Orlix::DataProcessing::Utils {

namespace Detail {

// Writes the line of a slot that threw; a null message stands for an unknown exception.
ORLIXDATAPROCESSINGCORE_API void logSlotException(const void* combiner, const char* message);

}  // namespace Detail

template <typename... Args, typename Combiner>
struct Signal<void(Args...), Combiner>::ConnectionList {
    std::vector<std::shared_ptr<Connection>> items;
    // items.size(), for an emission's first look without the lock.
    std::atomic<std::size_t> count{0};
};

template <typename... Args, typename Combiner>
class Signal<void(Args...), Combiner>::Connection final : public IConnection {
public:
    Connection(std::shared_ptr<Threading::IRecursiveLockable> lockable,
               std::shared_ptr<Threading::ConditionVariableAny> changed,
               const std::shared_ptr<ConnectionList>& connections,
               std::function<void(Args...)> slot, const Trackables& trackables);

    void disconnect() override;
    bool isConnected() const override { return connected_ && !connections_.expired(); }
    void setBlocked(bool unblock, bool waitForRunningCalls) override;
    bool isEnabled() const override { return state_ != State::Blocked; }
    bool hasExpiredTrackable() const override;

    // Called with the lock held: whether an emission may take this connection up.
    [[nodiscard]] bool isReady() const { return state_ == State::Ready && connected_; }
    void beginCall() { ++running_; }
    void endCall();
    // With the lock held: a thread stands still with a call of this connection before it.
    void addParked(std::int64_t step) { parked_ += step; }
    // Null if the slot was not called. Lets no exception of a slot out.
    std::unique_ptr<ISlotResult<void>> invoke(Args&... args) const;
    // The signal ends.
    void markDisconnected() { connected_ = false; }

private:
    enum class State : std::int32_t { Ready = 0, BeingBlocked = 1, Blocked = 2 };
    using Locked = Threading::UniqueLock<Threading::IRecursiveLockable>;

    class Parking;

    std::unique_ptr<ISlotResult<void>> invokeUnguarded(Args&... args) const;
    static std::unique_ptr<ISlotResult<void>> makeExceptionResult() noexcept;
    void waitForRunningCalls(Locked& lock);

    std::shared_ptr<Threading::IRecursiveLockable> lockable_;
    std::shared_ptr<Threading::ConditionVariableAny> changed_;
    std::weak_ptr<ConnectionList> connections_;
    const std::function<void(Args...)> slot_;
    const Trackables trackables_;
    // Written under the lock; the emission looks once more without it just before the call.
    std::atomic<State> state_{State::Ready};
    std::atomic<bool> connected_{true};
    std::atomic<std::int64_t> running_{0};
    std::atomic<std::int64_t> waiting_{0};
    std::int64_t parked_ = 0;  // of the running ones; guarded by the lock
};

// While a thread waits, under the lock, the calls that it has taken up and not begun can't get on.
// Others that wait for them would wait for ever if this thread waits for theirs, so they are not
// counted: the thread looks at the state of the connection again before it begins one.
template <typename... Args, typename Combiner>
class Signal<void(Args...), Combiner>::Connection::Parking {
public:
    Parking(const ConnectionList* list, Threading::ConditionVariableAny& changed) : list_(list) {
        Detail::EmissionFrame::park(list_, 1);
        changed.notifyAll();
    }
    ~Parking() { Detail::EmissionFrame::park(list_, -1); }
    Parking(const Parking&) = delete;
    Parking& operator=(const Parking&) = delete;

private:
    const ConnectionList* list_;
};

template <typename... Args, typename Combiner>
Signal<void(Args...), Combiner>::Connection::Connection(
    std::shared_ptr<Threading::IRecursiveLockable> lockable,
    std::shared_ptr<Threading::ConditionVariableAny> changed,
    const std::shared_ptr<ConnectionList>& connections, std::function<void(Args...)> slot,
    const Trackables& trackables)
    : lockable_(std::move(lockable)),
      changed_(std::move(changed)),
      connections_(connections),
      slot_(std::move(slot)),
      trackables_(trackables) {
    if (lockable_ == nullptr) {
        throw GenICam::InvalidArgumentException("No lockable passed.", __FILE__, __LINE__);
    }
    if (changed_ == nullptr) {
        throw GenICam::InvalidArgumentException("No condition variable passed.", __FILE__,
                                                __LINE__);
    }
    if (connections == nullptr) {
        throw GenICam::InvalidArgumentException("No connection list passed.", __FILE__, __LINE__);
    }
    if (!slot_) {
        throw GenICam::InvalidArgumentException("No valid function passed.", __FILE__, __LINE__);
    }
    for (const auto& trackable : trackables_) {
        // An expired reference still differs from one that never referred to anything.
        const std::weak_ptr<const void> null;
        if (!trackable.owner_before(null) && !null.owner_before(trackable)) {
            throw GenICam::BadAllocException("Invalid trackable object passed.", __FILE__,
                                             __LINE__);
        }
    }
}

template <typename... Args, typename Combiner>
void Signal<void(Args...), Combiner>::Connection::disconnect() {
    // Destroyed behind the lock, since a slot can hold the last reference to anything.
    std::shared_ptr<Connection> self;
    const std::shared_ptr<ConnectionList> list = connections_.lock();
    Locked lock(*lockable_);
    connected_ = false;
    if (list == nullptr) {
        return;
    }
    auto& items = list->items;
    const auto isSelf = [this](const auto& item) { return item.get() == this; };
    const auto found = std::find_if(items.begin(), items.end(), isSelf);
    if (found != items.end()) {
        self = std::move(*found);
        items.erase(found);
        list->count = items.size();
    }
}

template <typename... Args, typename Combiner>
void Signal<void(Args...), Combiner>::Connection::setBlocked(bool unblock,
                                                             bool waitForRunningCalls) {
    // Null once the signal and its emissions have ended: then no call is left to wait for.
    const std::shared_ptr<ConnectionList> list = connections_.lock();
    Locked lock(*lockable_);
    if (!unblock && !waitForRunningCalls && state_ != State::Ready) {
        return;
    }
    // Whoever blocks may be waiting for the very call that this thread runs.
    if (state_ == State::BeingBlocked && !Detail::EmissionFrame::isRunning(this)) {
        const Parking parking(list.get(), *changed_);
        while (state_ == State::BeingBlocked) {
            changed_->wait(lock);
        }
    }
    if (unblock) {
        state_ = State::Ready;
        changed_->notifyAll();
        return;
    }
    state_ = State::BeingBlocked;
    if (waitForRunningCalls) {
        const Parking parking(list.get(), *changed_);
        this->waitForRunningCalls(lock);
    }
    // A running slot that unblocks its own connection does not wait for this, and has the last
    // word.
    if (state_ == State::BeingBlocked) {
        state_ = State::Blocked;
    }
    changed_->notifyAll();
}

template <typename... Args, typename Combiner>
void Signal<void(Args...), Combiner>::Connection::waitForRunningCalls(Locked& lock) {
    if (Detail::EmissionFrame::isRunning(this)) {
        return;
    }
    // The parked ones, this thread's own among them, look at the state before they begin.
    ++waiting_;
    while (running_ > parked_) {
        changed_->wait(lock);
    }
    --waiting_;
}

template <typename... Args, typename Combiner>
bool Signal<void(Args...), Combiner>::Connection::hasExpiredTrackable() const {
    const auto isExpired = [](const auto& trackable) { return trackable.expired(); };
    return std::any_of(trackables_.begin(), trackables_.end(), isExpired);
}

template <typename... Args, typename Combiner>
void Signal<void(Args...), Combiner>::Connection::endCall() {
    --running_;
    // Either the waiter sees the new count or this sees the waiter. The lock makes sure that the
    // waiter is really waiting when the notification comes.
    if (waiting_ != 0) {
        Locked lock(*lockable_);
        changed_->notifyAll();
    }
}

template <typename... Args, typename Combiner>
std::unique_ptr<ISlotResult<void>> Signal<void(Args...), Combiner>::Connection::invokeUnguarded(
    Args&... args) const {
    std::vector<std::shared_ptr<const void>> alive;
    alive.reserve(trackables_.size());
    for (const auto& trackable : trackables_) {
        alive.push_back(trackable.lock());
        if (alive.back() == nullptr) {
            return nullptr;
        }
    }
    slot_(args...);
    std::unique_ptr<ISlotResult<void>> result(new (std::nothrow) ValueResult<void>());
    if (result == nullptr) {
        throw GenICam::BadAllocException("Could not allocate slot result.", __FILE__, __LINE__);
    }
    return result;
}

template <typename... Args, typename Combiner>
std::unique_ptr<ISlotResult<void>>
Signal<void(Args...), Combiner>::Connection::makeExceptionResult() noexcept {
    // Without memory for it the result is lost, but the log line is written.
    return std::unique_ptr<ISlotResult<void>>(new (std::nothrow)
                                                  ExceptionResult<void>(getCurrentException()));
}

template <typename... Args, typename Combiner>
std::unique_ptr<ISlotResult<void>> Signal<void(Args...), Combiner>::Connection::invoke(
    Args&... args) const {
    if (!isReady()) {
        return nullptr;
    }
    try {
        return invokeUnguarded(args...);
    } catch (const GenICam::GenericException& exception) {
        Detail::logSlotException(this, exception.GetDescription());
        return makeExceptionResult();
    } catch (const std::exception& exception) {
        Detail::logSlotException(this, exception.what());
        return makeExceptionResult();
    } catch (...) {
        Detail::logSlotException(this, nullptr);
        return makeExceptionResult();
    }
}

template <typename... Args, typename Combiner>
Signal<void(Args...), Combiner>::Signal() : Signal(std::make_shared<Threading::RecursiveCLock>()) {}

template <typename... Args, typename Combiner>
Signal<void(Args...), Combiner>::Signal(std::shared_ptr<Threading::IRecursiveLockable> lockable)
    : lockable_(std::move(lockable)),
      changed_(std::make_shared<Threading::ConditionVariableAny>()),
      connections_(std::make_shared<ConnectionList>()) {
    if (lockable_ == nullptr) {
        throw GenICam::InvalidArgumentException("No lockable passed.", __FILE__, __LINE__);
    }
}

template <typename... Args, typename Combiner>
Signal<void(Args...), Combiner>::~Signal() {
    // Destroyed behind the lock, since a slot can hold the last reference to anything.
    Connections ended;
    Threading::UniqueLock<Threading::IRecursiveLockable> lock(*lockable_);
    ended.swap(connections_->items);
    connections_->count = 0;
    for (const auto& connection : ended) {
        connection->markDisconnected();
    }
}

template <typename... Args, typename Combiner>
std::shared_ptr<IConnection> Signal<void(Args...), Combiner>::connect(
    std::function<void(Args...)> slot, const Trackables& trackables) {
    try {
        auto connection = std::make_shared<Connection>(lockable_, changed_, connections_,
                                                       std::move(slot), trackables);
        Threading::UniqueLock<Threading::IRecursiveLockable> lock(*lockable_);
        connections_->items.push_back(connection);
        connections_->count = connections_->items.size();
        return connection;
    } catch (const std::bad_alloc&) {
        throw GenICam::BadAllocException("Could not allocate connection.", __FILE__, __LINE__);
    }
}

template <typename... Args, typename Combiner>
std::size_t Signal<void(Args...), Combiner>::size() const {
    Threading::UniqueLock<Threading::IRecursiveLockable> lock(*lockable_);
    return connections_->items.size();
}

}  // namespace Orlix::DataProcessing::Utils
