// A resource pool without resources, which counts how often a service is fetched. Services that a
// test does not give are the process-wide ones.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <utility>

#include "orlixdataprocessingcore/core/bufferprovider.h"
#include "orlixdataprocessingcore/core/graphupdate.h"
#include "orlixdataprocessingcore/core/resourcepool.h"
#include "orlixdataprocessingcore/core/services.h"

namespace Plugin::OrlixVCellPackageBase {

class TestPool final : public Orlix::DataProcessing::Core::IResourcePool {
public:
    using BufferProvider = Orlix::DataProcessing::Core::IBufferProvider;
    using UpdateFactory = Orlix::DataProcessing::Core::IUpdateFactory;
    using VoidSignal = Orlix::DataProcessing::Utils::Signal<void()>;

    explicit TestPool(std::shared_ptr<UpdateFactory> updateFactory =
                          Orlix::DataProcessing::Core::getDefaultUpdateFactory(),
                      std::shared_ptr<BufferProvider> bufferProvider =
                          Orlix::DataProcessing::Core::getDefaultBufferProvider())
        : updateFactory_(std::move(updateFactory)), bufferProvider_(std::move(bufferProvider)) {}

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
    std::shared_ptr<BufferProvider> getBufferProvider() override {
        ++bufferProviderFetches_;
        onBufferProvider();
        return bufferProvider_;
    }
    std::shared_ptr<UpdateFactory> getUpdateFactory() override {
        ++updateFactoryFetches_;
        return updateFactory_;
    }

    std::function<void()> onBufferProvider = [] {};

    [[nodiscard]] int bufferProviderFetches() const { return bufferProviderFetches_; }
    [[nodiscard]] int updateFactoryFetches() const { return updateFactoryFetches_; }

private:
    std::shared_ptr<UpdateFactory> updateFactory_;
    std::shared_ptr<BufferProvider> bufferProvider_;
    std::atomic<int> bufferProviderFetches_ = 0;
    std::atomic<int> updateFactoryFetches_ = 0;
    std::shared_ptr<VoidSignal> resourcesChanged_ = std::make_shared<VoidSignal>();
};

}  // namespace Plugin::OrlixVCellPackageBase
