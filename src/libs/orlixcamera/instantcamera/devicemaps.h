// The node maps of one attached device. They are made when it is opened first, and answer with
// exceptions while the camera is closed.
#pragma once

#include <memory>

#include "genapi/eventadapter.h"
#include "genapi/nodemapref.h"
#include "orlixcamera/instantcamera/cameramap.h"
#include "orlixcamera/instantcamera/chunkmaps.h"
#include "orlixcamera/instantcamera/deviceport.h"
#include "orlixcamera/instantcamera/streamcounters.h"

namespace Orlix::Detail {

// Any thread may use the maps; the event adapter is the event thread's.
class DeviceMaps {
public:
    // The device is open. Throws what reading or parsing its description throws.
    DeviceMaps(const std::shared_ptr<Transport::IDevice>& device,
               const std::shared_ptr<CameraSettings>& settings,
               const std::shared_ptr<const StreamCounters>& counters);
    ~DeviceMaps();
    DeviceMaps(const DeviceMaps&) = delete;
    DeviceMaps& operator=(const DeviceMaps&) = delete;

    [[nodiscard]] GenApi::INodeMap& GetDevice() const { return *deviceMap_; }
    [[nodiscard]] GenApi::INodeMap& GetLayer() const;
    [[nodiscard]] GenApi::INodeMap& GetStream() const { return streamMap_->Get(); }
    [[nodiscard]] const std::shared_ptr<ChunkMaps>& GetChunkMaps() const { return chunkMaps_; }
    [[nodiscard]] GenApi::CEventAdapterGeneric& GetEventAdapter() { return eventAdapter_; }

    void SetOpen(bool open);
    // What was cached, and the last events, belong to another opening. Fires callbacks, so no lock
    // may be held.
    void Invalidate();

private:
    const std::shared_ptr<ChunkMaps> chunkMaps_;
    const std::unique_ptr<DevicePort> devicePort_;
    const std::unique_ptr<DevicePort> layerPort_;
    const GenApi::CNodeMapRef deviceMap_;
    GenApi::CNodeMapRef layerMap_;              // of the device's own description, or
    std::unique_ptr<RegisterMap> ownLayerMap_;  // for one without
    const std::unique_ptr<RegisterMap> streamMap_;
    GenApi::CEventAdapterGeneric eventAdapter_;
};

}  // namespace Orlix::Detail
