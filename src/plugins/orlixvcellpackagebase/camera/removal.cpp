// What Camera does when its device has vanished, on a pool thread.
#include "camera/cameraimpl.h"
#include "camera/log.h"

namespace Plugin::OrlixVCellPackageBase {

namespace Core = Orlix::DataProcessing::Core;
using Orlix::DataProcessing::Utils::DateTime;
using namespace CameraLog;

// The error stays until the resources are given up or another device is open; a second removal
// keeps the first one. A receiver of a signal may give the resources up, and take another device;
// that clears the error, and what is behind it is not this removal's to take away. They run with
// the lock free.
void Camera::handleCameraDeviceRemoved() {
    Guard guard = lockNode();
    const std::shared_ptr<Impl::Signals> signals = impl_->signals;
    if (impl_->deviceRemovedError == nullptr) {
        impl_->deviceRemovedError = std::make_shared<Core::DeviceError>(
            "vCell has stopped working because the camera has been disconnected.", DateTime::now());
        const std::shared_ptr<Core::IError> error = impl_->deviceRemovedError;
        guard.unlock();
        setError(error);
        guard.lock();
        if (impl_->deviceRemovedError != error) {
            resetError(error);  // cleared on another thread before it was set
        }
    }
    const auto isLost = [this] { return impl_->deviceRemovedError != nullptr; };
    if (isLost()) {
        withdrawDevice();
        showNoDeviceSelected();
    }
    createLogEntry(Severitiy::Error, category(), "Camera %p: Device has been removed.",
                   static_cast<const void*>(this));
    guard.unlock();
    signals->nodeMapsChanged();
    guard.lock();
    if (isLost()) {
        releaseCamera();
    }
}

void Camera::resetDeviceRemovedError() {
    const Guard guard = lockNode();
    if (impl_->deviceRemovedError != nullptr) {
        resetError(impl_->deviceRemovedError);
        impl_->deviceRemovedError.reset();
    }
}

}  // namespace Plugin::OrlixVCellPackageBase
