// The pool's devices as Camera shows them to a user and to a camera dialog.
#include <array>

#include "camera/cameraimpl.h"
#include "camera/findresources.h"
#include "camera/log.h"
#include "camera/names.h"
#include "gcbase/gcexception.h"
#include "orlixcamera/deviceinfo.h"

namespace Plugin::OrlixVCellPackageBase {

namespace Core = Orlix::DataProcessing::Core;
namespace Utils = Orlix::DataProcessing::Utils;
using namespace CameraLog;

namespace {

constexpr std::array shownProperties{Orlix::Key::ModelName, Orlix::Key::VendorName,
                                     Orlix::Key::SerialNumber, Orlix::Key::UserDefinedName};

// Empty without such a property.
gcstring getProperty(const ResourceInfo& info, const char* key) {
    gcstring value;
    static_cast<void>(info.GetPropertyValue(key, value));
    return value;
}

void logMissingPool(const Camera* node) {
    createLogEntry(Severitiy::Error, category(),
                   "Camera %p: Failed to update resources because there is no resource pool "
                   "available.",
                   static_cast<const void*>(node));
}

template <typename Resource>
std::vector<ResourceInfo> listResources(Core::IResourcePool& pool) {
    std::vector<ResourceInfo> list;
    for (const auto& resource : pool.getResources(Utils::TypeInfo::getTypeInfo<Resource>(true))) {
        list.push_back(resource.first);
    }
    return list;
}

}  // namespace

// The list falls back to its first device: a user who browses it loses the place whenever a device
// comes or goes.
void Camera::updateResources() {
    const Guard guard = lockNode();
    if (impl_->resourcePool == nullptr) {
        logMissingPool(this);
        return;
    }
    if (impl_->deviceSelectorPort == nullptr) {
        return;  // the constructor has not come to its parameters yet
    }
    impl_->deviceList = listResources<Core::IDeviceResource>(*impl_->resourcePool);
    setDeviceSelector(0);
    const bool present = !impl_->deviceList.empty();
    impl_->deviceSelectorPort->setAvailable(present);
    impl_->deviceModelNamePort->setAvailable(present);
    impl_->deviceVendorNamePort->setAvailable(present);
    impl_->deviceSerialNumberPort->setAvailable(present);
    impl_->deviceUserDefinedNamePort->setAvailable(present);
    impl_->deviceChoosePort->setAvailable(present);
    if (present) {
        impl_->deviceSelectorPort->setMax(static_cast<std::int64_t>(impl_->deviceList.size()) - 1);
        impl_->deviceSelectorPort->notify();
    }
}

std::uint64_t Camera::getDeviceSelector() const {
    const Guard guard = lockNode();
    return impl_->deviceSelector;
}

void Camera::setDeviceSelector(std::uint64_t value) {
    const Guard guard = lockNode();
    impl_->deviceSelector = value;
    impl_->deviceSelectorPort->notify();
    const std::array ports{impl_->deviceModelNamePort.get(), impl_->deviceVendorNamePort.get(),
                           impl_->deviceSerialNumberPort.get(),
                           impl_->deviceUserDefinedNamePort.get()};
    for (std::size_t i = 0; i < ports.size(); ++i) {
        const gcstring text = value < impl_->deviceList.size()
                                  ? getProperty(impl_->deviceList[value], shownProperties[i])
                                  : gcstring(CameraNames::noDeviceListed);
        ports[i]->writeValue(text.c_str(), false);
    }
}

// The list itself arrives through the pool's signal, on this thread or a little later.
void Camera::executeDeviceListUpdate() {
    const Guard guard = lockNode();
    if (impl_->resourcePool == nullptr) {
        logMissingPool(this);
        return;
    }
    try {
        impl_->resourcePool->refreshResources(Utils::TypeInfo());
    } catch (...) {
        Utils::logCaught(getSubject(this), "updating resources");
    }
}

DeviceData Camera::getCameraDeviceData() {
    Core::IResourcePool& pool = *impl_->resourcePool;
    pool.refreshResources(Utils::TypeInfo());
    const std::vector<ResourceInfo> devices = listResources<Core::IDeviceResource>(pool);
    DeviceData data;
    data.transportLayers = listResources<Core::ITlResource>(pool);
    for (const ResourceInfo& info : devices) {
        const auto matches = findDeviceResources(pool, info);
        if (matches.size() != 1) {
            throw GenICam::RuntimeException(
                "Device not found in ResourcePool or Device is not unique", __FILE__, __LINE__);
        }
        data.devices.push_back({info, !matches.begin()->second->isUnused()});
    }
    return data;
}

}  // namespace Plugin::OrlixVCellPackageBase
