#include "orlixdataprocessingcore/core/nodelog.h"

namespace Orlix::DataProcessing::Core {

std::uint64_t nodeLogCategory() {
    static const std::uint64_t category = Utils::getCatId("orlix.dataprocessing.core.Node");
    return category;
}

using Utils::Severitiy;

void logCaught(const void* object, const char* doing, const char* message) {
    Utils::createLogEntry(Severitiy::Warning, nodeLogCategory(),
                          "Node %p: Exception caught while %s. Message: %s", object, doing,
                          message);
}

void logUnknownCaught(const void* object, const char* doing) {
    Utils::createLogEntry(Severitiy::Warning, nodeLogCategory(),
                          "Node %p: Unknown exception caught while %s.", object, doing);
}

}  // namespace Orlix::DataProcessing::Core
