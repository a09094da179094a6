#include "orlixdataprocessingcore/graph/join.h"

#include <algorithm>
#include <limits>
#include <mutex>

#include "orlixdataprocessingcore/core/pinwalk.h"
#include "orlixdataprocessingcore/graph/connection.h"

namespace Orlix::DataProcessing::Core {

namespace {

// Stands for an update of whose skip only the number was kept.
class SkippedUpdate final : public IGraphUpdate {
public:
    explicit SkippedUpdate(std::uint64_t sequenceNumber) : sequenceNumber_(sequenceNumber) {}

    [[nodiscard]] std::uint64_t getSequenceNumber() const noexcept override {
        return sequenceNumber_;
    }
    [[nodiscard]] std::shared_ptr<IGraphUpdate> getParent() const override { return nullptr; }

private:
    const std::uint64_t sequenceNumber_;
};

}  // namespace

void Join::add(Connection& connection) {
    std::lock_guard guard(mutex_);
    const auto position = std::lower_bound(
        connections_.begin(), connections_.end(), &connection,
        [](const Connection* a, const Connection* b) { return a->ends().toPin < b->ends().toPin; });
    connections_.insert(position, &connection);
    countQueues();
}

bool Join::isQueue(const Connection& connection) const noexcept {
    return !connection.keepsLastValue() || anyUpdateDecides_;
}

void Join::countQueues() {
    const auto count = std::count_if(connections_.begin(), connections_.end(),
                                     [](const Connection* c) { return !c->keepsLastValue(); });
    queues_ = static_cast<std::size_t>(count);
    anyUpdateDecides_ = queues_ == 0;
}

// The caller's value ends after the lock has been released: it may be foreign code.
bool Join::arrive(Connection& connection, std::shared_ptr<IGraphUpdate>& update,
                  Utils::Variant& value) {
    std::lock_guard guard(mutex_);
    if (state_ == State::Closed) {
        counters_.dropped += value.isValid() ? 1U : 0U;
        return false;
    }
    connection.delivered += value.isValid() ? 1U : 0U;
    if (!isQueue(connection)) {
        connection.pass(update->getSequenceNumber());
        if (value.isValid()) {
            std::swap(connection.lastValue, value);
        }
        return false;
    }
    // Nobody asks for space before a skip, since it must always get through: in a full queue it
    // takes no place if it can do without.
    const bool isFull = connection.ring.size() >= connection.capacity();
    if (value.isValid() || !isFull || !connection.ring.appendSkip(update->getSequenceNumber())) {
        connection.ring.push(std::move(update), std::move(value));
        connection.publishSize();
    }
    return scheduleIfDecided();
}

bool Join::scheduleIfDecided() {
    if (state_ != State::Idle || decide() == Decision::None) {
        return false;
    }
    state_ = State::Scheduled;
    return true;
}

inline Join::Decision Join::decide() {
    return connections_.size() == 1 ? decideAlone() : decideAmongAll();
}

// Of one queue alone, every head is a complete set.
inline Join::Decision Join::decideAlone() {
    ValueRing& ring = connections_.front()->ring;
    if (ring.empty()) {
        return Decision::None;
    }
    decided_ = ring.front().sequenceNumber;
    return Decision::Complete;
}

// Looks at the oldest update that any queue holds.
Join::Decision Join::decideAmongAll() {
    std::uint64_t oldest = std::numeric_limits<std::uint64_t>::max();
    std::size_t holders = 0;
    std::size_t filled = 0;
    std::uint64_t passed = 0;
    for (Connection* const connection : connections_) {
        if (!isQueue(*connection)) {
            continue;
        }
        if (connection->ring.empty()) {
            passed = std::max(passed, connection->passed);
            continue;
        }
        ++filled;
        const std::uint64_t head = connection->ring.front().sequenceNumber;
        if (head < oldest) {
            oldest = head;
            holders = 0;
        }
        holders += head == oldest ? 1U : 0U;
    }
    decided_ = oldest;
    if (holders != 0 && (holders == queues_ || anyUpdateDecides_)) {
        return Decision::Complete;
    }
    // A queue whose head is a later update has gone past this one.
    const bool isPassed = filled > holders || (holders != 0 && oldest < passed);
    return isPassed ? Decision::Incomplete : Decision::None;
}

Taken Join::take(std::shared_ptr<IGraphUpdate>& update, PinValues& values) {
    Taken taken = Taken::Nothing;
    std::vector<Connection*> roomy;
    std::uint64_t number = 0;
    update.reset();
    {
        std::lock_guard guard(mutex_);
        const Decision decision = state_ == State::Closed ? Decision::None : decide();
        if (decision == Decision::None) {
            hasMore_ = false;
            return Taken::Nothing;
        }
        number = decided_;
        taken = popSet(decision, update, values);
        hasMore_ = decide() != Decision::None;
        if (anyStarved_) {
            roomy = takeRoomy();
        }
    }
    replaced_.clear();
    if (taken == Taken::Skipped) {
        resetAll(values);
        if (!update) {
            update = std::make_shared<SkippedUpdate>(number);
        }
    }
    tellSpace(roomy);
    return taken;
}

// Moves the decided set out of the queues. The lock is held: no value may end here.
Taken Join::popSet(Decision decision, std::shared_ptr<IGraphUpdate>& update, PinValues& values) {
    bool anyValue = false;
    bool missing = decision == Decision::Incomplete;
    WritingWalk walk(values);
    for (Connection* const connection : connections_) {
        Utils::Variant& value = walk.at(connection->ends().toPin);
        value.reset();
        if (isQueue(*connection) && !connection->ring.empty() &&
            connection->ring.front().sequenceNumber == decided_) {
            connection->ring.pop(update, value);
            connection->publishSize();
            if (queues_ != connections_.size()) {
                connection->pass(decided_);
            }
            anyValue = anyValue || value.isValid();
        }
        if (connection->keepsLastValue()) {
            if (value.isValid()) {
                replaced_.push_back(std::exchange(connection->lastValue, std::move(value)));
            }
            value = connection->lastValue;
        }
        missing = missing || (!value.isValid() && connection->isNeeded());
    }
    if (anyValue && !missing) {
        ++counters_.jobs;
        return Taken::Job;
    }
    counters_.dropped += anyValue ? 1U : 0U;
    return Taken::Skipped;
}

Taken Join::drop(std::shared_ptr<IGraphUpdate>& update) {
    PinValues values;
    const Taken taken = take(update, values);
    if (taken == Taken::Job) {
        std::lock_guard guard(mutex_);
        --counters_.jobs;
        ++counters_.dropped;
    }
    return taken == Taken::Nothing ? Taken::Nothing : Taken::Skipped;
}

bool Join::askForSpace(const Connection& connection) {
    std::lock_guard guard(mutex_);
    connection.starved = connection.ring.size() >= connection.capacity();
    anyStarved_ = anyStarved_ || connection.starved;
    return !connection.starved;
}

// The connections whose producers have waited for the space that is there now.
std::vector<Connection*> Join::takeRoomy() {
    std::vector<Connection*> roomy;
    anyStarved_ = false;
    for (Connection* const connection : connections_) {
        if (connection->starved && connection->isRoomy()) {
            connection->starved = false;
            roomy.push_back(connection);
        }
        anyStarved_ = anyStarved_ || connection->starved;
    }
    return roomy;
}

void Join::tellSpace(const std::vector<Connection*>& roomy) {
    for (Connection* const connection : roomy) {
        connection->tellSpace();
    }
}

bool Join::retire() {
    std::lock_guard guard(mutex_);
    if (state_ == State::Closed) {
        return true;
    }
    if (decide() != Decision::None) {
        return false;
    }
    state_ = State::Idle;
    return true;
}

bool Join::block() {
    std::lock_guard guard(mutex_);
    if (state_ == State::Closed) {
        return true;
    }
    if (std::exchange(woken_, false)) {
        return false;
    }
    state_ = State::Blocked;
    return true;
}

bool Join::wake() {
    std::lock_guard guard(mutex_);
    if (state_ == State::Scheduled) {
        woken_ = true;
    }
    if (state_ != State::Blocked) {
        return false;
    }
    state_ = State::Scheduled;
    return true;
}

void Join::open() {
    std::lock_guard guard(mutex_);
    for (Connection* const connection : connections_) {
        connection->ring.reserve(connection->capacity());
        connection->delivered = 0;
        connection->passing = 0;
        connection->passed = 0;
    }
    counters_ = {};
    woken_ = false;
    state_ = State::Idle;
}

void Join::close() {
    std::vector<Utils::Variant> dropped;  // ends after the lock has been released
    std::vector<Connection*> roomy;
    {
        std::lock_guard guard(mutex_);
        for (Connection* const connection : connections_) {
            while (!connection->ring.empty()) {
                WaitingValue waiting = connection->ring.popPlace();
                counters_.dropped += waiting.value.isValid() ? 1U : 0U;
                dropped.push_back(std::move(waiting.value));
            }
            dropped.push_back(std::exchange(connection->lastValue, Utils::Variant()));
            connection->publishSize();
        }
        state_ = State::Closed;
        roomy = takeRoomy();
    }
    tellSpace(roomy);
}

bool Join::setKeepsLastValue(Connection& connection, bool keeps) {
    std::vector<Utils::Variant> replaced;  // ends after the lock has been released
    std::vector<Connection*> roomy;
    bool mustSchedule = false;
    {
        std::lock_guard guard(mutex_);
        connection.setKeepsLastValue(keeps);
        countQueues();
        for (Connection* const each : connections_) {
            while (!isQueue(*each) && !each->ring.empty()) {
                WaitingValue waiting = each->ring.popPlace();
                each->pass(waiting.sequenceNumber);
                if (waiting.run != nullptr) {
                    each->pass(waiting.run->greatest());
                }
                if (waiting.value.isValid()) {
                    replaced.push_back(std::exchange(each->lastValue, std::move(waiting.value)));
                }
            }
            each->passed = each->passing;
            each->publishSize();
        }
        mustSchedule = scheduleIfDecided();
        roomy = takeRoomy();
    }
    tellSpace(roomy);
    return mustSchedule;
}

JoinCounters Join::counters() const {
    std::lock_guard guard(mutex_);
    return counters_;
}

bool Join::isEmpty() const {
    std::lock_guard guard(mutex_);
    return std::all_of(connections_.begin(), connections_.end(),
                       [](const Connection* connection) { return connection->ring.empty(); });
}

std::size_t Join::queued(const Connection& connection) const {
    std::lock_guard guard(mutex_);
    return connection.ring.size();
}

std::uint64_t Join::delivered(const Connection& connection) const {
    std::lock_guard guard(mutex_);
    return connection.delivered;
}

}  // namespace Orlix::DataProcessing::Core
