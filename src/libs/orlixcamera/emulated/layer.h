// The layer of the emulated cameras. It has a fixed number of them, which can be unplugged and
// plugged again.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "orlixcamera/emulated/camera.h"
#include "orlixcamera/transport/announcer.h"
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
    // Called on a thread of the layer. When this returns, no call of the function before is under
    // way.
    void SetDevicesChanged(std::function<void()> changed) override;

    // Gives every camera this fault script. Throws InvalidArgumentException that tells the place of
    // a mistake, and changes nothing then.
    void LoadFaults(const std::string& script);

    // Pull and push the cable of the camera of that index. A camera that is plugged begins as if
    // it got power. Nothing happens if it is so already.
    void Unplug(std::size_t camera);
    void Plug(std::size_t camera);

private:
    CInfoBase info_;
    std::vector<std::shared_ptr<Camera>> cameras_;
    const std::shared_ptr<Transport::Announcer> announcer_ =
        std::make_shared<Transport::Announcer>();
};

}  // namespace Orlix::Emulated
