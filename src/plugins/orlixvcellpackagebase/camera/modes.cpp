// The two settings of Camera's acquisition.
#include "camera/cameraimpl.h"
#include "camera/names.h"
#include "orlixdataprocessingcore/core/boolean.h"

namespace Plugin::OrlixVCellPackageBase {

namespace Core = Orlix::DataProcessing::Core;
namespace Utils = Orlix::DataProcessing::Utils;

AcquisitionMode Camera::getAcquisitionMode() const {
    const Guard guard = lockNode();
    return impl_->acquisitionMode;
}

void Camera::setAcquisitionMode(AcquisitionMode value) {
    Guard guard = lockNode();
    if (impl_->acquisitionMode != value) {
        impl_->acquisitionMode = value;
        impl_->acquisitionModePort->notify();
        guard.unlock();
        notifySettingsChanged();
    }
}

FixCorruptImages Camera::getFixCorruptImages() const {
    const Guard guard = lockNode();
    return impl_->fixCorruptImages;
}

// The port is locked while the node runs, so that outputs don't change under a running graph. A
// recipe may hold a number that is neither; it changes no output.
void Camera::setFixCorruptImages(FixCorruptImages value) {
    Guard guard = lockNode();
    if (impl_->fixCorruptImages == value) {
        return;
    }
    impl_->fixCorruptImages = value;
    impl_->fixCorruptImagesPort->notify();
    guard.unlock();
    if (value == FixCorruptImages::On) {
        createImageCorruptOutput();
    } else if (value == FixCorruptImages::Off && hasOutput(CameraNames::imageCorruptPin)) {
        removeOutput(CameraNames::imageCorruptPin);
    }
    notifySettingsChanged();
}

void Camera::createImageCorruptOutput() {
    createOutput(CameraNames::imageCorruptPin, "Determines if the output image is corrupt.",
                 Utils::TypeInfo::getTypeInfo<Core::Boolean>(true), true, Core::unlimitedJobs);
}

}  // namespace Plugin::OrlixVCellPackageBase
