#include "orlixcamera/instantcamera/devicemaps.h"

namespace Orlix::Detail {

DeviceMaps::DeviceMaps(const std::shared_ptr<Transport::IDevice>& device,
                       const std::shared_ptr<CameraSettings>& settings,
                       const std::shared_ptr<const StreamCounters>& counters)
    : chunkMaps_(std::make_shared<ChunkMaps>(device->GetDescription())),
      devicePort_(std::make_unique<DevicePort>(device, Memory::Device)),
      layerPort_(std::make_unique<DevicePort>(device, Memory::Layer)),
      deviceMap_(chunkMaps_->CreateNodeMap("Device")),
      streamMap_(CreateStreamMap(settings, counters)),
      eventAdapter_(deviceMap_._Ptr()) {
    deviceMap_->Connect(devicePort_.get());
    const std::shared_ptr<const std::string> description = device->GetLayerDescription();
    if (description == nullptr || description->empty()) {
        ownLayerMap_ = CreateLayerMap(settings, device->GetInfo());
    } else {
        layerMap_ = ChunkMaps(description).CreateNodeMap("DeviceTransportLayer");
        layerMap_->Connect(layerPort_.get());
    }
}

DeviceMaps::~DeviceMaps() = default;

GenApi::INodeMap& DeviceMaps::GetLayer() const {
    return ownLayerMap_ != nullptr ? ownLayerMap_->Get() : *layerMap_;
}

void DeviceMaps::SetOpen(bool open) {
    devicePort_->SetOpen(open);
    layerPort_->SetOpen(open);
}

void DeviceMaps::Invalidate() {
    eventAdapter_.ForgetMessages();
    devicePort_->InvalidateNode();
    layerPort_->InvalidateNode();
    streamMap_->Invalidate();
    if (ownLayerMap_ != nullptr) {
        ownLayerMap_->Invalidate();
    }
}

}  // namespace Orlix::Detail
