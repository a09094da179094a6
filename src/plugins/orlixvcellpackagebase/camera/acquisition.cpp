// A run of Camera: from the start argument to the library's grab thread, and its end.
#include <algorithm>
#include <array>
#include <optional>

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

// The device's feature and the start argument.
constexpr char acquisitionMode[] = "AcquisitionMode";

// The words of both.
struct ModeWord {
    AcquisitionMode mode;
    const char* word;
};
constexpr std::array modeWords{
    ModeWord{AcquisitionMode::Continuous, "Continuous"},
    ModeWord{AcquisitionMode::SingleFrame, "SingleFrame"},
};

const char* getWord(AcquisitionMode mode) {
    return std::find_if(modeWords.begin(), modeWords.end(),
                        [&](const ModeWord& entry) { return entry.mode == mode; })
        ->word;
}

}  // namespace

// None without an argument that names a mode. Another text is ignored in silence; a text that
// carries an error is no text.
std::optional<AcquisitionMode> Camera::getRequestedMode(
    const Core::NodeArgumentCollection& arguments) const {
    if (!arguments.hasArgument(acquisitionMode)) {
        return std::nullopt;
    }
    const Utils::Variant argument = arguments.getArgumentValue(acquisitionMode);
    const auto* text = argument.get<Core::String>(false);
    if (text == nullptr || text->hasError(false)) {
        createLogEntry(Severitiy::Warning, category(),
                       "Camera %p: Argument \"AcquisitionMode\" is not of type \"String\" or "
                       "invalid and is therefore ignored.",
                       static_cast<const void*>(this));
        return std::nullopt;
    }
    for (const ModeWord& entry : modeWords) {
        if (text->get() == entry.word) {
            return entry.mode;
        }
    }
    return std::nullopt;
}

// None for a setting that is no mode.
std::optional<AcquisitionMode> Camera::getConfiguredMode() const {
    const AcquisitionMode setting = impl_->acquisitionModePort->getTypedValue();
    const bool isMode = std::any_of(modeWords.begin(), modeWords.end(),
                                    [&](const ModeWord& entry) { return entry.mode == setting; });
    return isMode ? std::optional(setting) : std::nullopt;
}

void Camera::onStarting(const Core::NodeArgumentCollection& arguments) {
    std::optional<AcquisitionMode> mode = getRequestedMode(arguments);
    const Guard guard = lockNode();
    setOFSParametersAvailable(false);
    impl_->acquisitionModePort->setWritable(false);
    impl_->fixCorruptImagesPort->setWritable(false);
    setChunkPinParametersAvailable(false);
    setEventPinParametersAvailable(false);
    const std::uint64_t lastEvent = impl_->instantCamera.GetLastEventNumber();
    if (!mode) {
        mode = getConfiguredMode();
    }
    if (mode) {
        startGrabbing(*mode);
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
    Orlix::CEnumParameter feature(camera.GetNodeMap(), acquisitionMode);
    if (feature.TrySetValue(getWord(mode))) {
        impl_->acquisitionModePort->setTypedValue(mode);
    }
    if (mode == AcquisitionMode::SingleFrame) {
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
