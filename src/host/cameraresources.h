// What a resource pool has of cameras: a resource for each layer and for each camera that its layer
// finds. Shared by the pool and the resources. Any thread may call.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "orlixdataprocessingcore/core/defaultresourcepool.h"
#include "orlixdataprocessingcore/core/resourcepool.h"

namespace Orlix {
class CInfoBase;
class ICameraLayer;
}  // namespace Orlix

namespace Orlix::Host {

class CameraResources {
public:
    // Makes layers that take time to begin, or to look for cameras.
    using LateLayers = std::function<std::vector<std::shared_ptr<ICameraLayer>>()>;

    // `late` is called by the second refresh: the first one fills a new pool, which must not take
    // long, and a run without real cameras needs no other.
    explicit CameraResources(std::vector<std::shared_ptr<ICameraLayer>> layers,
                             LateLayers late = {});
    ~CameraResources();
    CameraResources(const CameraResources&) = delete;
    CameraResources& operator=(const CameraResources&) = delete;

    // Fills the pool with what is there now. No lock is held while a layer looks or the pool tells.
    void refresh(DataProcessing::Core::DefaultResourcePool& pool);
    // From now on a change that a layer notices refreshes the pool, as long as that lives. To be
    // called once, before the first refresh.
    void watch(const std::shared_ptr<DataProcessing::Core::DefaultResourcePool>& pool);

private:
    using ResourceMap = DataProcessing::Core::IResourcePool::ResourceMap;
    class Layer;

    using Layers = std::vector<std::shared_ptr<Layer>>;

    [[nodiscard]] ResourceMap enumerate();
    [[nodiscard]] Layers getLayers();
    void addLateLayers();
    void watch(Layer& layer) const;

    const LateLayers late_;
    std::weak_ptr<DataProcessing::Core::DefaultResourcePool> pool_;
    std::mutex addition_;  // of late layers; outside of mutex_
    std::mutex mutex_;
    Layers layers_;
    bool refreshed_ = false;
    bool complete_ = false;
    std::uint64_t changesBegun_ = 0;  // of the pool's list
};

}  // namespace Orlix::Host
