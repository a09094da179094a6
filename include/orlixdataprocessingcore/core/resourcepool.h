// What a host lends to its nodes: the resources that it has found (cameras, transport layers) and
// the services of the run (worker threads, buffers, updates). All operations are safe from any
// thread; the pool outlives the nodes that were created with it.
#pragma once

#include <map>
#include <memory>

#include "orlixdataprocessingcore/api.h"
#include "orlixdataprocessingcore/core/resourceinfo.h"
#include "orlixdataprocessingcore/utils/iobject.h"
#include "orlixdataprocessingcore/utils/signal.h"
#include "orlixdataprocessingcore/utils/typeinfo.h"

namespace Orlix {
class ICameraDevice;
}

namespace Orlix::DataProcessing::Threading {
class IThreadPool;
}

namespace Orlix::DataProcessing::Core {

class IBufferProvider;
class IUpdateFactory;

// A camera or another device that a node can take for itself.
class ORLIXDATAPROCESSINGCORE_API IDeviceResource : public Utils::IObject {
public:
    // The device, closed; null if there is none to be had. Opening it tells whether it is free.
    // Nodes pass false. The device returns to the pool with the last holder of the pointer.
    [[nodiscard]] virtual std::shared_ptr<Orlix::ICameraDevice> acquireDevice(bool shared) = 0;
    // Whether no other holder has the device.
    [[nodiscard]] virtual bool isUnused() = 0;
};

// A transport layer that devices are reached through.
class ORLIXDATAPROCESSINGCORE_API ITlResource : public Utils::IObject {};

class ORLIXDATAPROCESSINGCORE_API IResourcePool {
public:
    using ResourceMap = std::map<ResourceInfo, std::shared_ptr<Utils::IObject>>;

    virtual ~IResourcePool();

    // The resources whose dynamic type converts to type.
    [[nodiscard]] virtual ResourceMap getResources(const Utils::TypeInfo& type) = 0;
    // Those of them whose properties include the filter's.
    [[nodiscard]] virtual ResourceMap findResources(const ResourceInfo& filter,
                                                    const Utils::TypeInfo& type) = 0;
    // Enumerates anew; an invalid type means all. Fires the signal below when the list changed.
    virtual void refreshResources(const Utils::TypeInfo& type) = 0;
    [[nodiscard]] virtual std::shared_ptr<Utils::ISignal<void()>> getResourcesChangedSignal() = 0;

    [[nodiscard]] virtual std::shared_ptr<Threading::IThreadPool> getThreadPool() = 0;
    [[nodiscard]] virtual std::shared_ptr<IBufferProvider> getBufferProvider() = 0;
    [[nodiscard]] virtual std::shared_ptr<IUpdateFactory> getUpdateFactory() = 0;
};

}  // namespace Orlix::DataProcessing::Core
