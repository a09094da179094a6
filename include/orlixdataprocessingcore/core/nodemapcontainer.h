// A node's published parameter maps.
#pragma once

#include <memory>
#include <vector>

#include "gcbase/gcstring.h"
#include "orlixdataprocessingcore/api.h"
#include "orlixdataprocessingcore/utils/iobject.h"
#include "orlixdataprocessingcore/utils/signal.h"

namespace GenApi {
class INodeMap;
}

namespace Orlix::DataProcessing::Core {

// Names one published map. The map belongs to the node: "@vCell" lives as long as the node, maps of
// a device until the node says in its signal that the list has changed.
class ORLIXDATAPROCESSINGCORE_API NodeMapInfo {
public:
    NodeMapInfo(const GenICam::gcstring& identifier, const GenICam::gcstring& displayName);
    NodeMapInfo(const GenICam::gcstring& identifier, const GenICam::gcstring& displayName,
                GenApi::INodeMap* nodeMap);

    [[nodiscard]] const GenICam::gcstring& GetIdentifier() const noexcept { return identifier_; }
    [[nodiscard]] const GenICam::gcstring& GetDisplayName() const noexcept { return displayName_; }
    [[nodiscard]] GenApi::INodeMap* GetNodeMap() const noexcept { return nodeMap_; }

private:
    GenICam::gcstring identifier_;
    GenICam::gcstring displayName_;
    GenApi::INodeMap* nodeMap_ = nullptr;
};

class ORLIXDATAPROCESSINGCORE_API INodeMapContainer : public Utils::IObject {
public:
    // A copy, made under the node's lock.
    [[nodiscard]] virtual std::vector<NodeMapInfo> getNodeMapInfos() = 0;
    // Fired, with no lock held, after the list has changed.
    [[nodiscard]] virtual std::shared_ptr<Utils::ISignal<void()>> getNodeMapsChangedSignal() = 0;
};

}  // namespace Orlix::DataProcessing::Core
