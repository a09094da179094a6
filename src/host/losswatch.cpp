#include "host/losswatch.h"

#include "orlixdataprocessingcore/core/errors.h"
#include "orlixdataprocessingcore/core/inode.h"
#include "orlixdataprocessingcore/utils/log.h"
#include "orlixhost/recipegraph.h"

namespace Orlix::Host {
namespace {

namespace Core = DataProcessing::Core;
namespace Utils = DataProcessing::Utils;

Utils::CatId getCatIdLossWatch() {
    static const Utils::CatId id = Utils::getCatId("orlix.host.LossWatch");
    return id;
}

void tellLosses(const std::string& node, const Core::ErrorSet& before, const Core::ErrorSet& now) {
    for (const auto& error : now) {
        const bool isLoss = dynamic_cast<const Core::DeviceError*>(error.get()) != nullptr;
        if (isLoss && before.count(error) == 0) {
            Utils::createLogEntry(Utils::Severitiy::Error, getCatIdLossWatch(),
                                  "Host: Node \"%s\": %s", node.c_str(),
                                  error->getDescription().c_str());
        }
    }
}

}  // namespace

LossWatch::LossWatch(const RecipeGraph& graph) {
    for (std::size_t i = 0; i < graph.nodes().size(); ++i) {
        const std::string& name = graph.recipe().nodes()[i].name;
        connections_.emplace_back(
            graph.nodes()[i]->getErrorChangedSignal()->connect(
                [name](const Core::ErrorSet& before, const Core::ErrorSet& now) {
                    tellLosses(name, before, now);
                }),
            true);
    }
}

}  // namespace Orlix::Host
