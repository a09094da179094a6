// The two settings of Camera's acquisition.
#include "camera/cameraimpl.h"
#include "camera/names.h"
#include "gcbase/gcexception.h"
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
    if (value == FixCorruptImages::On && !hasOutput(CameraNames::imageCorruptPin)) {
        createImageCorruptOutput();
    } else if (value == FixCorruptImages::Off && hasOutput(CameraNames::imageCorruptPin)) {
        removeOutput(CameraNames::imageCorruptPin);
    }
    notifySettingsChanged();
}

// For a pin of the user. "ImageCorrupt" is the node's own name also while it has no such output:
// else the order in which a user, or a recipe that is loaded, sets pins and repair would decide
// whose value stands on it.
void Camera::createPinOutput(const gcstring& name, const gcstring& description,
                             const Utils::TypeInfo& type) {
    if (name == CameraNames::imageCorruptPin) {
        throw GenICam::InvalidArgumentException("The name is that of an output of the node.",
                                                __FILE__, __LINE__);
    }
    createOutput(name, description, type, true, Core::unlimitedJobs);
}

void Camera::createImageCorruptOutput() {
    createOutput(CameraNames::imageCorruptPin, "Determines if the output image is corrupt.",
                 Utils::TypeInfo::getTypeInfo<Core::Boolean>(true), true, Core::unlimitedJobs);
}

}  // namespace Plugin::OrlixVCellPackageBase
