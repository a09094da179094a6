// Chunk pins of Camera: the list of their configurations, and the outputs made from it.
#include <algorithm>
#include <stdexcept>

#include "camera/cameraimpl.h"
#include "camera/containers.h"
#include "camera/log.h"
#include "camera/pinparsing.h"

namespace Plugin::OrlixVCellPackageBase {

namespace Core = Orlix::DataProcessing::Core;
using Orlix::DataProcessing::Utils::TypeInfo;
using namespace CameraLog;

namespace {

// A pin with several values is an array. Throws std::out_of_range for a pin without any.
TypeInfo getOutputType(const PinMapping& mapping) {
    const auto& values = getValue(mapping.properties, PinProperty::ValueName);
    if (values.empty()) {
        throw std::out_of_range("invalid map<K, T> key");  // as for one that is not there at all
    }
    return values.size() < 2 ? getScalarType(mapping.pinType) : getArrayType(mapping.pinType);
}

}  // namespace

std::uint64_t Camera::getChunkPinSelector() const {
    const Guard guard = lockNode();
    return impl_->chunkPinSelector;
}

void Camera::setChunkPinSelector(std::uint64_t value) {
    const Guard guard = lockNode();
    impl_->chunkPinSelector = value;
    impl_->chunkPinSelectorPort->notify();
}

void Camera::updateChunkPinSelectorMaximum() {
    const Guard guard = lockNode();
    updateSelectorMaximum(*impl_->chunkPinSelectorPort, impl_->chunkPinConfigurations.size(),
                          [this](std::uint64_t value) { setChunkPinSelector(value); });
}

void Camera::setChunkPinParametersAvailable(bool available) {
    const Guard guard = lockNode();
    impl_->chunkPinAddPort->setAvailable(available);
    setChunkPinEntryAvailable(available && !impl_->chunkPinConfigurations.empty());
}

void Camera::setChunkPinEntryAvailable(bool available) {
    impl_->chunkPinSelectorPort->setAvailable(available);
    impl_->chunkPinValuePort->setAvailable(available);
    impl_->chunkPinRemovePort->setAvailable(available);
}

gcstring Camera::getChunkPinValue() const {
    const Guard guard = lockNode();
    const auto& list = impl_->chunkPinConfigurations;
    return impl_->chunkPinSelector < list.size() ? list[impl_->chunkPinSelector] : gcstring();
}

// A text whose properties are bad, but which declares a pin, is stored all the same: the rebuild
// then tells of it again. A text that declares nothing is dropped.
void Camera::setChunkPinValue(const gcstring& text) {
    PinMappingMap pins;
    gcstring pinName;
    if (parsePins(PinMappingType::ChunkData, {text}, pins) == ParseResult::Parsed &&
        !pins.empty()) {
        pinName = pins.begin()->first;
    }
    Guard guard = lockNode();
    auto& list = impl_->chunkPinConfigurations;
    if (pins.empty() || getState() != Core::NodeState::Stopped ||
        impl_->chunkPinSelector >= list.size()) {
        return;
    }
    const auto& names = impl_->chunkOutputNames;
    if (hasOutput(pinName) || std::find(names.begin(), names.end(), pinName) != names.end()) {
        return;
    }
    list[impl_->chunkPinSelector] = text;
    rebuildChunkPins();
    guard.unlock();
    notifySettingsChanged();
}

void Camera::executeChunkPinAdd() {
    Guard guard = lockNode();
    if (impl_->chunkPinConfigurations.empty()) {
        setChunkPinEntryAvailable(true);
    }
    impl_->chunkPinConfigurations.emplace_back();
    updateChunkPinSelectorMaximum();
    setChunkPinSelector(impl_->chunkPinConfigurations.size() - 1);
    guard.unlock();
    notifySettingsChanged();
}

void Camera::executeChunkPinRemove() {
    Guard guard = lockNode();
    if (getState() == Core::NodeState::Stopped) {
        eraseElement(impl_->chunkPinConfigurations, impl_->chunkPinSelector);
    }
    if (impl_->chunkPinConfigurations.empty()) {
        setChunkPinEntryAvailable(false);
    }
    setChunkPinSelector(impl_->chunkPinSelector);
    updateChunkPinSelectorMaximum();
    rebuildChunkPins();
    guard.unlock();
    notifySettingsChanged();
}

// The entries are one text, so that a bad one ends the reading: those behind it have no pins until
// it is removed.
void Camera::rebuildChunkPins() {
    const Guard guard = lockNode();
    PinMappingMap pins;
    static_cast<void>(parsePins(PinMappingType::ChunkData, impl_->chunkPinConfigurations, pins));
    if (getState() != Core::NodeState::Stopped) {
        return;
    }
    impl_->chunkPinMappings.clear();
    removeChunkOutputs();
    for (const auto& [name, mapping] : pins) {
        createChunkOutput(mapping);
    }
}

void Camera::removeChunkOutputs() {
    for (const gcstring& name : impl_->chunkOutputNames) {
        try {
            removeOutput(name);
        } catch (...) {
            createLogEntry(Severitiy::Warning, category(),
                           "Camera: Unable to remove chunk data pin %s", name.c_str());
        }
    }
    impl_->chunkOutputNames.clear();
}

void Camera::createChunkOutput(const PinMapping& mapping) {
    const gcstring& name = mapping.pinName;
    const char* type = toText(mapping.pinType);
    if (hasOutput(name) || impl_->chunkPinMappings.count(name) != 0) {
        createLogEntry(Severitiy::Warning, category(), "Camera: Duplicate name '%s' as pin.",
                       name.c_str());
        return;
    }
    try {
        createPinOutput(name, "A chunk data pin.", getOutputType(mapping));
        createLogEntry(Severitiy::Debug, category(),
                       "Camera: Add camera chunk data output: %s of type %s", name.c_str(), type);
        impl_->chunkPinMappings[name] = mapping;
        impl_->chunkOutputNames.push_back(name);
    } catch (...) {
        createLogEntry(Severitiy::Warning, category(),
                       "Camera: Unable to create output %s of type %s", name.c_str(), type);
    }
}

}  // namespace Plugin::OrlixVCellPackageBase
