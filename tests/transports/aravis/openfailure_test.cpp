#include "aravis/openfailure.h"

#include <gtest/gtest.h>

#include "gcbase/gcexception.h"

namespace Orlix::Aravis {
namespace {

template <typename Exception>
std::string TextOf(const std::string& why) {
    Found camera;
    camera.label = "One (1)";
    try {
        ThrowNotOpened(camera, why);
    } catch (const Exception& error) {
        return error.GetDescription();
    }
}

TEST(OpenFailure, UsbCameraOfAnotherProgramIsInUse) {
    EXPECT_EQ(TextOf<GenICam::AccessException>(
                  "Failed to claim USB interface to 'One-1': LIBUSB_ERROR_BUSY"),
              "Device 'One (1)' is in use by another program (USB).");
}

TEST(OpenFailure, WantOfARightIsTold) {
    EXPECT_EQ(TextOf<GenICam::RuntimeException>("Failed to open USB device: LIBUSB_ERROR_ACCESS"),
              "Device 'One (1)' can't be reached: Failed to open USB device: LIBUSB_ERROR_ACCESS "
              "(no right to its USB port).");
}

TEST(OpenFailure, OtherReasonsAreThoseOfAravis) {
    EXPECT_EQ(TextOf<GenICam::RuntimeException>("device not found"),
              "Device 'One (1)' can't be reached: device not found.");
}

}  // namespace
}  // namespace Orlix::Aravis
