// The inside of a graph: its nodes and connections, and the run that they are in.
#pragma once

#include <atomic>
#include <exception>
#include <memory>
#include <mutex>
#include <vector>

#include "orlixdataprocessingcore/graph/connection.h"
#include "orlixdataprocessingcore/graph/graph.h"
#include "orlixdataprocessingcore/graph/graphnode.h"
#include "orlixdataprocessingcore/graph/graphsink.h"
#include "orlixdataprocessingcore/graph/topology.h"
#include "orlixdataprocessingcore/threading/activity.h"

namespace Orlix::DataProcessing::Core {

// One thread builds and drives it; the lists are locked for the sake of statistics() alone.
class Graph::Impl {
public:
    explicit Impl(const GraphOptions& options);
    ~Impl();

    // Building
    void addNode(const gcstring& name, const std::shared_ptr<INode>& node);
    [[nodiscard]] const std::shared_ptr<GraphNode>& find(const gcstring& name) const;
    void connect(const ConnectionEnds& ends);
    void attachSink(const gcstring& node, const gcstring& pin,
                    const std::shared_ptr<IOutputSink>& sink);
    void detachSink(const std::shared_ptr<IOutputSink>& sink);
    void validate() const;

    // Running
    [[nodiscard]] AllocationFailure allocateResources();
    void freeResources();
    void start(const NodeArgumentCollection& arguments);
    void stop(StopMode mode);
    [[nodiscard]] const gcstring& failedNode() const { return failedNode_; }
    [[nodiscard]] bool isRunning() const { return running_; }
    [[nodiscard]] bool isIdle() const;
    [[nodiscard]] GraphStatistics statistics() const;

private:
    struct Link {
        std::shared_ptr<Connection> connection;
        std::shared_ptr<IHandle> output;
        std::shared_ptr<IHandle> input;
    };
    struct Reader {
        std::shared_ptr<GraphNode> node;
        gcstring pin;
        std::shared_ptr<GraphSink> sink;
        std::shared_ptr<IHandle> output;
    };
    struct Member {
        std::shared_ptr<GraphNode> node;
        std::vector<Utils::ScopedConnection> slots;  // of what the node tells
        std::uint64_t failedBefore = 0;
    };

    void checkStopped(const char* what) const;
    void observe(Member& member);
    void checkInputs(const GraphNode& node) const;
    [[nodiscard]] bool isConnected(const GraphNode& node, const gcstring& input) const;
    void renewAttachments();
    void renewLink(Link& link);
    void refreshAutoReset(GraphNode& node, const gcstring& pin);
    [[nodiscard]] ConnectionLimits limitsOf(const OutputDescriptor& output,
                                            const InputDescriptor& input) const;
    void refreshPins(GraphNode& node);
    void refreshLimits(Connection& connection) const;
    [[nodiscard]] std::shared_ptr<SinkWaker> wakerOf(
        const std::shared_ptr<IOutputSink>& sink) const;

    void openJoins();
    void closeJoins();
    void setUnlimited(bool unlimited);
    void keepFirst(std::exception_ptr& failure, const GraphNode& node);
    void stopNodes(const GraphNodes& nodes, std::exception_ptr& failure);
    void drain();

    [[nodiscard]] GraphNodes nodes() const;
    [[nodiscard]] Connections connections() const;

    const std::size_t capacity_;
    const std::shared_ptr<Threading::Activity> activity_ = std::make_shared<Threading::Activity>();
    mutable std::mutex listMutex_;
    std::vector<Member> members_;
    std::vector<Link> links_;
    std::vector<Reader> readers_;
    GraphNodes allocated_;
    gcstring failedNode_;
    std::atomic<bool> running_{false};
};

}  // namespace Orlix::DataProcessing::Core
