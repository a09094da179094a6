// The way of values from one output to one input: a sink of the producing node, a queue of the
// consuming one.
#pragma once

#include <algorithm>
#include <atomic>
#include <memory>
#include <mutex>

#include "orlixdataprocessingcore/core/inode.h"
#include "orlixdataprocessingcore/core/outputsink.h"
#include "orlixdataprocessingcore/graph/valuering.h"

namespace Orlix::DataProcessing::Core {

class GraphNode;

// What the pins at both ends ask of a connection.
struct ConnectionLimits {
    bool needed = true;        // the consumer can't run without a value here
    std::size_t capacity = 1;  // values that may wait
};

// Both ends of the way, as the names that a user knows.
struct ConnectionEnds {
    gcstring fromNode;
    gcstring fromPin;
    gcstring toNode;
    gcstring toPin;
};

// Shared by the graph and the producing node. The queue is guarded by the join of the consumer,
// which the connection keeps alive, because a delivery may come in while the graph goes away.
class Connection final : public IOutputSink {
public:
    Connection(ConnectionEnds ends, std::shared_ptr<GraphNode> from, std::shared_ptr<GraphNode> to,
               const ConnectionLimits& limits);

    void put(const std::shared_ptr<IGraphUpdate>& update, const Utils::Variant& value) override;
    void putLast(std::shared_ptr<IGraphUpdate>&& update, Utils::Variant&& value) override;
    void skip(const std::shared_ptr<IGraphUpdate>& update) override;
    [[nodiscard]] bool hasSpace() const override;
    void setSpaceListener(const std::weak_ptr<ISpaceListener>& listener) override;

    [[nodiscard]] const ConnectionEnds& ends() const noexcept { return ends_; }
    [[nodiscard]] const GraphNode* from() const noexcept { return from_.get(); }
    [[nodiscard]] const GraphNode* to() const noexcept { return to_.get(); }
    [[nodiscard]] bool isNeeded() const noexcept { return needed_; }
    [[nodiscard]] std::size_t capacity() const noexcept { return capacity_; }
    // The pins may be made anew at any time. A value that waits stays, whatever the new capacity.
    void setLimits(const ConnectionLimits& limits) noexcept {
        needed_ = limits.needed;
        capacity_ = limits.capacity;
    }

    // With no limit every value is welcome, so that a run can be brought to its end.
    void setUnlimited(bool unlimited) noexcept { unlimited_ = unlimited; }

    // Whether the input keeps its last value and takes no part in the join.
    [[nodiscard]] bool keepsLastValue() const noexcept { return keepsLastValue_; }
    void setKeepsLastValue(bool keeps) noexcept { keepsLastValue_ = keeps; }

    // For the join, under its lock.
    ValueRing ring;
    Utils::Variant lastValue;     // of an input that keeps it
    std::uint64_t delivered = 0;  // values since the start of the run
    // Behind the last update that was taken here while inputs of the node kept their last value,
    // now and at the last switch of an input: from that on, those before it aren't waited for.
    std::uint64_t passing = 0;
    std::uint64_t passed = 0;
    void pass(std::uint64_t number) noexcept { passing = std::max(passing, number + 1); }
    mutable bool starved = false;  // somebody has been refused
    void publishSize() noexcept { size_.store(ring.size(), std::memory_order_release); }
    // A producer that was held back goes on when half the places are free, in a long queue when a
    // last few values are left: waking it for every single value would cost more than the value.
    [[nodiscard]] bool isRoomy() const noexcept {
        return ring.size() <= std::min<std::size_t>(capacity_ / 2, lastFew);
    }

    // Tells the producer of space, with no lock held.
    void tellSpace();

private:
    // The consumer has enough to do with these until a producer is awake.
    static constexpr std::size_t lastFew = 32;

    const ConnectionEnds ends_;
    const std::shared_ptr<GraphNode> from_;
    const std::shared_ptr<GraphNode> to_;
    std::atomic<bool> needed_;
    std::atomic<std::size_t> capacity_;
    std::atomic<std::size_t> size_{0};  // of the ring, for those who don't hold the lock
    std::atomic<bool> unlimited_{false};
    std::atomic<bool> keepsLastValue_{false};
    std::mutex listenerMutex_;
    std::weak_ptr<ISpaceListener> listener_;
};

}  // namespace Orlix::DataProcessing::Core
