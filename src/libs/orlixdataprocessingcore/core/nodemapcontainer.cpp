#include "orlixdataprocessingcore/core/nodemapcontainer.h"

namespace Orlix::DataProcessing::Core {

NodeMapInfo::NodeMapInfo(const GenICam::gcstring& identifier, const GenICam::gcstring& displayName)
    : NodeMapInfo(identifier, displayName, nullptr) {}

NodeMapInfo::NodeMapInfo(const GenICam::gcstring& identifier, const GenICam::gcstring& displayName,
                         GenApi::INodeMap* nodeMap)
    : identifier_(identifier), displayName_(displayName), nodeMap_(nodeMap) {}

}  // namespace Orlix::DataProcessing::Core
