// The resource pool of this host: what CameraResources knows, and when real cameras are looked for.
// Loading what reaches them and their first answers take a second, and a run that uses none does
// without. So they are looked for once somebody refreshes the pool. No node is kept waiting by
// that, since it may hold its lock: who drives the nodes waits, when one of them has found no
// camera.
#pragma once

#include <memory>
#include <vector>

#include "host/cameraresources.h"
#include "orlixdataprocessingcore/core/defaultresourcepool.h"

namespace Orlix::Host {

// Safe from any thread.
class CameraPool final : public DataProcessing::Core::DefaultResourcePool {
public:
    // Lists what the layers have now. `late` makes those of real cameras. Whoever lets go of the
    // last pointer waits for a search that is under way and for layers that are telling something,
    // so that no other thread is left with the pool; unless he is called by one of these.
    [[nodiscard]] static std::shared_ptr<CameraPool> create(
        std::vector<std::shared_ptr<ICameraLayer>> layers, CameraResources::LateLayers late);

    // Begins to look for real cameras, the first time, and returns with the list as it is: who
    // calls may hold a lock that others need. The signal tells what has been found.
    void refreshResources(const DataProcessing::Utils::TypeInfo& type) override;
    // Whether real cameras, as far as they are wanted, were looked for and are in the list.
    [[nodiscard]] bool listsRealCameras() const;
    // Waits for them if they are looked for; then they are in the list. False if nobody has begun
    // to look. Not with a lock that a slot of the pool's signal may take.
    bool waitForRealCameras();
    // Begins to look for them if need be, and waits.
    void lookForRealCameras();

private:
    explicit CameraPool(const std::shared_ptr<CameraResources>& cameras);

    const std::shared_ptr<CameraResources> cameras_;
};

}  // namespace Orlix::Host
