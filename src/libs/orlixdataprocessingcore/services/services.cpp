#include "orlixdataprocessingcore/core/services.h"

#include "orlixdataprocessingcore/services/bufferprovider.h"
#include "orlixdataprocessingcore/services/elasticthreadpool.h"
#include "orlixdataprocessingcore/services/updatefactory.h"

namespace Orlix::DataProcessing::Core {

namespace {

// Never destroyed: nodes, jobs and buffers may outlive the static objects of every module.
template <typename Service>
const std::shared_ptr<Service>& immortal() {
    static const auto* const service = new std::shared_ptr<Service>(std::make_shared<Service>());
    return *service;
}

}  // namespace

std::shared_ptr<Threading::IThreadPool> getDefaultThreadPool() {
    return immortal<Threading::ElasticThreadPool>();
}

std::shared_ptr<IBufferProvider> getDefaultBufferProvider() {
    return immortal<BufferProvider>();
}

std::shared_ptr<IUpdateFactory> getDefaultUpdateFactory() {
    return immortal<UpdateFactory>();
}

}  // namespace Orlix::DataProcessing::Core
