// A run of Camera: from the start argument to the library's grab thread, and its end.
#include "camera/cameraimpl.h"
#include "camera/log.h"
#include "orlixcamera/nodeparameter.h"
#include "orlixdataprocessingcore/core/nodearguments.h"
#include "orlixdataprocessingcore/core/string.h"

namespace Plugin::OrlixVCellPackageBase {

namespace Core = Orlix::DataProcessing::Core;
namespace Utils = Orlix::DataProcessing::Utils;
using namespace CameraLog;

namespace {

// The device's feature, the start argument and the words of both.
constexpr char acquisitionMode[] = "AcquisitionMode";
constexpr char continuous[] = "Continuous";
constexpr char singleFrame[] = "SingleFrame";

}  // namespace

// Null without an argument that names a mode. Another text is ignored in silence; a text that
// carries an error is no text.
const char* Camera::getRequestedMode(const Core::NodeArgumentCollection& arguments) const {
    if (!arguments.hasArgument(acquisitionMode)) {
        return nullptr;
    }
    const Utils::Variant argument = arguments.getArgumentValue(acquisitionMode);
    const auto* text = argument.get<Core::String>(false);
    if (text == nullptr || text->hasError(false)) {
        createLogEntry(Severitiy::Warning, category(),
                       "Camera %p: Argument \"AcquisitionMode\" is not of type \"String\" or "
                       "invalid and is therefore ignored.",
                       static_cast<const void*>(this));
        return nullptr;
    }
    for (const char* mode : {continuous, singleFrame}) {
        if (text->get() == mode) {
            return mode;
        }
    }
    return nullptr;
}

// Null for a setting that is no mode.
const char* Camera::getConfiguredMode() const {
    switch (impl_->acquisitionModePort->getTypedValue()) {
        case AcquisitionMode::SingleFrame:
            return singleFrame;
        case AcquisitionMode::Continuous:
            return continuous;
    }
    return nullptr;
}

void Camera::onStarting(const Core::NodeArgumentCollection& arguments) {
    const char* mode = getRequestedMode(arguments);
    const Guard guard = lockNode();
    setOFSParametersAvailable(false);
    impl_->acquisitionModePort->setWritable(false);
    impl_->fixCorruptImagesPort->setWritable(false);
    setChunkPinParametersAvailable(false);
    setEventPinParametersAvailable(false);
    const std::uint64_t lastEvent = impl_->instantCamera.GetLastEventNumber();
    if (mode == nullptr) {
        mode = getConfiguredMode();
    }
    if (mode != nullptr) {
        startGrabbing(mode == singleFrame ? AcquisitionMode::SingleFrame
                                          : AcquisitionMode::Continuous);
    } else {
        createLogEntry(Severitiy::Error, category(),
                       "Camera %p: Couldn't determine acquisition mode.",
                       static_cast<const void*>(this));
    }
    impl_->lastEventBeforeRun = lastEvent;
}

// A mode that the device refuses is not an error: it then grabs in the mode that it has. One that
// it takes becomes the node's setting.
void Camera::startGrabbing(AcquisitionMode mode) {
    Orlix::CInstantCamera& camera = impl_->instantCamera;
    const bool single = mode == AcquisitionMode::SingleFrame;
    Orlix::CEnumParameter feature(camera.GetNodeMap(), acquisitionMode);
    if (feature.TrySetValue(single ? singleFrame : continuous)) {
        impl_->acquisitionModePort->setTypedValue(mode);
    }
    if (single) {
        camera.StartGrabbing(1, Orlix::GrabStrategy_OneByOne,
                             Orlix::GrabLoop_ProvidedByInstantCamera);
    } else {
        camera.StartGrabbing(Orlix::GrabStrategy_OneByOne, Orlix::GrabLoop_ProvidedByInstantCamera);
    }
}

// The device stays open. A handler that waits for the lock meanwhile is not waited for: it finds
// that its run is over.
void Camera::onStopping() {
    const Guard guard = lockNode();
    impl_->lastRunOfFrames = impl_->instantCamera.GetRunNumber();
    impl_->instantCamera.StopGrabbing();
    impl_->lastEventBeforeRun = Impl::noEvents;
    impl_->acquisitionModePort->setWritable(true);
    impl_->fixCorruptImagesPort->setWritable(true);
    setChunkPinParametersAvailable(true);
    setEventPinParametersAvailable(true);
    setOFSParametersAvailable(true);
}

}  // namespace Plugin::OrlixVCellPackageBase
