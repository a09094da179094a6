#include <type_traits>
#include <utility>

#include "gcbase/gcexception.h"
#include "orlixcamera/instantcamera/instantcamera_impl.h"
#include "orlixcamera/instantcamera/messages.h"

namespace Orlix {

using Detail::CallGuarded;
using Detail::EventRegistration;
using GenICam::InvalidArgumentException;
using ImageRegistration = Detail::Registration<CImageEventHandler>;
using ConfigurationRegistration = Detail::Registration<CConfigurationEventHandler>;

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

// ---- In what the three kinds of handlers differ: what they are told

void tellAdded(CInstantCamera& camera, const ImageRegistration& item) {
    CallGuarded("OnImageEventHandlerRegistered",
                [&] { item.GetHandler().OnImageEventHandlerRegistered(camera); });
}

void tellAdded(CInstantCamera& camera, const ConfigurationRegistration& item) {
    CallGuarded("OnConfigurationRegistered",
                [&] { item.GetHandler().OnConfigurationRegistered(camera); });
}

void tellAdded(CInstantCamera& camera, const EventRegistration& item) {
    CallGuarded("OnCameraEventHandlerRegistered", [&] {
        item.GetHandler().OnCameraEventHandlerRegistered(camera, item.nodeName,
                                                         item.userProvidedId);
    });
}

void tellTakenOff(CInstantCamera& camera, const ImageRegistration& item) {
    CallGuarded("OnImageEventHandlerDeregistered",
                [&] { item.GetHandler().OnImageEventHandlerDeregistered(camera); });
}

void tellTakenOff(CInstantCamera& camera, const ConfigurationRegistration& item) {
    CallGuarded("OnConfigurationDeregistered",
                [&] { item.GetHandler().OnConfigurationDeregistered(camera); });
}

void tellTakenOff(CInstantCamera& camera, const EventRegistration& item) {
    CallGuarded("OnCameraEventHandlerDeregistered", [&] {
        item.GetHandler().OnCameraEventHandlerDeregistered(camera, item.nodeName,
                                                           item.userProvidedId);
    });
}

void destroy(CInstantCamera& camera, CImageEventHandler& owned) {
    CallGuarded("DestroyImageEventHandler", [&] { owned.DestroyImageEventHandler(camera); });
}

void destroy(CInstantCamera& camera, CConfigurationEventHandler& owned) {
    CallGuarded("DestroyConfiguration", [&] { owned.DestroyConfiguration(camera); });
}

void destroy(CInstantCamera& camera, CCameraEventHandler& owned) {
    CallGuarded("DestroyCameraEventHandler", [&] { owned.DestroyCameraEventHandler(camera); });
}

// ---- What they have in common

// After this call, or on the thread of a call of the handler that runs, an owned one ends.
template <class Item>
void takeOff(CInstantCamera& camera, Item& item) {
    item.Remove();
    if constexpr (std::is_same_v<Item, EventRegistration>) {
        item.Unbind();
    }
    tellTakenOff(camera, item);
}

// The caller holds the registration until the handler was told: it may be taken off meanwhile, and
// ends with it.
template <class Item>
void add(CInstantCamera& camera, Detail::HandlerList<Item>& list, const std::shared_ptr<Item>& item,
         ECleanup cleanup, bool replaceAll) {
    typename Item::Destroy destroyer;
    if (cleanup == Cleanup_Delete) {
        destroyer = [&camera](auto& owned) { destroy(camera, owned); };
    }
    for (const auto& old : list.Add(item, std::move(destroyer), replaceAll)) {
        takeOff(camera, *old);
    }
    tellAdded(camera, *item);
}

template <class Item, class Predicate>
bool takeOffFirst(CInstantCamera& camera, Detail::HandlerList<Item>& list, Predicate&& fits) {
    const std::shared_ptr<Item> taken = list.Take(std::forward<Predicate>(fits));
    if (taken != nullptr) {
        takeOff(camera, *taken);
    }
    return taken != nullptr;
}

template <class Handler>
auto isOf(const Handler* handler) {
    return [handler](const auto& item) { return &item.GetHandler() == handler; };
}

}  // namespace

void CInstantCamera::Impl::RegisterImageEventHandler(CImageEventHandler* handler,
                                                     ERegistrationMode mode, ECleanup cleanup) {
    requireHandler(handler);
    add(camera_, imageHandlers_, std::make_shared<ImageRegistration>(*handler), cleanup,
        mode == RegistrationMode_ReplaceAll);
}

bool CInstantCamera::Impl::DeregisterImageEventHandler(CImageEventHandler* handler) {
    return takeOffFirst(camera_, imageHandlers_, isOf(handler));
}

void CInstantCamera::Impl::RegisterConfiguration(CConfigurationEventHandler* handler,
                                                 ERegistrationMode mode, ECleanup cleanup) {
    requireHandler(handler);
    add(camera_, configurations_, std::make_shared<ConfigurationRegistration>(*handler), cleanup,
        mode == RegistrationMode_ReplaceAll);
}

bool CInstantCamera::Impl::DeregisterConfiguration(CConfigurationEventHandler* handler) {
    return takeOffFirst(camera_, configurations_, isOf(handler));
}

void CInstantCamera::Impl::RegisterCameraEventHandler(
    CCameraEventHandler* handler, const gcstring& nodeName, std::intptr_t userProvidedId,
    ECameraEventRegistrationMode mode, ECleanup cleanup, ECameraEventAvailability availability) {
    requireHandler(handler);
    const auto item =
        std::make_shared<EventRegistration>(*handler, nodeName, userProvidedId, availability);
    if (settings_->isOpen && !item->Bind(GetMaps()) &&
        availability == CameraEventAvailability_Mandatory) {
        throwNoEventNode(nodeName);
    }
    add(camera_, eventHandlers_, item, cleanup, mode == CameraEventRegistrationMode_ReplaceAll);
}

bool CInstantCamera::Impl::DeregisterCameraEventHandler(CCameraEventHandler* handler,
                                                        const gcstring& nodeName) {
    return takeOffFirst(camera_, eventHandlers_, [&](const EventRegistration& item) {
        return &item.GetHandler() == handler && item.nodeName == nodeName;
    });
}

void CInstantCamera::Impl::DeregisterCameraEventHandlers() {
    const auto taken = eventHandlers_.TakeAll();
    for (const auto& item : *taken) {
        takeOff(camera_, *item);
    }
}

void CInstantCamera::Impl::bindEventHandlers(const std::shared_ptr<Detail::DeviceMaps>& maps) {
    const auto handlers = eventHandlers_.Get();
    for (const auto& handler : *handlers) {
        if (!handler->Bind(maps) && handler->availability == CameraEventAvailability_Mandatory) {
            throwNoEventNode(handler->nodeName);
        }
    }
}

void CInstantCamera::Impl::notify(Notification notification, const char* name) {
    const auto items = configurations_.Get();  // kept: a handler may change the list
    for (const auto& item : *items) {
        item->Call([&](CConfigurationEventHandler& handler) {
            CallGuarded(name, [&] { (handler.*notification)(camera_); });
        });
    }
}

void CInstantCamera::Impl::notifyStrictly(Notification notification) {
    const auto items = configurations_.Get();  // kept: a handler may change the list
    for (const auto& item : *items) {
        item->Call([&](CConfigurationEventHandler& handler) { (handler.*notification)(camera_); });
    }
}

void CInstantCamera::Impl::reportRemoval() noexcept {
    notify(&CConfigurationEventHandler::OnCameraDeviceRemoved, "OnCameraDeviceRemoved");
}

}  // namespace Orlix
