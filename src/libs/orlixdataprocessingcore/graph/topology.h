// What the shape of a graph says: in which order its nodes start and stop, and which inputs can
// meet.
#pragma once

#include <memory>
#include <vector>

#include "orlixdataprocessingcore/graph/connection.h"
#include "orlixdataprocessingcore/graph/graphnode.h"

namespace Orlix::DataProcessing::Core {

using GraphNodes = std::vector<std::shared_ptr<GraphNode>>;
using Connections = std::vector<std::shared_ptr<Connection>>;

// Every node before those that it feeds; otherwise in the given order.
[[nodiscard]] GraphNodes sortSourcesFirst(const GraphNodes& nodes, const Connections& connections);

// Whether values of `from` reach `to`. A node reaches itself.
[[nodiscard]] bool reaches(const GraphNode& from, const GraphNode& to,
                           const Connections& connections);

// Throws RuntimeException that names the node for inputs that wait for each other and can never
// have a value of the same update.
void checkJoins(const GraphNodes& nodes, const Connections& connections);

}  // namespace Orlix::DataProcessing::Core
