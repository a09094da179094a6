#include "orlixcamera/cameradevice.h"

#include <utility>

#include "gcbase/gcexception.h"
#include "orlixcamera/transport/transport.h"

namespace Orlix {
namespace {

class CameraDevice final : public ICameraDevice {
public:
    explicit CameraDevice(std::shared_ptr<Transport::IDevice> device)
        : device_(std::move(device)) {}

    [[nodiscard]] const CDeviceInfo& GetDeviceInfo() const noexcept override {
        return device_->GetInfo();
    }
    [[nodiscard]] const std::shared_ptr<Transport::IDevice>& GetTransportDevice()
        const noexcept override {
        return device_;
    }

private:
    const std::shared_ptr<Transport::IDevice> device_;
};

}  // namespace

ICameraDevice::ICameraDevice() = default;
ICameraDevice::~ICameraDevice() = default;

std::shared_ptr<ICameraDevice> CreateCameraDevice(std::shared_ptr<Transport::IDevice> device) {
    if (device == nullptr) {
        throw GenICam::InvalidArgumentException(
            "A camera device needs a device of a transport layer, but a null pointer was passed.",
            __FILE__, __LINE__);
    }
    return std::make_shared<CameraDevice>(std::move(device));
}

}  // namespace Orlix
