#include "orlixdataprocessingcore/graph/graph.h"

#include "orlixdataprocessingcore/graph/graph_impl.h"

namespace Orlix::DataProcessing::Core {

Graph::Graph(const GraphOptions& options) : impl_(std::make_shared<Impl>(options)) {}

Graph::~Graph() = default;

void Graph::addNode(const gcstring& name, const std::shared_ptr<INode>& node) {
    impl_->addNode(name, node);
}

std::shared_ptr<INode> Graph::getNode(const gcstring& name) const {
    return impl_->find(name)->sharedNode();
}

void Graph::connect(const gcstring& fromNode, const gcstring& fromPin, const gcstring& toNode,
                    const gcstring& toPin) {
    impl_->connect({fromNode, fromPin, toNode, toPin});
}

void Graph::attachSink(const gcstring& node, const gcstring& pin,
                       const std::shared_ptr<IOutputSink>& sink) {
    impl_->attachSink(node, pin, sink);
}

void Graph::detachSink(const std::shared_ptr<IOutputSink>& sink) {
    impl_->detachSink(sink);
}

void Graph::validate() const {
    impl_->validate();
}

AllocationFailure Graph::allocateResources() {
    return impl_->allocateResources();
}

void Graph::freeResources() {
    impl_->freeResources();
}

void Graph::start(const NodeArgumentCollection& arguments) {
    impl_->start(arguments);
}

void Graph::stop(StopMode mode) {
    impl_->stop(mode);
}

const gcstring& Graph::failedNode() const {
    return impl_->failedNode();
}

bool Graph::isRunning() const {
    return impl_->isRunning();
}

bool Graph::isIdle() const {
    return impl_->isIdle();
}

GraphStatistics Graph::statistics() const {
    return impl_->statistics();
}

}  // namespace Orlix::DataProcessing::Core
