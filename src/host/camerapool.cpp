#include "host/camerapool.h"

#include <utility>

namespace Orlix::Host {
namespace Utils = DataProcessing::Utils;

std::shared_ptr<CameraPool> CameraPool::create(std::vector<std::shared_ptr<ICameraLayer>> layers,
                                               CameraResources::LateLayers late) {
    const auto cameras = std::make_shared<CameraResources>(std::move(layers), std::move(late));
    std::shared_ptr<CameraPool> pool(new CameraPool(cameras));
    cameras->watch(pool);
    cameras->refresh(*pool);
    CameraPool* const object = pool.get();
    return {object, [owner = std::move(pool)](CameraPool*) mutable {
                owner->cameras_->end();
                owner.reset();
            }};
}

CameraPool::CameraPool(const std::shared_ptr<CameraResources>& cameras)
    : DefaultResourcePool([cameras](DefaultResourcePool& self) { cameras->refresh(self); }),
      cameras_(cameras) {}

void CameraPool::refreshResources(const Utils::TypeInfo& type) {
    cameras_->beginSearch();
    DefaultResourcePool::refreshResources(type);
}

bool CameraPool::listsRealCameras() const {
    return cameras_->isSearchListed();
}

bool CameraPool::waitForRealCameras() {
    if (!cameras_->waitForSearch()) {
        return false;
    }
    if (!cameras_->isSearchListed()) {
        DefaultResourcePool::refreshResources({});
    }
    return true;
}

void CameraPool::lookForRealCameras() {
    cameras_->beginSearch();
    static_cast<void>(waitForRealCameras());
}

}  // namespace Orlix::Host
