// What ImageLoading and ImageFormatConverter have beside their own data, and short names that all
// nodes of the package use. Camera, whose list of maps changes, keeps its own.
#pragma once

#include <memory>
#include <vector>

#include "anythingtonodemapadapter/adapter.h"
#include "anythingtonodemapadapter/parameterport.h"
#include "gcbase/gcstring.h"
#include "orlixdataprocessingcore/core/nodemapcontainer.h"
#include "orlixdataprocessingcore/threading/recursiveclock.h"
#include "orlixdataprocessingcore/threading/uniquelock.h"
#include "orlixdataprocessingcore/utils/signal.h"

namespace Plugin::OrlixVCellPackageBase {

using GenICam::gcstring;

using NodeLock =
    Orlix::DataProcessing::Threading::UniqueLock<Orlix::DataProcessing::Threading::RecursiveCLock>;
template <typename Interface>
using PortPointer = std::shared_ptr<AnythingToNodeMapAdapter::BasicDataParameterPort<Interface>>;
using NodeMapsSignal =
    Orlix::DataProcessing::Utils::Signal<void(), Orlix::DataProcessing::Utils::VoidCombiner>;

// The base of a node's private data. The pointers never change; the rest is guarded by the lock,
// which is the node's and its map's in one. The members take it themselves.
struct NodeData {
    std::shared_ptr<Orlix::DataProcessing::Threading::RecursiveCLock> lock =
        std::make_shared<Orlix::DataProcessing::Threading::RecursiveCLock>();
    std::vector<Orlix::DataProcessing::Core::NodeMapInfo> nodeMaps;
    std::shared_ptr<NodeMapsSignal> nodeMapsChanged = std::make_shared<NodeMapsSignal>(lock);
    // Behind the lock, which its map uses to the end.
    AnythingToNodeMapAdapter::CAnythingToNodeMapAdapter adapter;

    // Puts the map of the parameters on the list, as "@vCell".
    void publishParameters(const gcstring& displayName);
    [[nodiscard]] std::vector<Orlix::DataProcessing::Core::NodeMapInfo> getNodeMapInfos() const;
    // The description that the adapter generates, for looking at.
    [[nodiscard]] gcstring describeParameters();
};

}  // namespace Plugin::OrlixVCellPackageBase
