#include "host/camerapool.h"

#include <algorithm>
#include <utility>

namespace Orlix::Host {
namespace {

namespace Core = DataProcessing::Core;
namespace Utils = DataProcessing::Utils;

bool isFree(Utils::IObject& resource) {
    auto* const device = Utils::object_cast<Core::IDeviceResource>(&resource);
    return device == nullptr || device->isUnused();
}

}  // namespace

std::shared_ptr<CameraPool> CameraPool::create(std::vector<std::shared_ptr<ICameraLayer>> layers,
                                               CameraResources::LateLayers late) {
    const auto cameras = std::make_shared<CameraResources>(std::move(layers), std::move(late));
    std::shared_ptr<CameraPool> pool(new CameraPool(cameras));
    cameras->watch(pool);
    cameras->refresh(*pool);
    return pool;
}

CameraPool::CameraPool(const std::shared_ptr<CameraResources>& cameras)
    : DefaultResourcePool([cameras](DefaultResourcePool& self) { cameras->refresh(self); }),
      cameras_(cameras) {}

void CameraPool::refreshResources(const Utils::TypeInfo& type) {
    cameras_->beginSearch();
    DefaultResourcePool::refreshResources(type);
}

CameraPool::ResourceMap CameraPool::findResources(const Core::ResourceInfo& filter,
                                                  const Utils::TypeInfo& type) {
    ResourceMap found = DefaultResourcePool::findResources(filter, type);
    const bool isAnyFree = std::any_of(found.begin(), found.end(),
                                       [](const auto& entry) { return isFree(*entry.second); });
    if (isAnyFree || !cameras_->waitForSearch()) {
        return found;
    }
    DefaultResourcePool::refreshResources(type);
    return DefaultResourcePool::findResources(filter, type);
}

void CameraPool::lookForRealCameras() {
    cameras_->beginSearch();
    cameras_->waitForSearch();
    DefaultResourcePool::refreshResources({});
}

}  // namespace Orlix::Host
