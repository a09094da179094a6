#include "orlixcamera/cameralayer.h"

#include <utility>

#include "gcbase/gcexception.h"
#include "orlixcamera/cameradevice.h"
#include "orlixcamera/transport/transport.h"

namespace Orlix {
namespace {

class CameraLayer final : public ICameraLayer {
public:
    explicit CameraLayer(std::shared_ptr<Transport::ILayer> layer) : layer_(std::move(layer)) {}

    [[nodiscard]] const CInfoBase& GetInfo() const noexcept override { return layer_->GetInfo(); }
    [[nodiscard]] std::vector<CDeviceInfo> EnumerateDevices() override {
        return layer_->Enumerate();
    }
    [[nodiscard]] std::shared_ptr<ICameraDevice> CreateDevice(const CDeviceInfo& info) override {
        auto device = layer_->CreateDevice(info);
        // The layer must outlive its devices, whoever holds them.
        Transport::IDevice* const plain = device.get();
        const auto release = [device = std::move(device),
                              layer = layer_](Transport::IDevice*) mutable {
            device.reset();
            layer.reset();
        };
        return CreateCameraDevice({plain, release});
    }
    void SetDevicesChanged(std::function<void()> changed) override {
        layer_->SetDevicesChanged(std::move(changed));
    }

private:
    const std::shared_ptr<Transport::ILayer> layer_;
};

}  // namespace

ICameraLayer::ICameraLayer() = default;
ICameraLayer::~ICameraLayer() = default;

std::shared_ptr<ICameraLayer> CreateCameraLayer(std::shared_ptr<Transport::ILayer> layer) {
    if (layer == nullptr) {
        throw GenICam::InvalidArgumentException(
            "A camera layer needs a transport layer, but a null pointer was passed.", __FILE__,
            __LINE__);
    }
    return std::make_shared<CameraLayer>(std::move(layer));
}

}  // namespace Orlix
