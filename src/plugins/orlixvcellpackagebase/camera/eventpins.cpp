// Event pins of Camera: the list of their configurations, and the outputs made from it.
#include <algorithm>

#include "camera/cameraimpl.h"
#include "camera/containers.h"
#include "camera/eventpinmapping.h"
#include "camera/log.h"
#include "camera/names.h"
#include "camera/pinparsing.h"

namespace Plugin::OrlixVCellPackageBase {

namespace Core = Orlix::DataProcessing::Core;
using namespace CameraLog;

namespace {

bool contains(const std::vector<gcstring>& names, const gcstring& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

}  // namespace

std::uint64_t Camera::getEventPinSelector() const {
    const Guard guard = lockNode();
    return impl_->eventPinSelector;
}

void Camera::setEventPinSelector(std::uint64_t value) {
    const Guard guard = lockNode();
    impl_->eventPinSelector = value;
    impl_->eventPinSelectorPort->notify();
}

void Camera::updateEventPinSelectorMaximum() {
    const Guard guard = lockNode();
    updateSelectorMaximum(*impl_->eventPinSelectorPort, impl_->eventPinConfigurations.size(),
                          [this](std::uint64_t value) { setEventPinSelector(value); });
}

void Camera::setEventPinParametersAvailable(bool available) {
    const Guard guard = lockNode();
    impl_->eventPinAddPort->setAvailable(available);
    setEventPinEntryAvailable(available && !impl_->eventPinConfigurations.empty());
}

void Camera::setEventPinEntryAvailable(bool available) {
    impl_->eventPinSelectorPort->setAvailable(available);
    impl_->eventPinConfigurationPort->setAvailable(available);
    impl_->eventPinRemovePort->setAvailable(available);
}

gcstring Camera::getEventPinConfiguration() const {
    const Guard guard = lockNode();
    return getElement(impl_->eventPinConfigurations, impl_->eventPinSelector);
}

// A text that can't be used is only logged. An entry whose output exists is never changed in place:
// the user removes the pin and adds it anew.
void Camera::setEventPinConfiguration(const gcstring& text) {
    const EventPinMapping changed = getEventMapping(text);
    if (!changed.valid) {
        return;
    }
    const Guard guard = lockNode();
    const std::uint64_t index = impl_->eventPinSelector;
    gcstring& entry = getElement(impl_->eventPinConfigurations, index);
    const EventPinMapping present = getEventMapping(entry);
    if (present.valid && hasOutput(present.pinName)) {
        return;
    }
    const auto& names = impl_->eventOutputNames;
    const auto found = std::find(names.begin(), names.end(), changed.pinName);
    const bool sameSlot =
        found != names.end() && static_cast<std::uint64_t>(found - names.begin()) == index;
    if (found != names.end() && !sameSlot) {
        return;  // another pin has the name
    }
    entry = text;
    if (getState() == Core::NodeState::Stopped) {
        if (sameSlot && hasOutput(changed.pinName) && !isOtherOutput(changed.pinName)) {
            removeOutput(changed.pinName);
        }
        createEventOutputs();
    }
}

// The output waits for a text that can be used.
void Camera::executeEventPinAdd() {
    Guard guard = lockNode();
    const bool first = impl_->eventPinConfigurations.empty();
    impl_->eventPinConfigurations.emplace_back(CameraNames::notYetConfigured);
    if (first) {
        impl_->eventPinSelectorPort->notify();
        setEventPinEntryAvailable(true);
    }
    updateEventPinSelectorMaximum();
    setEventPinSelector(impl_->eventPinConfigurations.size() - 1);
    guard.unlock();
    notifySettingsChanged();
}

// While the node runs nothing changes, but observers are told all the same.
void Camera::executeEventPinRemove() {
    Guard guard = lockNode();
    if (getState() == Core::NodeState::Stopped) {
        removeEventPin();
    }
    if (impl_->eventPinConfigurations.empty()) {
        setEventPinEntryAvailable(false);
    }
    setEventPinSelector(impl_->eventPinSelector);
    updateEventPinSelectorMaximum();
    guard.unlock();
    notifySettingsChanged();
}

void Camera::removeEventPin() {
    const gcstring text = getElement(impl_->eventPinConfigurations, impl_->eventPinSelector);
    const EventPinMapping mapping = getEventMapping(text);
    auto& names = impl_->eventOutputNames;
    if (mapping.valid && contains(names, mapping.pinName)) {
        try {
            if (!isOtherOutput(mapping.pinName)) {
                removeOutput(mapping.pinName);
            }
            // Listed twice or not, the name is free again.
            std::erase(names, mapping.pinName);
        } catch (...) {
            createLogEntry(Severitiy::Warning, category(),
                           "Camera: Unable to remove output \"%s\".", mapping.pinName.c_str());
        }
    }
    eraseElement(impl_->eventPinConfigurations, impl_->eventPinSelector);
}

bool Camera::hasOutput(const gcstring& name) {
    const auto outputs = getOutputDescriptors();
    return std::any_of(outputs.begin(), outputs.end(),
                       [&](const Core::OutputDescriptor& output) { return output.name == name; });
}

// The names of event pins are listed also where the output was refused, as the name is that of the
// node itself or of a chunk pin: those are left alone.
bool Camera::isOtherOutput(const gcstring& name) const {
    return name == CameraNames::imagePin || name == CameraNames::imageCorruptPin ||
           contains(impl_->chunkOutputNames, name);
}

bool Camera::isEventOutput(const gcstring& name) const {
    return contains(impl_->eventOutputNames, name) && !isOtherOutput(name);
}

// Only adds: an output that is there already is refused with a line. Each name is listed first,
// so that the list can hold one twice.
void Camera::createEventOutputs() {
    const Guard guard = lockNode();
    for (const gcstring& text : impl_->eventPinConfigurations) {
        const EventPinMapping mapping = getEventMapping(text);
        if (!mapping.valid) {
            continue;
        }
        impl_->eventOutputNames.push_back(mapping.pinName);
        const char* type = toText(mapping.pinType);
        try {
            createPinOutput(mapping.pinName, "A camera event.", getScalarType(mapping.pinType));
            setUpdateGroup(mapping.pinName, mapping.pinName);  // each event is its own update
            createLogEntry(Severitiy::Debug, category(),
                           "Camera: Add camera event output: %s of type %s",
                           mapping.pinName.c_str(), type);
        } catch (...) {
            createLogEntry(Severitiy::Warning, category(),
                           "Camera: Unable to create output %s of type %s", mapping.pinName.c_str(),
                           type);
        }
    }
}

void Camera::removeEventOutputs() {
    const Guard guard = lockNode();
    for (const gcstring& name : impl_->eventOutputNames) {
        try {
            if (!isOtherOutput(name)) {
                removeOutput(name);
            }
        } catch (...) {
            createLogEntry(Severitiy::Warning, category(), "Camera: Unable to remove pin %s",
                           name.c_str());
        }
    }
    impl_->eventOutputNames.clear();
}

}  // namespace Plugin::OrlixVCellPackageBase
