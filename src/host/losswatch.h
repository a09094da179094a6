// Tells which node has lost its device: the node's own line names neither itself nor the camera.
#pragma once

#include <string>
#include <vector>

#include "orlixdataprocessingcore/utils/signal.h"

namespace Orlix::Host {

class RecipeGraph;

// Writes a line of the log for each loss while it lives; the graph must live longer. The slots only
// log, since they run on any thread and under any lock.
class LossWatch {
public:
    explicit LossWatch(const RecipeGraph& graph);

private:
    std::vector<DataProcessing::Utils::ScopedConnection> connections_;
};

}  // namespace Orlix::Host
