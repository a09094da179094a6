// The resource pool of this host: what CameraResources knows, and when real cameras are looked for.
// Loading what reaches them and their first answers take a second, and a run that uses none does
// without. So they are looked for once somebody refreshes the pool, and nobody is kept waiting by
// that but who then asks for a camera that nothing else can give.
#pragma once

#include <memory>
#include <vector>

#include "host/cameraresources.h"
#include "orlixdataprocessingcore/core/defaultresourcepool.h"

namespace Orlix::Host {

// Safe from any thread.
class CameraPool final : public DataProcessing::Core::DefaultResourcePool {
public:
    // Lists what the layers have now. `late` makes those of real cameras.
    [[nodiscard]] static std::shared_ptr<CameraPool> create(
        std::vector<std::shared_ptr<ICameraLayer>> layers, CameraResources::LateLayers late);

    // Begins to look for real cameras, the first time, and returns with the list as it is: who
    // calls may hold a lock that others need. The signal tells what has been found.
    void refreshResources(const DataProcessing::Utils::TypeInfo& type) override;
    // While real cameras are looked for, a filter that no free device passes waits for them.
    ResourceMap findResources(const DataProcessing::Core::ResourceInfo& filter,
                              const DataProcessing::Utils::TypeInfo& type) override;
    // Returns when they are listed.
    void lookForRealCameras();

private:
    explicit CameraPool(const std::shared_ptr<CameraResources>& cameras);

    const std::shared_ptr<CameraResources> cameras_;
};

}  // namespace Orlix::Host
