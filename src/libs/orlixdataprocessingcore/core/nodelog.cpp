#include "orlixdataprocessingcore/core/nodelog.h"

namespace Orlix::DataProcessing::Core {

std::uint64_t nodeLogCategory() {
    static const std::uint64_t category = Utils::getCatId("orlix.dataprocessing.core.Node");
    return category;
}

}  // namespace Orlix::DataProcessing::Core
