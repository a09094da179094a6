// Where the inputs of one node meet: holds values back until a set of the same update is complete,
// and decides what becomes of sets that never will be.
//
// Every connection brings each update of its sources once, with a value or with word that there is
// none, and in the same order. So the heads of the queues decide: if all belong to one update, the
// set is complete; if one connection has gone past an update that another still holds, that update
// can never be complete and is dropped. Nothing waits for ever.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "orlixdataprocessingcore/core/inode.h"
#include "orlixdataprocessingcore/threading/spinlock.h"

namespace Orlix::DataProcessing::Core {

class Connection;

enum class Taken {
    Job,      // update and values of the next job
    Skipped,  // this update will not come to a job
    Nothing,  // no set is decided yet
};

struct JoinCounters {
    std::uint64_t jobs = 0;
    std::uint64_t dropped = 0;
};

// Safe from any thread, under a leaf lock. It also knows whether its node is scheduled, since that
// has to change together with the queues.
class Join {
public:
    // While the graph is built.
    void add(Connection& connection);

    // True if the node has to be scheduled now. Takes update and value over; what it doesn't keep
    // stays where it is. In a full queue, of a skip it may keep no more than the number.
    [[nodiscard]] bool arrive(Connection& connection, std::shared_ptr<IGraphUpdate>& update,
                              Utils::Variant& value);

    // Whether a producer may put a value into the connection. If not, it will be told of space.
    [[nodiscard]] bool askForSpace(const Connection& connection);

    // By the worker that serves the node. hasMore tells whether a further set is decided already.
    [[nodiscard]] bool hasMore() const noexcept { return hasMore_; }
    [[nodiscard]] Taken take(std::shared_ptr<IGraphUpdate>& update, PinValues& values);
    // The same for a set that the node can't take: never a job.
    [[nodiscard]] Taken drop(std::shared_ptr<IGraphUpdate>& update);
    // True if nothing is left to do; the next arrival then schedules the node anew.
    [[nodiscard]] bool retire();
    // True if the node now waits for wake(); false if wake() has come in between.
    [[nodiscard]] bool block();
    // True if the node has to be scheduled now.
    [[nodiscard]] bool wake();

    // Begins a run with empty queues.
    void open();
    // What waits is dropped and counted, and so is what still arrives.
    void close();
    // True if the node has to be scheduled now.
    [[nodiscard]] bool setKeepsLastValue(Connection& connection, bool keeps);

    [[nodiscard]] JoinCounters counters() const;
    [[nodiscard]] bool isEmpty() const;
    [[nodiscard]] std::size_t queued(const Connection& connection) const;
    [[nodiscard]] std::uint64_t delivered(const Connection& connection) const;

private:
    enum class State { Idle, Scheduled, Blocked, Closed };
    enum class Decision { None, Complete, Incomplete };

    [[nodiscard]] bool isQueue(const Connection& connection) const noexcept;
    void countQueues();
    [[nodiscard]] bool scheduleIfDecided();
    [[nodiscard]] Decision decide();
    [[nodiscard]] Decision decideAlone();
    [[nodiscard]] Decision decideAmongAll();
    [[nodiscard]] Taken popSet(Decision decision, std::shared_ptr<IGraphUpdate>& update,
                               PinValues& values);
    [[nodiscard]] std::vector<Connection*> takeRoomy();
    static void tellSpace(const std::vector<Connection*>& roomy);

    mutable Threading::SpinLock mutex_;
    std::vector<Connection*> connections_;  // by ascending name of the pin
    std::size_t queues_ = 0;                // connections that hold a job back
    bool anyUpdateDecides_ = false;         // all inputs keep their last value
    bool anyStarved_ = false;               // a connection has refused somebody
    std::uint64_t decided_ = 0;             // the update that decide() has found
    State state_ = State::Closed;
    bool woken_ = false;
    // Of the worker that serves the node.
    bool hasMore_ = false;
    std::vector<Utils::Variant> replaced_;  // last values that are to end behind the lock
    JoinCounters counters_;
};

}  // namespace Orlix::DataProcessing::Core
