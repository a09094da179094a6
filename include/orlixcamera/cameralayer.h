// A kind of connection that cameras are reached through, for a host that keeps a list of cameras:
//
//     auto layer = Orlix::CreateCameraLayer(Orlix::CreateEmulatedCameras(2));
//     for (const Orlix::CDeviceInfo& info : layer->EnumerateDevices()) {
//         std::shared_ptr<Orlix::ICameraDevice> device = layer->CreateDevice(info);
//     }
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "orlixcamera/api.h"
#include "orlixcamera/deviceinfo.h"

namespace Orlix {

class ICameraDevice;

namespace Transport {
class ILayer;
}

// Any thread may call. Devices may outlive the layer.
class ORLIXCAMERA_API ICameraLayer {
public:
    virtual ~ICameraLayer();
    ICameraLayer(const ICameraLayer&) = delete;
    ICameraLayer& operator=(const ICameraLayer&) = delete;

    // "DeviceClass" and what else tells the layer from others.
    [[nodiscard]] virtual const CInfoBase& GetInfo() const noexcept = 0;
    // All cameras that answer now, also those in use. May take a second.
    [[nodiscard]] virtual std::vector<CDeviceInfo> EnumerateDevices() = 0;
    // A new object each time, not yet opened; whether the camera is there and free shows when an
    // instant camera opens it. InvalidArgumentException if `info` names no camera of this layer.
    [[nodiscard]] virtual std::shared_ptr<ICameraDevice> CreateDevice(const CDeviceInfo& info) = 0;
    // Called on any thread, with no lock held, when a camera has come or gone; an empty function
    // ends it, though a call that runs on another thread may still end.
    virtual void SetDevicesChanged(std::function<void()> changed) = 0;

protected:
    ICameraLayer();
};

// Throws InvalidArgumentException for a null layer.
[[nodiscard]] ORLIXCAMERA_API std::shared_ptr<ICameraLayer> CreateCameraLayer(
    std::shared_ptr<Transport::ILayer> layer);

}  // namespace Orlix
