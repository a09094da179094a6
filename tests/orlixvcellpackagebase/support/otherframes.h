// Frames that don't come from the node's own camera, and what an image tells of its error.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "orlixcamera/cameradevice.h"
#include "orlixcamera/grabresultptr.h"
#include "orlixcamera/instantcamera.h"
#include "orlixcamera/instantcamera/scripteddevice.h"
#include "orlixdataprocessingcore/core/errors.h"
#include "orlixdataprocessingcore/core/image.h"
#include "orlixdataprocessingcore/utils/variant.h"

namespace Plugin::OrlixVCellPackageBase {

inline std::string errorOf(const Orlix::DataProcessing::Utils::Variant& value) {
    const auto error = value.get<Orlix::DataProcessing::Core::Image>(true)->getError(false);
    return error == nullptr ? "none"
                            : error->getName().str() + ": " + error->getDescription().str();
}

// Frames of a camera that is not the node's.
class OtherCamera {
public:
    OtherCamera() { camera_.StartGrabbing(); }
    Orlix::CGrabResultPtr grab(const CameraTest::Frame& frame) {
        EXPECT_TRUE(device_->Send(frame));
        Orlix::CGrabResultPtr result;
        EXPECT_TRUE(camera_.RetrieveResult(30000, result));
        return result;
    }

private:
    const std::shared_ptr<CameraTest::ScriptedDevice> device_ =
        std::make_shared<CameraTest::ScriptedDevice>();
    const std::shared_ptr<Orlix::ICameraDevice> attached_ = Orlix::CreateCameraDevice(device_);
    Orlix::CInstantCamera camera_{attached_.get()};
};

}  // namespace Plugin::OrlixVCellPackageBase
