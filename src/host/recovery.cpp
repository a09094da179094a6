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

// Between two attempts while no device comes or goes.
constexpr std::chrono::milliseconds firstPause{500};
constexpr std::chrono::milliseconds longestPause{4000};

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
        const bool isTime = watched.triedAt != changes || RunClock::now() >= watched.nextTry;
        if (watched.isLost && isTime && isAnyDeviceFree()) {
            tryAgain(node, changes);
        }
    }
}

void Recovery::tryAgain(std::size_t node, std::uint64_t changes) {
    Watched& watched = watched_[node];
    const std::string& name = graph_.recipe().nodes()[node].name;
    const std::string failure = bringBack(*graph_.nodes()[node]);
    if (failure.empty()) {
        tell(name, "has a device again.");
        watched = Watched();
        return;
    }
    if (failure != watched.failure) {
        tell(name, failure);
    }
    watched.failure = failure;
    watched.pause =
        watched.triedAt != changes ? firstPause : std::min(2 * watched.pause, longestPause);
    watched.triedAt = changes;
    watched.nextTry = RunClock::now() + watched.pause;
}

bool Recovery::isAnyDeviceFree() const {
    const auto devices =
        graph_.pool().getResources(Utils::TypeInfo::getTypeInfo<Core::IDeviceResource>(true));
    return std::any_of(devices.begin(), devices.end(), [](const auto& entry) {
        auto* const device = Utils::object_cast<Core::IDeviceResource>(entry.second.get());
        return device != nullptr && device->isUnused();
    });
}

// A device that it got before it failed is of use to others, and to the next attempt.
std::string Recovery::bringBack(Core::INode& node) {
    std::string failure;
    try {
        node.stop();
        node.freeResources();
        const auto errors = node.allocateResources();
        if (errors.empty()) {
            node.start(arguments_);
            return {};
        }
        failure = "gets no device: " + errors.front()->getDescription().str();
    } catch (...) {
        failure = "can't go on: " + currentMessage();
    }
    try {
        node.freeResources();
    } catch (...) {
        failure += "; it can't be freed: " + currentMessage();
    }
    return failure;
}

}  // namespace Orlix::Host
