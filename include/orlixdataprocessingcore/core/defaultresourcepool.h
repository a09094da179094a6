// A resource pool over a list that its owner keeps: it adds what it has found and removes what is
// gone. An owner that can look for resources itself passes a function for it.
//
//     auto pool = std::make_shared<DefaultResourcePool>([&](DefaultResourcePool& self) {
//         self.setResources(enumerateCameras());
//     });
#pragma once

#include <functional>
#include <memory>

#include "orlixdataprocessingcore/api.h"
#include "orlixdataprocessingcore/core/resourcepool.h"

namespace Orlix::DataProcessing::Core {

// Safe from any thread. No lock is held while the signal fires or the function below runs; the
// signal fires on the thread that has changed the list, and only for a real change; on one that
// refreshes also while another thread still tells of a change.
class ORLIXDATAPROCESSINGCORE_API DefaultResourcePool : public IResourcePool {
public:
    // Called by refreshResources in the calling thread; may throw.
    using Enumerate = std::function<void(DefaultResourcePool&)>;

    explicit DefaultResourcePool(Enumerate enumerate = {});
    ~DefaultResourcePool() override;
    DefaultResourcePool(const DefaultResourcePool&) = delete;
    DefaultResourcePool& operator=(const DefaultResourcePool&) = delete;

    // A resource with the same properties is replaced. Throws InvalidArgumentException for a null
    // pointer.
    void addResource(const ResourceInfo& info, const std::shared_ptr<Utils::IObject>& resource);
    // False if there was none.
    bool removeResource(const ResourceInfo& info);
    // Replaces the whole list with at most one signal.
    void setResources(const ResourceMap& resources);

    ResourceMap getResources(const Utils::TypeInfo& type) override;
    ResourceMap findResources(const ResourceInfo& filter, const Utils::TypeInfo& type) override;
    void refreshResources(const Utils::TypeInfo& type) override;
    std::shared_ptr<Utils::ISignal<void()>> getResourcesChangedSignal() override;

    std::shared_ptr<Threading::IThreadPool> getThreadPool() override;
    std::shared_ptr<IBufferProvider> getBufferProvider() override;
    std::shared_ptr<IUpdateFactory> getUpdateFactory() override;

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace Orlix::DataProcessing::Core
