#include "orlixhost/nodeparameters.h"

#include "host/message.h"
#include "orlixdataprocessingcore/core/inode.h"
#include "orlixdataprocessingcore/core/nodemapcontainer.h"

namespace Orlix::Host {

GenApi::INodeMap& vcellMapOf(DataProcessing::Core::INode& node) {
    auto* container = dynamic_cast<DataProcessing::Core::INodeMapContainer*>(&node);
    if (container != nullptr) {
        for (const auto& info : container->getNodeMapInfos()) {
            if (info.GetIdentifier() == "@vCell" && info.GetNodeMap() != nullptr) {
                return *info.GetNodeMap();
            }
        }
    }
    fail("the node publishes no parameters");
}

}  // namespace Orlix::Host
