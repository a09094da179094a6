#include "orlixcamera/instantcamera/instantcamera_impl.h"

#include <utility>

#include "gcbase/gcexception.h"
#include "orlixcamera/instantcamera/messages.h"

namespace Orlix {

using GenICam::InvalidArgumentException;
using GenICam::RuntimeException;

CInstantCamera::Impl::Impl(CInstantCamera& camera)
    : camera_(camera),
      settings_(std::make_shared<Detail::CameraSettings>()),
      counters_(std::make_shared<Detail::StreamCounters>()),
      cameraMap_(Detail::CreateCameraMap(settings_, counters_)),
      events_(eventHandlers_, *counters_,
              [this](Detail::EventRegistration& registration, GenApi::INode* node) {
                  registration.Call([&](CCameraEventHandler& handler) {
                      Detail::CallGuarded("OnCameraEvent", [&] {
                          handler.OnCameraEvent(camera_, registration.userProvidedId, node);
                      });
                  });
              }),
      removal_([this] { reportRemoval(); }) {}

void CInstantCamera::Impl::End() {
    const bool attached = IsDeviceAttached();
    Close();
    if (attached) {
        notify(&CConfigurationEventHandler::OnDestroy, "OnDestroy");
        {
            const Detail::Control::Hold control(control_);
            letGo();
        }
        removal_.Forget();
        notify(&CConfigurationEventHandler::OnDestroyed, "OnDestroyed");
    }
    if (grabThread_.joinable()) {
        grabThread_.join();
    }
    events_.Quit();
    removal_.Quit();
    // Owned handlers end here, while there is still a camera to tell them of.
    static_cast<void>(eventHandlers_.TakeAll());
    static_cast<void>(imageHandlers_.TakeAll());
    static_cast<void>(configurations_.TakeAll());
}

void CInstantCamera::Impl::Attach(ICameraDevice* device, ECleanup cleanup) {
    if (device == nullptr) {
        throw InvalidArgumentException("A camera needs a device, but a null pointer was passed.",
                                       __FILE__, __LINE__);
    }
    if (IsDeviceAttached()) {
        DetachDevice();
    }
    notify(&CConfigurationEventHandler::OnAttach, "OnAttach");
    {
        const Detail::Control::Hold control(control_);
        std::shared_ptr<Detail::DeviceMaps> oldMaps;  // ends with the lock released
        const std::scoped_lock lock(state_);
        if (attached_ != nullptr) {
            throw RuntimeException("Another device was attached to the camera meanwhile.", __FILE__,
                                   __LINE__);
        }
        attached_ = device;
        device_ = device->GetTransportDevice();
        cleanup_ = cleanup;
        oldMaps = std::move(maps_);
    }
    const auto handlers = eventHandlers_.Get();
    for (const auto& handler : *handlers) {
        handler->Unbind();
    }
    notifyStrictly(&CConfigurationEventHandler::OnAttached);
}

bool CInstantCamera::Impl::IsDeviceAttached() const noexcept {
    const std::scoped_lock lock(state_);
    return attached_ != nullptr;
}

CDeviceInfo CInstantCamera::Impl::GetDeviceInfo() const {
    const std::scoped_lock lock(state_);
    return device_ != nullptr ? device_->GetInfo() : CDeviceInfo();
}

std::shared_ptr<Detail::DeviceMaps> CInstantCamera::Impl::GetMaps() const {
    const std::scoped_lock lock(state_);
    if (maps_ == nullptr) {
        throw RuntimeException(
            "The camera has no node maps of a device: none was opened since it was attached.",
            __FILE__, __LINE__);
    }
    return maps_;
}

ICameraDevice* CInstantCamera::Impl::DetachDevice() {
    Close();
    ICameraDevice* device = nullptr;
    {
        const std::scoped_lock lock(state_);
        device = attached_;
    }
    if (device == nullptr) {
        removal_.Forget();
        return nullptr;
    }
    notify(&CConfigurationEventHandler::OnDetach, "OnDetach");
    {
        const Detail::Control::Hold control(control_);
        letGo();
    }
    removal_.Forget();
    notifyStrictly(&CConfigurationEventHandler::OnDetached);
    return device;
}

void CInstantCamera::Impl::letGo() noexcept {
    closeDevice();
    const std::scoped_lock lock(state_);
    attached_ = nullptr;
    device_.reset();
}

void CInstantCamera::Impl::Open() {
    if (settings_->isOpen) {
        return;
    }
    if (!IsDeviceAttached()) {
        throw RuntimeException("The camera can't be opened: no device is attached to it.", __FILE__,
                               __LINE__);
    }
    notify(&CConfigurationEventHandler::OnOpen, "OnOpen");
    {
        const Detail::Control::Hold control(control_);
        if (!openDevice()) {
            return;
        }
    }
    try {
        invalidateMaps();
        bindEventHandlers(GetMaps());
        notifyStrictly(&CConfigurationEventHandler::OnOpened);
    } catch (...) {
        Close();
        throw;
    }
}

bool CInstantCamera::Impl::openDevice() {
    std::shared_ptr<Transport::IDevice> device;
    {
        const std::scoped_lock lock(state_);
        device = device_;
    }
    if (device == nullptr) {
        throw RuntimeException("The camera can't be opened: its device was detached meanwhile.",
                               __FILE__, __LINE__);
    }
    if (settings_->isOpen) {
        return false;
    }
    std::shared_ptr<Detail::DeviceMaps> maps = findMaps();
    try {
        connect(device, maps);
    } catch (...) {
        disconnect(*device, maps.get());
        throw;
    }
    {
        const std::scoped_lock lock(state_);
        maps_ = std::move(maps);
    }
    settings_->isOpen = true;
    return true;
}

void CInstantCamera::Impl::connect(const std::shared_ptr<Transport::IDevice>& device,
                                   std::shared_ptr<Detail::DeviceMaps>& maps) {
    settings_->isRemoved = false;
    removal_.Allow();
    // The sink first, so that no loss goes unheard.
    device->SetSink(this);
    openedHere_ = !device->IsOpen();
    if (openedHere_) {
        device->Open();
    }
    if (maps == nullptr) {
        const Detail::Control::WithoutLock busy(control_);
        maps = std::make_shared<Detail::DeviceMaps>(device, settings_, counters_);
    }
    maps->SetOpen(true);
    counters_->BeginOpening();
    if (settings_->grabCameraEvents) {
        events_.Begin(maps, static_cast<int>(settings_->eventThreadPriority));
    }
}

void CInstantCamera::Impl::disconnect(Transport::IDevice& device, Detail::DeviceMaps* maps) {
    if (maps != nullptr) {
        maps->SetOpen(false);
    }
    removal_.Forbid();
    device.SetSink(nullptr);
    settings_->isRemoved = false;  // it may have gone while it was being opened
    if (openedHere_) {
        device.Close();
    }
}

void CInstantCamera::Impl::Close() {
    StopGrabbing();
    if (!settings_->isOpen) {
        return;
    }
    notify(&CConfigurationEventHandler::OnClose, "OnClose");
    {
        const Detail::Control::Hold control(control_);
        if (!settings_->isOpen) {
            return;
        }
        closeDevice();
    }
    invalidateMaps();
    notify(&CConfigurationEventHandler::OnClosed, "OnClosed");
}

void CInstantCamera::Impl::closeDevice() noexcept {
    if (!settings_->isOpen) {
        return;
    }
    if (const auto run = getRun()) {
        // One that a handler of OnClose has begun.
        run->Silence();
        stop(*run);
    }
    events_.End();
    std::shared_ptr<Transport::IDevice> device;
    {
        const std::scoped_lock lock(state_);
        device = device_;
        maps_->SetOpen(false);
    }
    settings_->isOpen = false;
    dropBuffers();
    if (grabber_ != nullptr) {
        grabber_->Close();
        grabber_.reset();
    }
    device->SetSink(nullptr);
    counters_->EndOpening();  // behind the last event that was lost
    settings_->isRemoved = false;
    if (openedHere_ || cleanup_ == Cleanup_Delete) {
        device->Close();
    }
}

void CInstantCamera::Impl::invalidateMaps() {
    cameraMap_->Invalidate();
    if (const auto maps = findMaps()) {
        maps->Invalidate();
    }
}

std::shared_ptr<Detail::DeviceMaps> CInstantCamera::Impl::findMaps() const {
    const std::scoped_lock lock(state_);
    return maps_;
}

void CInstantCamera::Impl::OnEvent(const Transport::EventMessage& message) {
    events_.Post(message);
}

void CInstantCamera::Impl::OnLost() {
    settings_->isRemoved = true;
    removal_.Post();
}

}  // namespace Orlix
