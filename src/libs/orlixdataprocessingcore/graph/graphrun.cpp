// How a graph runs: resources, start, stop, statistics.
#include <algorithm>
#include <exception>

#include "gcbase/gcexception.h"
#include "orlixdataprocessingcore/core/nodebase.h"
#include "orlixdataprocessingcore/core/nodedriver.h"
#include "orlixdataprocessingcore/core/nodelog.h"
#include "orlixdataprocessingcore/graph/graph_impl.h"

namespace Orlix::DataProcessing::Core {

namespace {

gcstring placeOf(const gcstring& node, const gcstring& pin) {
    return gcstring(node.str() + "." + pin.str());
}

GraphNodes reversed(GraphNodes nodes) {
    std::reverse(nodes.begin(), nodes.end());
    return nodes;
}

}  // namespace

AllocationFailure Graph::Impl::allocateResources() {
    checkStopped("Allocating resources");
    for (const auto& node : reversed(sortSourcesFirst(nodes(), connections()))) {
        allocated_.push_back(node);
        AllocationFailure failure{node->name(), node->node().allocateResources()};
        if (!failure.errors.empty()) {
            guarded(this, "freeing resources after a failed allocation", [&] { freeResources(); });
            return failure;
        }
    }
    return {};
}

void Graph::Impl::freeResources() {
    checkStopped("Freeing resources");
    failedNode_ = {};
    std::exception_ptr failure;
    while (!allocated_.empty()) {
        const auto node = std::move(allocated_.back());
        allocated_.pop_back();
        try {
            node->node().freeResources();
        } catch (...) {
            keepFirst(failure, *node);
        }
    }
    if (failure) {
        std::rethrow_exception(failure);
    }
}

void Graph::Impl::start(const NodeArgumentCollection& arguments) {
    checkStopped("A second start");
    renewAttachments();
    validate();
    openJoins();
    running_ = true;
    try {
        for (const auto& node : reversed(sortSourcesFirst(nodes(), connections()))) {
            node->node().start(arguments);
        }
    } catch (...) {
        const std::exception_ptr failure = std::current_exception();
        guarded(this, "stopping a graph after a failed start", [&] { stop(StopMode::Drop); });
        std::rethrow_exception(failure);
    }
}

void Graph::Impl::openJoins() {
    setUnlimited(false);
    std::lock_guard guard(listMutex_);
    for (Member& member : members_) {
        member.failedBefore = member.node->failedJobs();
        member.node->join.open();
    }
}

void Graph::Impl::stop(StopMode mode) {
    if (!running_) {
        return;
    }
    failedNode_ = {};
    std::exception_ptr failure;
    const GraphNodes sorted = sortSourcesFirst(nodes(), connections());
    GraphNodes sources;
    GraphNodes consumers;
    for (const auto& node : sorted) {
        (node->isSource() ? sources : consumers).push_back(node);
    }
    stopNodes(sources, failure);
    if (mode == StopMode::Drain) {
        drain();
    }
    closeJoins();
    activity_->waitUntilIdle();
    stopNodes(consumers, failure);
    running_ = false;
    if (failure) {
        std::rethrow_exception(failure);
    }
}

void Graph::Impl::stopNodes(const GraphNodes& nodes, std::exception_ptr& failure) {
    for (const auto& node : nodes) {
        try {
            node->node().stop();
        } catch (...) {
            keepFirst(failure, *node);
        }
    }
}

// In a handler.
void Graph::Impl::keepFirst(std::exception_ptr& failure, const GraphNode& node) {
    if (!failure) {
        failure = std::current_exception();
        failedNode_ = node.name();
    }
}

// No source adds anything any more, so what is under way is bounded; without limits on the way
// nobody can be held up by a sink that its owner has stopped to empty.
void Graph::Impl::drain() {
    setUnlimited(true);
    for (const auto& node : nodes()) {
        node->wake();
    }
    activity_->waitUntilIdle();
}

void Graph::Impl::closeJoins() {
    for (const auto& node : nodes()) {
        node->join.close();
    }
}

void Graph::Impl::setUnlimited(bool unlimited) {
    for (const auto& connection : connections()) {
        connection->setUnlimited(unlimited);
    }
    for (const Reader& reader : readers_) {
        reader.sink->setUnlimited(unlimited);
    }
}

bool Graph::Impl::isIdle() const {
    const auto isAtWork = [](const std::shared_ptr<GraphNode>& node) {
        const auto* const base = dynamic_cast<const NodeBase*>(&node->node());
        return !node->join.isEmpty() || (base != nullptr && NodeDriver::hasSourceJobs(*base));
    };
    const GraphNodes all = nodes();
    return activity_->isIdle() && std::none_of(all.begin(), all.end(), isAtWork) &&
           activity_->isIdle();
}

GraphStatistics Graph::Impl::statistics() const {
    GraphStatistics result;
    std::lock_guard guard(listMutex_);
    for (const Member& member : members_) {
        const JoinCounters counters = member.node->join.counters();
        result.executedJobs += counters.jobs;
        result.droppedJobs += counters.dropped;
        result.failedJobs += member.node->failedJobs() - member.failedBefore;
    }
    for (const Link& link : links_) {
        const ConnectionEnds& ends = link.connection->ends();
        const Join& join = link.connection->to()->join;
        result.connections.push_back({placeOf(ends.fromNode, ends.fromPin),
                                      placeOf(ends.toNode, ends.toPin),
                                      join.delivered(*link.connection),
                                      join.queued(*link.connection), link.connection->capacity()});
    }
    return result;
}

}  // namespace Orlix::DataProcessing::Core
