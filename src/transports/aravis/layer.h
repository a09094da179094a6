// The cameras of one protocol that Aravis finds.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "aravis/discovery.h"
#include "orlixcamera/transport/transport.h"

namespace Orlix::Aravis {

class Layer final : public Transport::ILayer {
public:
    Layer(Protocol protocol, std::shared_ptr<Discovery> discovery);
    ~Layer() override;

    [[nodiscard]] const CInfoBase& GetInfo() const noexcept override { return info_; }
    // What the last look found, which is not older than three seconds; the first call waits for
    // the first look.
    [[nodiscard]] std::vector<CDeviceInfo> Enumerate() override;
    // The camera of that full name, also one that has gone; without a name, the first that has all
    // properties of `info`.
    [[nodiscard]] std::shared_ptr<Transport::IDevice> CreateDevice(
        const CDeviceInfo& info) override;
    void SetDevicesChanged(std::function<void()> changed) override;

private:
    const Protocol protocol_;
    const std::shared_ptr<Discovery> discovery_;
    CInfoBase info_;
};

}  // namespace Orlix::Aravis
