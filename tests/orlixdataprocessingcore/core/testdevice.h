// A resource as tests put it into a pool.
#pragma once

#include "orlixdataprocessingcore/core/resourcepool.h"

namespace Orlix::DataProcessing::Core {

class TestDevice : public IDeviceResource {
public:
    Utils::TypeInfo getTypeInfo(bool throwOnError) const override {
        return Utils::TypeInfo::getTypeInfo<IDeviceResource>(throwOnError);
    }
    const void* getRawPointer() const override { return static_cast<const IDeviceResource*>(this); }
    void* getRawPointer() override { return static_cast<IDeviceResource*>(this); }
    std::shared_ptr<Orlix::ICameraDevice> acquireDevice(bool /*shared*/) override {
        return nullptr;
    }
    bool isUnused() override { return true; }
};

}  // namespace Orlix::DataProcessing::Core
