// A resource pool without resources. Services that a test does not give are the process-wide ones.
#pragma once

#include <memory>
#include <utility>

#include "orlixdataprocessingcore/core/graphupdate.h"
#include "orlixdataprocessingcore/core/resourcepool.h"
#include "orlixdataprocessingcore/core/services.h"

namespace Plugin::OrlixVCellPackageBase {

class TestPool final : public Orlix::DataProcessing::Core::IResourcePool {
public:
    using UpdateFactory = Orlix::DataProcessing::Core::IUpdateFactory;
    using VoidSignal = Orlix::DataProcessing::Utils::Signal<void()>;

    explicit TestPool(std::shared_ptr<UpdateFactory> updateFactory =
                          Orlix::DataProcessing::Core::getDefaultUpdateFactory())
        : updateFactory_(std::move(updateFactory)) {}

    ResourceMap getResources(const Orlix::DataProcessing::Utils::TypeInfo& /*type*/) override {
        return {};
    }
    ResourceMap findResources(const Orlix::DataProcessing::Core::ResourceInfo& /*filter*/,
                              const Orlix::DataProcessing::Utils::TypeInfo& /*type*/) override {
        return {};
    }
    void refreshResources(const Orlix::DataProcessing::Utils::TypeInfo& /*type*/) override {}
    std::shared_ptr<Orlix::DataProcessing::Utils::ISignal<void()>> getResourcesChangedSignal()
        override {
        return resourcesChanged_;
    }
    std::shared_ptr<Orlix::DataProcessing::Threading::IThreadPool> getThreadPool() override {
        return Orlix::DataProcessing::Core::getDefaultThreadPool();
    }
    std::shared_ptr<Orlix::DataProcessing::Core::IBufferProvider> getBufferProvider() override {
        return Orlix::DataProcessing::Core::getDefaultBufferProvider();
    }
    std::shared_ptr<UpdateFactory> getUpdateFactory() override { return updateFactory_; }

private:
    std::shared_ptr<UpdateFactory> updateFactory_;
    std::shared_ptr<VoidSignal> resourcesChanged_ = std::make_shared<VoidSignal>();
};

}  // namespace Plugin::OrlixVCellPackageBase
