// Brings what the camera library has to tell into the log.
#include "orlixcamera/messagesink.h"
#include "orlixdataprocessingcore/utils/log.h"

namespace Orlix::DataProcessing::Utils {
namespace {

void logMessage(const char* message) noexcept {
    try {
        static const CatId category = getCatId("orlix.camera");
        createLogEntry(Severitiy::Warning, category, "%s", message);
    } catch (...) {
        // A sink that throws; the camera's thread can do nothing about it.
    }
}

// Whoever links the core logs through it.
[[maybe_unused]] const MessageSink before = SetMessageSink(&logMessage);

}  // namespace
}  // namespace Orlix::DataProcessing::Utils
