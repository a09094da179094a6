// The events of the device: switching them on, and the way of a value to its pin.
#include <cstdint>
#include <memory>

#include "camera/cameraimpl.h"
#include "camera/eventpinmapping.h"
#include "camera/log.h"
#include "gcbase/gcexception.h"
#include "genapi/genapi.h"
#include "orlixcamera/cameraeventhandler.h"
#include "orlixdataprocessingcore/core/boolean.h"
#include "orlixdataprocessingcore/core/float.h"
#include "orlixdataprocessingcore/core/graphupdate.h"
#include "orlixdataprocessingcore/core/integer.h"
#include "orlixdataprocessingcore/core/string.h"

namespace Plugin::OrlixVCellPackageBase {

namespace Core = Orlix::DataProcessing::Core;
using Orlix::DataProcessing::Utils::COWPtr;
using Orlix::DataProcessing::Utils::Variant;
using namespace CameraLog;

namespace {

// By the node's type, not by the pin's: a wrong type shows downstream. Empty for other nodes.
Variant readEventValue(GenApi::INode* node) {
    switch (node->GetPrincipalInterfaceType()) {
        case GenApi::intfIInteger:
            return COWPtr<Core::Integer>::make(GenApi::CIntegerPtr(node)->GetValue(false, false));
        case GenApi::intfIBoolean:
            return COWPtr<Core::Boolean>::make(GenApi::CBooleanPtr(node)->GetValue(false, false));
        case GenApi::intfIFloat:
            return COWPtr<Core::Float>::make(GenApi::CFloatPtr(node)->GetValue(false, false));
        case GenApi::intfIString:
            return COWPtr<Core::String>::make(GenApi::CStringPtr(node)->GetValue(false, false));
        default:
            return {};
    }
}

}  // namespace

// Belongs to the library from its registration on. The node outlives it: its camera waits for its
// handlers.
class Camera::EventHandler final : public Orlix::CCameraEventHandler {
public:
    EventHandler(gcstring pinName, gcstring valueName, Camera& owner)
        : pinName_(std::move(pinName)), valueName_(std::move(valueName)), owner_(&owner) {}

    void OnCameraEvent(Orlix::CInstantCamera& camera, std::intptr_t /*userProvidedId*/,
                       GenApi::INode* /*node*/) override {
        GenApi::INode* node = camera.GetNodeMap().GetNode(valueName_);
        if (node == nullptr) {
            return;
        }
        Variant value = readEventValue(node);
        if (!value.isValid()) {
            return;
        }
        // One that came before the run is not of it, however late its call is.
        const Guard guard = owner_->lockNode();
        if (camera.GetEventNumber() > owner_->impl_->lastEventBeforeRun) {
            owner_->outputEventValue(pinName_, std::move(value));
        }
    }
    void DestroyCameraEventHandler(Orlix::CInstantCamera& /*camera*/) override { delete this; }

private:
    const gcstring pinName_;
    const gcstring valueName_;
    Camera* const owner_;
};

// An update of its own. A slow graph holds the library's thread up here.
void Camera::outputEventValue(const gcstring& pinName, Variant value) {
    const Guard guard = lockNode();
    if (!isEventOutput(pinName)) {
        return;  // the pin is gone since the device was opened; another may have its name
    }
    const auto update = getUpdateFactory()->createUpdate(this, nullptr);
    if (update == nullptr) {
        return;
    }
    Core::PinValues outputs;
    outputs.emplace(pinName, std::move(value));
    if (waitUntilSpaceAvailable()) {
        createJob(update, std::move(outputs), {});
    }
}

void Camera::OnAttached(Orlix::CInstantCamera& camera) {
    try {
        camera.GrabCameraEvents.SetValue(true);
    } catch (const GenICam::GenericException& exception) {
        createLogEntry(Severitiy::Error, category(),
                       "Camera: Unable to turn GrabCameraEvents on. %s",
                       exception.GetDescription());
    }
}

void Camera::OnDetached(Orlix::CInstantCamera& camera) {
    try {
        camera.GrabCameraEvents.SetValue(false);
    } catch (const GenICam::GenericException& exception) {
        createLogEntry(Severitiy::Error, category(),
                       "Camera: Unable to turn GrabCameraEvents off. %s",
                       exception.GetDescription());
    }
}

// A device without events has none; one that refuses an event loses that pin's values only.
void Camera::OnOpened(Orlix::CInstantCamera& camera) {
    // Those of an earlier opening may be for pins that are gone.
    camera.DeregisterCameraEventHandlers();
    if (impl_->eventPinConfigurations.empty()) {
        return;
    }
    GenApi::INode* selector = camera.GetNodeMap().GetNode("EventSelector");
    if (selector == nullptr || !GenApi::IsWritable(selector)) {
        return;
    }
    auto mode = Orlix::CameraEventRegistrationMode_ReplaceAll;
    for (const gcstring& text : impl_->eventPinConfigurations) {
        if (openEventPin(camera, text, mode)) {
            mode = Orlix::CameraEventRegistrationMode_Append;
        }
    }
}

// Whether a handler was registered; why not is in the log.
bool Camera::openEventPin(Orlix::CInstantCamera& camera, const gcstring& configuration,
                          Orlix::ECameraEventRegistrationMode mode) {
    EventPinMapping mapping;
    try {
        mapping = getEventMapping(configuration);
        createLogEntry(Severitiy::Debug, category(),
                       "Camera: Try to register event \"%s\" and output \"%s\" as pin \"%s\"",
                       mapping.eventName.c_str(), mapping.valueName.c_str(),
                       mapping.pinName.c_str());
        if (mapping.valid && !isOtherOutput(mapping.pinName) &&
            turnEventOn(camera, mapping.eventName)) {
            registerEventHandler(camera, mapping, mode);
            return true;
        }
    } catch (const GenICam::GenericException&) {
        createLogEntry(Severitiy::Information, category(),
                       "Camera: Unable to turn on event notification for \"%s\"",
                       mapping.eventName.c_str());
    } catch (...) {
        createLogEntry(Severitiy::Error, category(),
                       "Camera: Unexpected error in Camera::OnOpened()");
    }
    return false;
}

// False if the device's features for events are none.
bool Camera::turnEventOn(Orlix::CInstantCamera& camera, const gcstring& eventName) {
    createLogEntry(Severitiy::Debug, category(), "Camera: Set enumeration selector to '%s'",
                   eventName.c_str());
    const GenApi::CEnumerationPtr selector(camera.GetNodeMap().GetNode("EventSelector"));
    if (!selector) {
        return false;
    }
    selector->FromString(eventName, true);
    createLogEntry(Severitiy::Debug, category(), "Camera: Turn event notification on");
    const GenApi::CEnumerationPtr notification(camera.GetNodeMap().GetNode("EventNotification"));
    if (!notification) {
        return false;
    }
    notification->FromString("On", true);
    return true;
}

void Camera::registerEventHandler(Orlix::CInstantCamera& camera, const EventPinMapping& mapping,
                                  Orlix::ECameraEventRegistrationMode mode) {
    createLogEntry(Severitiy::Debug, category(), "Camera: RegisterCameraEventHandler");
    auto handler = std::make_unique<EventHandler>(mapping.pinName, mapping.valueName, *this);
    camera.RegisterCameraEventHandler(
        handler.get(), mapping.valueName, reinterpret_cast<std::intptr_t>(&impl_->instantCamera),
        mode, Orlix::Cleanup_Delete, Orlix::CameraEventAvailability_Optional);
    static_cast<void>(handler.release());
}

}  // namespace Plugin::OrlixVCellPackageBase
