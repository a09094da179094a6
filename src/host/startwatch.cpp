#include "host/startwatch.h"

namespace Orlix::Host {

using DataProcessing::Core::INode;
using DataProcessing::Core::NodeState;

StartWatch::StartWatch(const std::vector<std::shared_ptr<INode>>& nodes) {
    for (const auto& node : nodes) {
        const auto progress = std::make_shared<Progress>();
        const auto noteState = [progress, weakNode = std::weak_ptr<INode>(node)] {
            const auto source = weakNode.lock();
            progress->hasBegun = true;
            if (source != nullptr && source->getState() == NodeState::Running) {
                progress->hasRun = true;
            }
        };
        progress_.push_back(progress);
        connections_.push_back(node->getStateChangedSignal()->connect(noteState));
    }
}

StartWatch::~StartWatch() {
    for (const auto& connection : connections_) {
        connection->disconnect();
    }
}

std::size_t StartWatch::failedNode() const {
    std::size_t index = 0;
    while (index < progress_.size() && (!progress_[index]->hasBegun || progress_[index]->hasRun)) {
        ++index;
    }
    return index;
}

}  // namespace Orlix::Host
