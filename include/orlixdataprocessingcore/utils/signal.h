// The observer mechanism. An owner holds a Signal and calls it; others connect slots through its
// ISignal. Slots run on the emitting thread, in the order of their connection and with no lock of
// the signal held, so a slot may connect, disconnect, or destroy the signal. A slot that throws is
// logged, and the others still run. All operations are safe from any thread; an emission without
// a connection costs one atomic read.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "orlixdataprocessingcore/api.h"
#include "orlixdataprocessingcore/threading/conditionvariable.h"
#include "orlixdataprocessingcore/threading/lockable.h"
#include "orlixdataprocessingcore/utils/slotresult.h"

namespace Orlix::DataProcessing::Utils {

// Objects whose life bounds a connection: once one has expired, the slot isn't called any more.
// They are kept alive during each call.
using Trackables = std::vector<std::weak_ptr<const void>>;

// One slot's connection. Letting go of the pointer doesn't end it. The order of the virtual
// operations is part of the interface.
class ORLIXDATAPROCESSINGCORE_API IConnection {
public:
    virtual ~IConnection();

    // No new call starts after this; one in progress on another thread may still run.
    virtual void disconnect() = 0;
    // Until disconnect or the end of the signal.
    [[nodiscard]] virtual bool isConnected() const = 0;
    // With `unblock` true, calls are let through again. Otherwise they are held off, and with
    // `waitForRunningCalls` true this first waits for the running calls of other threads, but for
    // those that a thread will come to which itself waits in here: it looks at the connection again
    // before it begins the call. Then none is running on another thread when this returns, unless a
    // running slot unblocked its own connection meanwhile. Within a call of the slot itself nothing
    // is waited for, since two of them could wait for each other. The caller must hold no lock that
    // a slot takes, save the signal's own, which is given up for the wait, and two running slots
    // must not wait for each other. With both false, a connection not ready stays as it is.
    virtual void setBlocked(bool unblock, bool waitForRunningCalls) = 0;
    // False while calls are held off.
    [[nodiscard]] virtual bool isEnabled() const = 0;
    [[nodiscard]] virtual bool hasExpiredTrackable() const = 0;

protected:
    IConnection() = default;
    IConnection(const IConnection&) = delete;
    IConnection& operator=(const IConnection&) = delete;
};

template <typename Signature>
class ISignal;

// The side of a signal that observers see. The order of the virtual operations is part of the
// interface.
template <typename... Args>
class ISignal<void(Args...)> {
public:
    // Throws InvalidArgumentException for an empty function.
    virtual std::shared_ptr<IConnection> connect(std::function<void(Args...)> slot,
                                                 const Trackables& trackables = Trackables()) = 0;
    virtual ~ISignal() = default;
    [[nodiscard]] virtual bool empty() const = 0;
    [[nodiscard]] virtual std::size_t size() const = 0;

protected:
    ISignal() = default;
    ISignal(const ISignal&) = delete;
    ISignal& operator=(const ISignal&) = delete;
};

// What becomes of the results of an emission: nothing.
struct VoidCombiner {
    using Results = std::vector<std::unique_ptr<ISlotResult<void>>>;
    void operator()(const Results&) const noexcept {}
};

template <typename Signature, typename Combiner = VoidCombiner>
class Signal;

// Must not be destroyed while another thread calls it or connects; its connections end with it.
template <typename... Args, typename Combiner>
class Signal<void(Args...), Combiner> final : public ISignal<void(Args...)> {
public:
    class Connection;
    struct ConnectionList;

    // With a lock of its own.
    Signal();
    // With the owner's lock. Throws InvalidArgumentException for a null pointer.
    explicit Signal(std::shared_ptr<Threading::IRecursiveLockable> lockable);
    ~Signal() override;

    std::shared_ptr<IConnection> connect(std::function<void(Args...)> slot,
                                         const Trackables& trackables = Trackables()) override;
    bool empty() const override { return size() == 0; }
    std::size_t size() const override;

    // Calls the slots that are connected and not blocked, as they stand when the call starts; one
    // connected later waits for the next call. From that moment a call counts as running, so that
    // setBlocked waits for it. A connection that is blocked or disconnected before its turn comes
    // is passed over all the same: a blocked connection receives no call.
    void operator()(Args... args) const;

private:
    class Emission;
    using Connections = std::vector<std::shared_ptr<Connection>>;

    // All that an emission needs, so that a slot may destroy the signal.
    static void emit(std::shared_ptr<Threading::IRecursiveLockable> lockable,
                     std::shared_ptr<ConnectionList> connections, Args&... args);
    // The connections to call, each counted as running from here on.
    static Connections getReady(ConnectionList& list, Threading::IRecursiveLockable& lockable,
                                bool& hasExpired);
    static void removeExpired(ConnectionList& list, Threading::IRecursiveLockable& lockable);

    std::shared_ptr<Threading::IRecursiveLockable> lockable_;
    std::shared_ptr<Threading::ConditionVariableAny> changed_;
    std::shared_ptr<ConnectionList> connections_;
};

// Ends its connection when it is destroyed or given another one. Belongs to one thread at a time.
class ORLIXDATAPROCESSINGCORE_API ScopedConnection {
public:
    ScopedConnection() noexcept = default;
    ScopedConnection(std::shared_ptr<IConnection> connection, bool waitForRunningCalls);
    ScopedConnection(ScopedConnection&& other) noexcept;
    ScopedConnection& operator=(ScopedConnection&& other) noexcept;
    ~ScopedConnection();

    // Ends the present connection and holds the given one, which may be null. With true, its end
    // waits for calls that run on other threads, as IConnection::setBlocked does.
    void set(std::shared_ptr<IConnection> connection, bool waitForRunningCalls);
    void reset() noexcept;
    [[nodiscard]] const std::shared_ptr<IConnection>& get() const noexcept { return connection_; }

private:
    std::shared_ptr<IConnection> connection_;
    bool waitForRunningCalls_ = false;
};

}  // namespace Orlix::DataProcessing::Utils

#include "orlixdataprocessingcore/utils/signal_impl.h"
#include "orlixdataprocessingcore/utils/signalemission_impl.h"
