// The way to one camera, for an instant camera to be attached to. Who creates the object owns it.
#pragma once

#include <memory>

#include "orlixcamera/api.h"
#include "orlixcamera/deviceinfo.h"

namespace Orlix {

namespace Transport {
class IDevice;
}

// Any thread may call. An instant camera keeps what it needs of the device, so this object may go
// while results, node maps or the camera itself are still in use.
class ORLIXCAMERA_API ICameraDevice {
public:
    virtual ~ICameraDevice();
    ICameraDevice(const ICameraDevice&) = delete;
    ICameraDevice& operator=(const ICameraDevice&) = delete;

    // As it was when the device was created.
    [[nodiscard]] virtual const CDeviceInfo& GetDeviceInfo() const noexcept = 0;
    // For the library.
    [[nodiscard]] virtual const std::shared_ptr<Transport::IDevice>& GetTransportDevice()
        const noexcept = 0;

protected:
    ICameraDevice();
};

// Throws InvalidArgumentException for a null device.
[[nodiscard]] ORLIXCAMERA_API std::shared_ptr<ICameraDevice> CreateCameraDevice(
    std::shared_ptr<Transport::IDevice> device);

}  // namespace Orlix
