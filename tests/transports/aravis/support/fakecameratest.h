// Tests with Aravis' own network camera, a program that knows no chunks, events or resends.
#pragma once

#include <string>

#include "aravis/support/cameratest.h"

namespace Orlix::Aravis::Testing {

inline constexpr const char* fakeCameraProgram = "arv-fake-gv-camera-0.8";

class FakeCameraTest : public CameraTest {
protected:
    void SetUp() override {
        ORLIX_REQUIRE_NETWORK();
        if (!isInstalled(fakeCameraProgram)) {
            GTEST_SKIP() << "the program " << fakeCameraProgram
                         << " is not installed (Debian package aravis-tools)";
        }
    }

    // Returns when the camera answers.
    [[nodiscard]] static Process StartCamera(const std::string& address,
                                             const std::string& serialNumber) {
        Process camera({fakeCameraProgram, "-i", address, "-s", serialNumber});
        WaitForAnswer(address);
        return camera;
    }
};

}  // namespace Orlix::Aravis::Testing
