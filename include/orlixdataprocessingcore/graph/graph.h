// Nodes and their connections, driven as one: joins values by update, bounds every connection,
// runs nodes in parallel on shared worker threads, stops in order.
//
// A node runs when all its connected inputs have a value of the same update, in the order of
// updates and one job at a time. Different nodes run at the same time. A source is held back while
// a connection behind it is full. No value is copied on the way.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "orlixdataprocessingcore/api.h"
#include "orlixdataprocessingcore/core/inode.h"

namespace Orlix::DataProcessing::Core {

struct GraphOptions {
    // Values that may wait on one connection; a pin's own limit can only lower it.
    std::size_t connectionCapacity = 16;
};

enum class StopMode {
    Drain,  // values that are under way still reach their ends
    Drop,   // values that wait are dropped and counted
};

struct ConnectionStatistics {
    gcstring from;  // "Node.Pin"
    gcstring to;
    std::uint64_t delivered = 0;
    std::size_t queued = 0;
    std::size_t capacity = 0;
};

struct GraphStatistics {
    std::uint64_t executedJobs = 0;
    std::uint64_t failedJobs = 0;
    // Sets of inputs that could not be completed because a pin was left out, and values that were
    // dropped at a stop.
    std::uint64_t droppedJobs = 0;
    std::vector<ConnectionStatistics> connections;
};

// Why resources could not be allocated; without errors they were.
struct AllocationFailure {
    gcstring node;
    std::vector<std::shared_ptr<IError>> errors;
};

// Thread rule: one thread builds and drives a graph; statistics() is safe from any thread. The
// nodes are called with no lock of the graph held. The destructor stops the graph and frees its
// nodes' resources.
class ORLIXDATAPROCESSINGCORE_API Graph {
public:
    explicit Graph(const GraphOptions& options = {});
    ~Graph();
    Graph(const Graph&) = delete;
    Graph& operator=(const Graph&) = delete;

    // Throws InvalidArgumentException for a name that exists or is empty.
    void addNode(const gcstring& name, const std::shared_ptr<INode>& node);
    [[nodiscard]] std::shared_ptr<INode> getNode(const gcstring& name) const;

    // Throws InvalidArgumentException that names the place: unknown node or pin, types that do not
    // fit, an input that is taken, a cycle.
    void connect(const gcstring& fromNode, const gcstring& fromPin, const gcstring& toNode,
                 const gcstring& toPin);
    // Reads a pin from outside; the sink is attached while the graph lives, or until it is
    // detached.
    void attachSink(const gcstring& node, const gcstring& pin,
                    const std::shared_ptr<IOutputSink>& sink);
    // Takes a sink from all pins that it reads, if there are any. Throws RuntimeException while the
    // graph runs, as all that changes its connections does.
    void detachSink(const std::shared_ptr<IOutputSink>& sink);

    // Throws RuntimeException for inputs that have to be connected and are not, and for joins whose
    // inputs can never share an update.
    void validate() const;

    // Consumers first; the first failure undoes what was done and is reported.
    [[nodiscard]] AllocationFailure allocateResources();
    void freeResources();
    // Validates first. Consumers start before sources; a failed start stops what has started and
    // rethrows.
    void start(const NodeArgumentCollection& arguments);
    // Sources stop first. Always ends: a sink that is full holds nothing back any more. Not from
    // within a job or a sink, whose end it waits for. Rethrows the first exception of a node's stop
    // when all nodes have stopped.
    void stop(StopMode mode);
    // The node whose exception the last stop() or freeResources() has thrown; empty if none has.
    [[nodiscard]] const gcstring& failedNode() const;
    [[nodiscard]] bool isRunning() const;
    // False while a value is waiting or a node is at work anywhere.
    [[nodiscard]] bool isIdle() const;

    [[nodiscard]] GraphStatistics statistics() const;

private:
    class Impl;
    std::shared_ptr<Impl> impl_;
};

}  // namespace Orlix::DataProcessing::Core
