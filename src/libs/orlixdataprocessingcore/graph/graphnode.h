// A node in its graph: the join of its inputs, and its turns on the worker threads.
#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <vector>

#include "orlixdataprocessingcore/core/inode.h"
#include "orlixdataprocessingcore/graph/join.h"
#include "orlixdataprocessingcore/threading/activity.h"
#include "orlixdataprocessingcore/threading/scheduler.h"

namespace Orlix::DataProcessing::Core {

class NodeBase;

// Shared by the graph and the connections that lead to it. At most one worker serves it at a time,
// and no lock is held while it calls its node.
class GraphNode final : public Threading::IReadyItem,
                        public std::enable_shared_from_this<GraphNode> {
public:
    GraphNode(const gcstring& name, const std::shared_ptr<INode>& node,
              const std::shared_ptr<Threading::Activity>& activity);

    [[nodiscard]] const gcstring& name() const noexcept { return name_; }
    [[nodiscard]] INode& node() const noexcept { return *node_; }
    [[nodiscard]] const std::shared_ptr<INode>& sharedNode() const noexcept { return node_; }
    // Whether values can come to it at all; while the graph is built.
    [[nodiscard]] bool isSource() const noexcept { return isSource_; }
    void connectInput(Connection& connection);
    void connectOutput(const std::shared_ptr<IOutputSink>& sink) { outputs_.push_back(sink); }
    void disconnectOutput(const std::shared_ptr<IOutputSink>& sink);
    // Since the node was made.
    [[nodiscard]] std::uint64_t failedJobs() const;

    // From a connection, on the thread that has produced the value. Takes update and value over;
    // what it doesn't keep stays where it is.
    void arrive(Connection& connection, std::shared_ptr<IGraphUpdate>& update,
                Utils::Variant& value);
    // The node may be able to execute now.
    void wake();
    void setKeepsLastValue(Connection& connection, bool keeps);

    [[nodiscard]] Turn serve() noexcept override;
    [[nodiscard]] Weight weight() const noexcept override { return weight_; }
    [[nodiscard]] Threading::Activity* activity() const noexcept override {
        return activity_.get();
    }

    Join join;

private:
    enum class Step { Progress, Busy };

    void schedule(const GraphNode* producer);
    void weigh(std::chrono::steady_clock::duration job);
    [[nodiscard]] Step stepUpTo(unsigned int longest, unsigned int& done);
    [[nodiscard]] Step step();
    [[nodiscard]] StartExecutionResult callNode();
    [[nodiscard]] bool takeJob(std::shared_ptr<IGraphUpdate>& update, PinValues& values);
    void passSkip();
    void dropSet();

    const gcstring name_;
    const std::shared_ptr<INode> node_;
    NodeBase* const base_;  // the same node, if it is built on our base
    const std::shared_ptr<Threading::Activity> activity_;
    const JobProvider provider_;
    std::vector<std::weak_ptr<IOutputSink>> outputs_;
    bool isSource_ = true;

    // Of the worker that serves the node.
    std::shared_ptr<IGraphUpdate> skipped_;
    bool asked_ = false;
    unsigned int turns_ = 0;
    Weight weight_ = Weight::Long;  // until a measurement says otherwise
};

}  // namespace Orlix::DataProcessing::Core
