// How Camera takes a device for itself and gives it back.
#include <array>

#include "camera/allocationstep.h"
#include "camera/cameraimpl.h"
#include "camera/log.h"
#include "camera/names.h"
#include "gcbase/gcexception.h"

namespace Plugin::OrlixVCellPackageBase {

namespace Core = Orlix::DataProcessing::Core;
namespace Utils = Orlix::DataProcessing::Utils;
using namespace CameraLog;
using namespace CameraNames;

namespace {

// Those that are there without a device: of the parameters, and of the camera object itself.
constexpr std::size_t lastingNodeMaps = 2;

}  // namespace

Core::ErrorList Camera::allocateAdditionalResources(
    const std::shared_ptr<Core::IResourcePool>& pool, bool flag) {
    Guard guard = lockNode();
    Core::ErrorList errors;
    runAllocationStep(errors, getSubject(this), "allocating camera resource.", [&] {
        if (impl_->resourcePool != nullptr && impl_->device == nullptr) {
            allocateCamera(guard, flag);
        }
        return Core::ErrorList();
    });
    runAllocationStep(errors, getSubject(this), "allocating additional resources.",
                      [&] { return AdvancedNode::allocateAdditionalResources(pool, flag); });
    return errors;
}

// A failure to attach or to open leaves the device as it is; only a free repairs that.
void Camera::allocateCamera(Guard& guard, bool flag) {
    pickDevice(flag);
    try {
        // Can be set only before the camera is opened.
        transferOFSActiveContentToCamera(StreamType::CameraInstance);
    } catch (...) {
        impl_->device.reset();
        Utils::logAndThrow<GenICam::RuntimeException>(
            getSubject(this), "Failed to load camera feature stream from active configuration set.",
            "allocateAdditionalResources");
    }
    impl_->instantCamera.Attach(impl_->device.get(), Orlix::Cleanup_Delete);
    impl_->instantCamera.Open();
    resetDeviceRemovedError();
    showSelectedDevice();
    publishDevice();
    // Held beyond the emission below, whatever its receivers do to the node.
    const std::shared_ptr<Impl::Signals> signals = impl_->signals;
    transferDeviceSets(guard);
    updateFetchAvailability();
    guard.unlock();
    signals->nodeMapsChanged();
    guard.lock();
    impl_->allocatedWithFlag = flag;
}

void Camera::publishDevice() {
    const Orlix::CInstantCamera& camera = impl_->instantCamera;
    impl_->nodeMaps.emplace_back(transportLayerMap, "Device Transport Layer",
                                 &camera.GetTLNodeMap());
    impl_->nodeMaps.emplace_back(cameraDeviceMap, "Camera", &camera.GetNodeMap());
    impl_->nodeMaps.emplace_back(streamGrabberMap, "Stream Parameters",
                                 &camera.GetStreamGrabberNodeMap());
    createLogEntry(Severitiy::Information, category(), "Camera %p: Using camera \"%s\"",
                   static_cast<const void*>(this),
                   impl_->device->GetDeviceInfo().GetFullName().c_str());
}

// The camera's own settings come last, since they may depend on what the others configure. Nobody
// has been told of the maps yet, so nobody is told that they are gone.
void Camera::transferDeviceSets(Guard& guard) {
    try {
        transferOFSActiveContentToCamera(StreamType::StreamGrabber);
        transferOFSActiveContentToCamera(StreamType::DeviceTransportLayer);
        transferOFSActiveContentToCamera(StreamType::CameraDevice);
    } catch (...) {
        withdrawDevice();
        releaseCamera();
        showNoDeviceSelected();
        guard.unlock();
        waitForCameraDeviceRemoval();
        resetDeviceRemovedError();
        Utils::logAndThrow<GenICam::RuntimeException>(
            getSubject(this), "Failed to load feature streams from active configuration set.",
            "allocateAdditionalResources");
    }
}

void Camera::freeAdditionalResources(bool flag) {
    Guard guard = lockNode();
    if (!flag || impl_->allocatedWithFlag) {
        if (impl_->device != nullptr) {
            freeCamera(guard);
        } else {
            // A removal that has just let the device go would take the next one's for its own.
            endRemoval(guard);
        }
        resetDeviceRemovedError();
    }
    guard.unlock();
    AdvancedNode::freeAdditionalResources(flag);
}

void Camera::freeCamera(Guard& guard) {
    withdrawDevice();
    // Receivers let go of the maps while the camera is still open.
    const std::shared_ptr<Impl::Signals> signals = impl_->signals;
    guard.unlock();
    signals->nodeMapsChanged();
    guard.lock();

    releaseCamera();
    showNoDeviceSelected();
    impl_->allocatedWithFlag = false;
    updateFetchAvailability();
    endRemoval(guard);
}

// A removal that is at work needs the lock.
void Camera::endRemoval(Guard& guard) {
    guard.unlock();
    waitForCameraDeviceRemoval();
    guard.lock();
}

void Camera::releaseCamera() {
    const Guard guard = lockNode();
    Orlix::CInstantCamera& camera = impl_->instantCamera;
    if (camera.IsDeviceAttached()) {
        if (camera.IsOpen()) {
            camera.Close();
        }
        camera.DetachDevice();
    }
    impl_->device.reset();
}

bool Camera::isCameraOpen() const {
    return impl_->instantCamera.IsOpen();
}

void Camera::withdrawDevice() {
    auto& maps = impl_->nodeMaps;
    if (maps.size() > lastingNodeMaps) {
        maps.erase(maps.begin() + lastingNodeMaps, maps.end());
    }
}

void Camera::showSelectedDevice() {
    setSelectedDevicePortsAvailable(true);
    const Orlix::CDeviceInfo& info = impl_->device->GetDeviceInfo();
    writeSelectedDevice({info.GetModelName(), info.GetVendorName(), info.GetSerialNumber(),
                         info.GetUserDefinedName()});
}

void Camera::showNoDeviceSelected() {
    setSelectedDevicePortsAvailable(false);
    writeSelectedDevice({noDeviceSelected, noDeviceSelected, noDeviceSelected, noDeviceSelected});
}

void Camera::setSelectedDevicePortsAvailable(bool available) {
    impl_->selectedDeviceModelNamePort->setAvailable(available);
    impl_->selectedDeviceVendorNamePort->setAvailable(available);
    impl_->selectedDeviceSerialNumberPort->setAvailable(available);
    impl_->selectedDeviceUserDefinedNamePort->setAvailable(available);
}

// Model, vendor, serial number, user-defined name.
void Camera::writeSelectedDevice(const std::array<gcstring, 4>& texts) {
    impl_->selectedDeviceModelNamePort->writeValue(texts[0].c_str(), false);
    impl_->selectedDeviceVendorNamePort->writeValue(texts[1].c_str(), false);
    impl_->selectedDeviceSerialNumberPort->writeValue(texts[2].c_str(), false);
    impl_->selectedDeviceUserDefinedNamePort->writeValue(texts[3].c_str(), false);
}

}  // namespace Plugin::OrlixVCellPackageBase
