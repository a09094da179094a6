// Log lines of the node bases and the graph, and the guard around calls that must not fail.
#pragma once

#include <cstdint>

#include "orlixdataprocessingcore/utils/failure.h"

namespace Orlix::DataProcessing::Core {

// "orlix.dataprocessing.core.Node"
[[nodiscard]] std::uint64_t nodeLogCategory();

// Runs the call; an exception of any class ends in a warning.
template <typename Call>
void guarded(const void* object, const char* doing, const Call& call) noexcept {
    try {
        call();
    } catch (...) {
        Utils::logCaught({"Node", object, nodeLogCategory()}, doing);
    }
}

}  // namespace Orlix::DataProcessing::Core
