// Log lines of the node bases and the graph, and the guard around calls that must not fail.
#pragma once

#include <cstdint>
#include <exception>

#include "gcbase/gcexception.h"
#include "orlixdataprocessingcore/utils/log.h"

namespace Orlix::DataProcessing::Core {

// "orlix.dataprocessing.core.Node"
[[nodiscard]] std::uint64_t nodeLogCategory();

void logCaught(const void* object, const char* doing, const char* message);
void logUnknownCaught(const void* object, const char* doing);

// Runs the call; an exception of any class ends in a warning.
template <typename Call>
void guarded(const void* object, const char* doing, const Call& call) noexcept {
    try {
        call();
    } catch (const GenICam::GenericException& exception) {
        logCaught(object, doing, exception.GetDescription());
    } catch (const std::exception& exception) {
        logCaught(object, doing, exception.what());
    } catch (...) {
        logUnknownCaught(object, doing);
    }
}

}  // namespace Orlix::DataProcessing::Core
