// The layer of the emulated cameras. It has a fixed number of them, which can be unplugged and
// plugged again.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "orlixcamera/emulated/camera.h"
#include "orlixcamera/transport/transport.h"

namespace Orlix::Emulated {

class ORLIXCAMERA_API Layer final : public Transport::ILayer {
public:
    explicit Layer(std::size_t cameraCount);
    ~Layer() override;

    [[nodiscard]] const CInfoBase& GetInfo() const noexcept override { return info_; }
    [[nodiscard]] std::vector<CDeviceInfo> Enumerate() override;
    // The camera of that full name; without one, the first that has all properties of `info`, and
    // one that is unplugged only if no other has.
    [[nodiscard]] std::shared_ptr<Transport::IDevice> CreateDevice(
        const CDeviceInfo& info) override;
    void SetDevicesChanged(std::function<void()> changed) override;

    // Pull and push the cable of the camera of that index. A camera that is plugged begins as if
    // it got power. Nothing happens if it is so already.
    void Unplug(std::size_t camera);
    void Plug(std::size_t camera);

private:
    void tellChanged();

    CInfoBase info_;
    std::vector<std::shared_ptr<Camera>> cameras_;
    std::mutex mutex_;
    std::function<void()> changed_;
};

}  // namespace Orlix::Emulated
