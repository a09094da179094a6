// What a resource pool has of cameras: a resource for each layer and for each camera that its layer
// finds. Shared by the pool and the resources. Any thread may call.
#pragma once

#include <cstdint>
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
    explicit CameraResources(std::vector<std::shared_ptr<ICameraLayer>> layers);
    ~CameraResources();
    CameraResources(const CameraResources&) = delete;
    CameraResources& operator=(const CameraResources&) = delete;

    // Fills the pool with what is there now. No lock is held while a layer looks or the pool tells.
    void refresh(DataProcessing::Core::DefaultResourcePool& pool);
    // From now on a change that a layer notices refreshes the pool, as long as that lives.
    void watch(const std::shared_ptr<DataProcessing::Core::DefaultResourcePool>& pool);

private:
    using ResourceMap = DataProcessing::Core::IResourcePool::ResourceMap;
    class Layer;

    [[nodiscard]] ResourceMap enumerate();

    const std::vector<std::unique_ptr<Layer>> layers_;
    std::mutex mutex_;
    std::uint64_t changesBegun_ = 0;  // of the pool's list
};

}  // namespace Orlix::Host
