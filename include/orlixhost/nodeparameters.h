// From a node to its own parameters.
#pragma once

#include "orlixhost/api.h"

namespace GenApi {
class INodeMap;
}

namespace Orlix::DataProcessing::Core {
class INode;
}

namespace Orlix::Host {

// The map that the node publishes as "@vCell"; it lives as long as the node. Throws
// RuntimeException if there is none. Any thread may call.
[[nodiscard]] ORLIXHOST_API GenApi::INodeMap& vcellMapOf(DataProcessing::Core::INode& node);

}  // namespace Orlix::Host
