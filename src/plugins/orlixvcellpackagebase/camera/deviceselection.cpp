// How Camera picks a device from the pool: the first unused one in the pool's order that has all
// the properties.
#include "camera/cameraimpl.h"
#include "camera/findresources.h"
#include "camera/log.h"
#include "gcbase/gcexception.h"

namespace Plugin::OrlixVCellPackageBase {

namespace Utils = Orlix::DataProcessing::Utils;

// Looks a second time, after a refresh of the pool, where the first look has failed and the
// allocation may search twice.
void Camera::pickDevice(bool maySearchTwice) {
    const char* failure = takeDevice();
    if (failure != nullptr && maySearchTwice) {
        impl_->resourcePool->refreshResources(Utils::TypeInfo());
        failure = takeDevice();
    }
    if (failure != nullptr) {
        Utils::logAndThrow<GenICam::RuntimeException>(CameraLog::getSubject(this), failure,
                                                      "allocateAdditionalResources");
    }
}

// Null, or why there is no device.
const char* Camera::takeDevice() {
    Orlix::CDeviceInfo filter;
    for (const auto& [key, value] : impl_->deviceProperties) {
        filter.SetPropertyValue(key, value);
    }
    const auto matches = findDeviceResources(*impl_->resourcePool, ResourceInfo(filter));
    if (matches.empty()) {
        return "No suitable camera found to allocate.";
    }
    for (const auto& [info, resource] : matches) {
        if (resource->isUnused()) {
            impl_->device = resource->acquireDevice(false);
            return impl_->device != nullptr ? nullptr : "Could not get camera device to allocate.";
        }
    }
    return "No unused camera found to allocate.";
}

}  // namespace Plugin::OrlixVCellPackageBase
