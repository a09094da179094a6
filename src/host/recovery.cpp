#include "host/recovery.h"

#include <algorithm>
#include <string>
#include <utility>

#include "host/message.h"
#include "orlixdataprocessingcore/core/errors.h"
#include "orlixdataprocessingcore/core/inode.h"
#include "orlixdataprocessingcore/core/resourcepool.h"
#include "orlixdataprocessingcore/utils/log.h"

namespace Orlix::Host {
namespace {

namespace Core = DataProcessing::Core;
namespace Utils = DataProcessing::Utils;

Utils::CatId getCatIdRecovery() {
    static const Utils::CatId id = Utils::getCatId("orlix.host.Recovery");
    return id;
}

void tell(const std::string& node, const std::string& message) {
    Utils::createLogEntry(Utils::Severitiy::Warning, getCatIdRecovery(), "Host: Node \"%s\" %s",
                          node.c_str(), message.c_str());
}

bool hasLostItsDevice(Core::INode& node) {
    const auto errors = node.getErrors();
    return std::any_of(errors.begin(), errors.end(), [](const auto& error) {
        return dynamic_cast<const Core::DeviceError*>(error.get()) != nullptr;
    });
}

}  // namespace

Recovery::Recovery(RecipeGraph& graph, Core::NodeArgumentCollection arguments)
    : graph_(graph),
      arguments_(std::move(arguments)),
      watched_(graph.nodes().size()),
      connection_(graph.pool().getResourcesChangedSignal()->connect([this] { ++changes_; }), true) {
}

void Recovery::step() {
    for (std::size_t node = 0; node < watched_.size(); ++node) {
        Watched& watched = watched_[node];
        watched.isLost = watched.isLost || hasLostItsDevice(*graph_.nodes()[node]);
        const std::uint64_t changes = changes_;
        if (!watched.isLost || watched.triedAt == changes || !isAnyDeviceFree()) {
            continue;
        }
        watched.triedAt = changes;
        watched.isLost = !bringBack(node);
    }
}

bool Recovery::isAnyDeviceFree() const {
    const auto devices =
        graph_.pool().getResources(Utils::TypeInfo::getTypeInfo<Core::IDeviceResource>(true));
    return std::any_of(devices.begin(), devices.end(), [](const auto& entry) {
        auto* const device = Utils::object_cast<Core::IDeviceResource>(entry.second.get());
        return device != nullptr && device->isUnused();
    });
}

// Frees before it allocates, since a failed attempt may have left something.
bool Recovery::bringBack(std::size_t index) {
    Core::INode& node = *graph_.nodes()[index];
    const std::string& name = graph_.recipe().nodes()[index].name;
    try {
        node.stop();
        node.freeResources();
        const auto errors = node.allocateResources();
        if (errors.empty()) {
            node.start(arguments_);
            tell(name, "has a device again.");
            return true;
        }
        tell(name, "gets no device: " + errors.front()->getDescription().str());
        node.freeResources();
    } catch (...) {
        tell(name, "can't go on: " + currentMessage());
    }
    return false;
}

}  // namespace Orlix::Host
