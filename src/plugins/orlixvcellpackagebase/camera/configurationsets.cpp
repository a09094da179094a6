// Configuration sets of Camera: one text for each node map of a camera, staged while a user works
// on it and active once it was committed.

#include "camera/cameraimpl.h"
#include "camera/featurestreamtext.h"
#include "camera/log.h"
#include "gcbase/gcexception.h"
#include "genapi/inodemap.h"
#include "orlixcamera/featurepersistence.h"

namespace Plugin::OrlixVCellPackageBase {

namespace Utils = Orlix::DataProcessing::Utils;
using namespace CameraLog;

namespace {

constexpr char fetching[] = "fetching feature stream";
constexpr char loading[] = "loading feature stream";

void logCaughtStream(const Camera* node, const char* doing, const char* text) {
    createLogEntry(Severitiy::Error, category(),
                   "Camera %p: Exception caught while %s. Message: \"%s\"",
                   static_cast<const void*>(node), doing, text);
}

}  // namespace

StreamType Camera::getStreamType() const {
    const Guard guard = lockNode();
    return impl_->streamType;
}

void Camera::setStreamType(StreamType value) {
    const Guard guard = lockNode();
    impl_->streamType = value;
    impl_->configurationSetStagedPort->notify();
    updateFetchAvailability();
    impl_->configurationSetActivePort->writeValue(impl_->activeStreams[value].c_str(), false);
}

// The settings of the camera object itself can be changed only before it is opened, those of a
// device only afterwards.
void Camera::updateFetchAvailability() {
    const bool forClosedCamera = impl_->streamType == StreamType::CameraInstance;
    impl_->configurationSetFetchPort->setAvailable(forClosedCamera != isCameraOpen());
}

void Camera::setOFSParametersAvailable(bool available) {
    const Guard guard = lockNode();
    impl_->configurationSetFetchPort->setAvailable(available);
    impl_->configurationSetCommitPort->setAvailable(available);
    impl_->configurationSetClearPort->setAvailable(available);
    impl_->configurationSetSelectorPort->setAvailable(available);
    impl_->configurationSetStagedPort->setAvailable(available);
    impl_->configurationSetActivePort->setAvailable(available);
}

// A set that was merely looked at counts as present.
gcstring Camera::getOFSStagedContent() const {
    const Guard guard = lockNode();
    return impl_->stagedStreams[impl_->streamType];
}

void Camera::setOFSStagedContent(const gcstring& text) {
    Guard guard = lockNode();
    impl_->stagedStreams[impl_->streamType] = text;
    guard.unlock();
    notifySettingsChanged();
}

// What is fetched is a change of the settings only once it is edited or committed.
void Camera::executeOFSFetch() {
    const Guard guard = lockNode();
    try {
        fetchSelectedSet();
    } catch (const GenICam::GenericException& exception) {
        logCaughtStream(this, fetching, exception.GetDescription());
        throw;
    } catch (const std::exception& exception) {
        Utils::logAndThrow<GenICam::RuntimeException>(
            getSubject(this), exception.what(), "executeOFSFetch", Utils::MessageOrigin::RunTime);
    } catch (...) {
        Utils::logAndThrow<GenICam::RuntimeException>(
            getSubject(this), "Unknown exception caught while fetching feature stream.",
            "executeOFSFetch");
    }
    impl_->configurationSetStagedPort->notify();
}

// Without a map of that kind the staged text stays.
void Camera::fetchSelectedSet() {
    for (const auto& info : impl_->nodeMaps) {
        const auto found = impl_->identifierToStreamType.find(info.GetIdentifier());
        if (found != impl_->identifierToStreamType.end() && found->second == impl_->streamType) {
            gcstring text;
            Orlix::CFeaturePersistence::SaveToString(text, info.GetNodeMap());
            impl_->stagedStreams[impl_->streamType] = text;
        }
    }
}

gcstring Camera::modifyOFSStagedContent(const gcstring& stagedText) const {
    const auto stream = makeFeatureStream(stagedText);
    if (!stream) {
        Utils::logAndThrow<GenICam::RuntimeException>(
            getSubject(this),
            "The provided configuration set could not be committed because it is invalid.",
            "modifyOFSStagedContent");
    }
    return *stream;
}

void Camera::executeOFSCommit() {
    commitOFS(getStreamType());
}

// The text is active before the camera has seen it, and stays so if the camera refuses it.
void Camera::commitOFS(StreamType type) {
    Guard guard = lockNode();
    const auto staged = impl_->stagedStreams.find(type);
    if (staged == impl_->stagedStreams.end()) {
        return;
    }
    gcstring& active = impl_->activeStreams[type] = modifyOFSStagedContent(staged->second);
    impl_->configurationSetActivePort->writeValue(active.c_str(), false);
    impl_->streamPending[type] = true;
    if (isCameraOpen() && type != StreamType::CameraInstance) {
        try {
            transferOFSActiveContentToCamera(type);
        } catch (...) {
            Utils::logAndThrow<GenICam::RuntimeException>(
                getSubject(this), "Failed to load feature streams from active configuration set.",
                "commitOFS");
        }
    }
    guard.unlock();
    notifySettingsChanged();
}

void Camera::transferOFSActiveContentToCamera(StreamType type) {
    const Guard guard = lockNode();
    if (!impl_->streamPending[type] || impl_->activeStreams.count(type) == 0) {
        return;
    }
    try {
        loadActiveSet(type);
    } catch (const GenICam::GenericException& exception) {
        logCaughtStream(this, loading, exception.GetDescription());
        throw;
    } catch (const std::exception& exception) {
        logCaughtStream(this, loading, exception.what());
        throw GenICam::RuntimeException(exception.what(), __FILE__, __LINE__);
    } catch (...) {
        Utils::logAndThrow<GenICam::RuntimeException>(
            getSubject(this), "Unknown exception caught while loading feature stream.",
            "transferOFSActiveContentToCamera");
    }
}

// An empty text and an absent map write nothing.
void Camera::loadActiveSet(StreamType type) {
    const gcstring& text = impl_->activeStreams[type];
    for (const auto& info : impl_->nodeMaps) {
        const auto found = impl_->identifierToStreamType.find(info.GetIdentifier());
        if (found == impl_->identifierToStreamType.end() || found->second != type) {
            continue;
        }
        if (!text.empty()) {
            Orlix::CFeaturePersistence::LoadFromString(text, info.GetNodeMap(), true);
            info.GetNodeMap()->InvalidateNodes();
        }
        return;
    }
}

void Camera::executeOFSClear() {
    Guard guard = lockNode();
    impl_->stagedStreams.erase(impl_->streamType);
    impl_->activeStreams.erase(impl_->streamType);
    impl_->configurationSetStagedPort->notify();
    impl_->configurationSetActivePort->writeValue("", false);
    guard.unlock();
    notifySettingsChanged();
}

}  // namespace Plugin::OrlixVCellPackageBase
