#include "host/startwatch.h"

namespace Orlix::Host {

using DataProcessing::Core::INode;
using DataProcessing::Core::NodeState;

StartWatch::StartWatch(const std::vector<std::shared_ptr<INode>>& nodes) {
    for (const auto& node : nodes) {
        const auto progress = std::make_shared<Progress>();
        // Not a strong pointer: a slot that held the last one would free the node from inside the
        // emission.
        const auto noteState = [progress, source = node.get()] {
            progress->hasBegun = true;
            if (source->getState() == NodeState::Running) {
                progress->hasRun = true;
            }
        };
        progress_.push_back(progress);
        connections_.emplace_back(node->getStateChangedSignal()->connect(noteState), true);
    }
}

// Waits for slots that run on other threads: the nodes may go when this has returned.
StartWatch::~StartWatch() = default;

std::size_t StartWatch::failedNode() const {
    std::size_t index = 0;
    while (index < progress_.size() && (!progress_[index]->hasBegun || progress_[index]->hasRun)) {
        ++index;
    }
    return index;
}

}  // namespace Orlix::Host
