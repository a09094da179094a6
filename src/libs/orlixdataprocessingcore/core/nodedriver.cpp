#include "orlixdataprocessingcore/core/nodedriver.h"

#include "orlixdataprocessingcore/core/nodebase_impl.h"

namespace Orlix::DataProcessing::Core {

NodeDriver::Reservation::Reservation(NodeBase* node)
    : node_(node != nullptr && node->impl().reserve() ? node : nullptr) {}

NodeDriver::Reservation::~Reservation() {
    if (node_ != nullptr) {
        node_->impl().endReservation();
    }
}

void NodeDriver::skip(NodeBase& node, const std::shared_ptr<IGraphUpdate>& update) {
    node.impl().skip(update);
}

std::uint64_t NodeDriver::failedJobs(const NodeBase& node) {
    return node.impl().failedJobs();
}

bool NodeDriver::hasSourceJobs(const NodeBase& node) {
    return node.impl().hasSourceJobs();
}

}  // namespace Orlix::DataProcessing::Core
