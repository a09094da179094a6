#include "nodedata.h"

namespace Plugin::OrlixVCellPackageBase {

void NodeData::publishParameters(const gcstring& displayName) {
    NodeLock guard(*lock);
    nodeMaps.emplace_back("@vCell", displayName, adapter.getNodeMap());
}

std::vector<Orlix::DataProcessing::Core::NodeMapInfo> NodeData::getNodeMapInfos() const {
    NodeLock guard(*lock);
    return nodeMaps;
}

gcstring NodeData::describeParameters() {
    NodeLock guard(*lock);
    gcstring description;
    adapter.generateDescription(description, "", "");
    return description;
}

}  // namespace Plugin::OrlixVCellPackageBase
