#include "aravis/openfailure.h"

#include "gcbase/gcexception.h"

namespace Orlix::Aravis {

void ThrowUnreachable(const Found& camera, const std::string& why) {
    const std::string text = "Device '" + camera.label + "' can't be reached" + why + ".";
    throw GenICam::RuntimeException(text.c_str(), __FILE__, __LINE__);
}

// The codes of libusb stand in the text only.
void ThrowNotOpened(const Found& camera, const std::string& why) {
    const auto isFor = [&](const char* reason) { return why.find(reason) != std::string::npos; };
    if (isFor("LIBUSB_ERROR_BUSY")) {
        const std::string text =
            "Device '" + camera.label + "' is in use by another program (USB).";
        throw GenICam::AccessException(text.c_str(), __FILE__, __LINE__);
    }
    const bool isForbidden = isFor("LIBUSB_ERROR_ACCESS");
    ThrowUnreachable(camera, ": " + why + (isForbidden ? " (no right to its USB port)" : ""));
}

}  // namespace Orlix::Aravis
