#include <utility>

#include "gcbase/gcexception.h"
#include "orlixcamera/instantcamera/instantcamera_impl.h"
#include "orlixcamera/instantcamera/messages.h"

namespace Orlix {

using Detail::CallGuarded;
using GenICam::InvalidArgumentException;

namespace {

void requireHandler(const void* handler) {
    if (handler == nullptr) {
        throw InvalidArgumentException("A handler is registered, but a null pointer was passed.",
                                       __FILE__, __LINE__);
    }
}

[[noreturn]] void throwNoEventNode(const gcstring& name) {
    const std::string text =
        "The camera has no node '" + name.str() + "' that its event handler is registered for.";
    throw InvalidArgumentException(text.c_str(), __FILE__, __LINE__);
}

}  // namespace

void CInstantCamera::Impl::RegisterImageEventHandler(CImageEventHandler* handler,
                                                     ERegistrationMode mode, ECleanup cleanup) {
    requireHandler(handler);
    ImageRegistration::Destroy destroy;
    if (cleanup == Cleanup_Delete) {
        destroy = [this](CImageEventHandler& owned) {
            CallGuarded("DestroyImageEventHandler",
                        [&] { owned.DestroyImageEventHandler(camera_); });
        };
    }
    // Held until the handler was told: it may be taken off meanwhile, and ends with its
    // registration.
    const auto added = std::make_shared<ImageRegistration>(*handler);
    const auto replaced =
        imageHandlers_.Add(added, std::move(destroy), mode == RegistrationMode_ReplaceAll);
    for (const auto& old : replaced) {
        old->Remove();
        CallGuarded("OnImageEventHandlerDeregistered",
                    [&] { old->GetHandler().OnImageEventHandlerDeregistered(camera_); });
    }
    CallGuarded("OnImageEventHandlerRegistered",
                [&] { handler->OnImageEventHandlerRegistered(camera_); });
}

bool CInstantCamera::Impl::DeregisterImageEventHandler(CImageEventHandler* handler) {
    const auto taken = imageHandlers_.Take(
        [=](const ImageRegistration& item) { return &item.GetHandler() == handler; });
    if (taken == nullptr) {
        return false;
    }
    taken->Remove();
    CallGuarded("OnImageEventHandlerDeregistered",
                [&] { handler->OnImageEventHandlerDeregistered(camera_); });
    return true;
}

void CInstantCamera::Impl::RegisterConfiguration(CConfigurationEventHandler* handler,
                                                 ERegistrationMode mode, ECleanup cleanup) {
    requireHandler(handler);
    ConfigurationRegistration::Destroy destroy;
    if (cleanup == Cleanup_Delete) {
        destroy = [this](CConfigurationEventHandler& owned) {
            CallGuarded("DestroyConfiguration", [&] { owned.DestroyConfiguration(camera_); });
        };
    }
    const auto added = std::make_shared<ConfigurationRegistration>(*handler);
    const auto replaced =
        configurations_.Add(added, std::move(destroy), mode == RegistrationMode_ReplaceAll);
    for (const auto& old : replaced) {
        old->Remove();
        CallGuarded("OnConfigurationDeregistered",
                    [&] { old->GetHandler().OnConfigurationDeregistered(camera_); });
    }
    CallGuarded("OnConfigurationRegistered", [&] { handler->OnConfigurationRegistered(camera_); });
}

bool CInstantCamera::Impl::DeregisterConfiguration(CConfigurationEventHandler* handler) {
    const auto taken = configurations_.Take(
        [=](const ConfigurationRegistration& item) { return &item.GetHandler() == handler; });
    if (taken == nullptr) {
        return false;
    }
    taken->Remove();
    CallGuarded("OnConfigurationDeregistered",
                [&] { handler->OnConfigurationDeregistered(camera_); });
    return true;
}

Detail::EventRegistration::Destroy CInstantCamera::Impl::destroyerOf(ECleanup cleanup) {
    if (cleanup != Cleanup_Delete) {
        return {};
    }
    return [this](CCameraEventHandler& owned) {
        CallGuarded("DestroyCameraEventHandler", [&] { owned.DestroyCameraEventHandler(camera_); });
    };
}

void CInstantCamera::Impl::RegisterCameraEventHandler(
    const std::shared_ptr<Detail::EventRegistration>& added, ECameraEventRegistrationMode mode,
    ECleanup cleanup) {
    if (settings_->isOpen && !added->Bind(GetMaps()) &&
        added->availability == CameraEventAvailability_Mandatory) {
        throwNoEventNode(added->nodeName);
    }
    // What is replaced ends here, or on the event thread after the call that runs there.
    const auto replaced = eventHandlers_.Add(added, destroyerOf(cleanup),
                                             mode == CameraEventRegistrationMode_ReplaceAll);
    for (const auto& old : replaced) {
        old->Remove();
        old->Unbind();
        CallGuarded("OnCameraEventHandlerDeregistered", [&] {
            old->GetHandler().OnCameraEventHandlerDeregistered(camera_, old->nodeName,
                                                               old->userProvidedId);
        });
    }
    CallGuarded("OnCameraEventHandlerRegistered", [&] {
        added->GetHandler().OnCameraEventHandlerRegistered(camera_, added->nodeName,
                                                           added->userProvidedId);
    });
}

bool CInstantCamera::Impl::DeregisterCameraEventHandler(CCameraEventHandler* handler,
                                                        const gcstring& nodeName) {
    const auto taken = eventHandlers_.Take([&](const Detail::EventRegistration& item) {
        return &item.GetHandler() == handler && item.nodeName == nodeName;
    });
    if (taken == nullptr) {
        return false;
    }
    taken->Remove();
    taken->Unbind();
    CallGuarded("OnCameraEventHandlerDeregistered", [&] {
        handler->OnCameraEventHandlerDeregistered(camera_, nodeName, taken->userProvidedId);
    });
    return true;
}

void CInstantCamera::Impl::bindEventHandlers(const std::shared_ptr<Detail::DeviceMaps>& maps) {
    for (const auto& handler : *eventHandlers_.Get()) {
        if (!handler->Bind(maps) && handler->availability == CameraEventAvailability_Mandatory) {
            throwNoEventNode(handler->nodeName);
        }
    }
}

void CInstantCamera::Impl::notify(Notification notification, const char* name) {
    for (const auto& item : *configurations_.Get()) {
        item->Call([&](CConfigurationEventHandler& handler) {
            CallGuarded(name, [&] { (handler.*notification)(camera_); });
        });
    }
}

void CInstantCamera::Impl::notifyStrictly(Notification notification) {
    for (const auto& item : *configurations_.Get()) {
        item->Call([&](CConfigurationEventHandler& handler) { (handler.*notification)(camera_); });
    }
}

void CInstantCamera::Impl::reportRemoval() noexcept {
    notify(&CConfigurationEventHandler::OnCameraDeviceRemoved, "OnCameraDeviceRemoved");
}

}  // namespace Orlix
