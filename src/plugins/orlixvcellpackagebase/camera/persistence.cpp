// How Camera lives in a recipe: what binds it to a device, not the device itself, so that a recipe
// can be loaded on a computer without the camera.
#include <algorithm>
#include <cstdint>
#include <limits>

#include "camera/cameraimpl.h"
#include "camera/log.h"
#include "camera/names.h"
#include "gcbase/gcexception.h"
#include "orlixdataprocessingcore/core/settings.h"

namespace Plugin::OrlixVCellPackageBase {

namespace Utils = Orlix::DataProcessing::Utils;
using namespace CameraLog;
using namespace CameraNames;
using Orlix::DataProcessing::Core::ISettings;
using Orlix::DataProcessing::Core::NodeState;
using Orlix::DataProcessing::Core::SettingsPath;

namespace {

template <typename Element>
SettingsPath makePath(const gcstring& key, const Element& element) {
    SettingsPath path(key);
    path.addElement(element);
    return path;
}

void saveTexts(ISettings& store, const gcstring& key, const std::vector<gcstring>& texts) {
    store.setArraySize(SettingsPath(key), texts.size());
    for (std::size_t i = 0; i < texts.size(); ++i) {
        store.setString(makePath(key, i), texts[i]);
    }
}

void loadTexts(ISettings& store, const gcstring& key, std::vector<gcstring>& texts) {
    const std::size_t size = store.getArraySize(SettingsPath(key));
    for (std::size_t i = 0; i < size; ++i) {
        texts.push_back(store.getString(makePath(key, i)));
    }
}

// One that no mode can hold becomes the nearest that it can, which is no mode either; cut, it might
// be one.
std::int64_t loadMode(ISettings& store, const gcstring& key) {
    using Number = std::numeric_limits<std::int32_t>;
    return std::clamp(store.getInteger(SettingsPath(key)), std::int64_t{Number::min()},
                      std::int64_t{Number::max()});
}

}  // namespace

void Camera::saveSettings(const std::shared_ptr<ISettings>& settings) {
    if (settings == nullptr) {
        Utils::logAndThrow<GenICam::InvalidArgumentException>(
            getSubject(this), "No settings passed.", "saveSettings");
    }
    const Guard guard = lockNode();
    if (getState() != NodeState::Stopped) {
        Utils::logAndThrow<GenICam::RuntimeException>(
            getSubject(this), "vCell must not be running to save.", "saveSettings");
    }
    saveLists(*settings);
    settings->setInteger(SettingsPath(acquisitionModeKey), impl_->acquisitionModePort->getValue());
    settings->setInteger(SettingsPath(fixCorruptImagesKey),
                         impl_->fixCorruptImagesPort->getValue());
    saveActiveSets(*settings);
}

// Of two properties with one key the later value stays. Event pins without a text are left out.
void Camera::saveLists(ISettings& store) const {
    if (!impl_->deviceProperties.empty()) {
        const auto section = store.createSection(SettingsPath(devicePropertiesKey));
        for (const auto& [key, value] : impl_->deviceProperties) {
            section->setString(SettingsPath(key), value);
        }
    }
    if (!impl_->eventPinConfigurations.empty()) {
        std::vector<gcstring> configured;
        std::copy_if(impl_->eventPinConfigurations.begin(), impl_->eventPinConfigurations.end(),
                     std::back_inserter(configured),
                     [](const gcstring& text) { return !(text == notYetConfigured); });
        saveTexts(store, eventConfigurationKey, configured);
    }
    if (!impl_->chunkPinConfigurations.empty()) {
        saveTexts(store, chunkPinConfigurationsKey, impl_->chunkPinConfigurations);
    }
}

void Camera::saveActiveSets(ISettings& store) const {
    if (impl_->activeStreams.empty()) {
        return;
    }
    const auto section = store.createSection(SettingsPath(featureStreamsKey));
    for (const auto& [type, text] : impl_->activeStreams) {
        const auto identifier = impl_->streamTypeToIdentifier.find(type);
        if (identifier != impl_->streamTypeToIdentifier.end() && !text.empty()) {
            section->setString(SettingsPath(identifier->second), text);
        }
    }
}

// What the store throws passes unchanged; everything is then reset, and what was read stays.
void Camera::loadSettings(const std::shared_ptr<ISettings>& settings) {
    if (settings == nullptr) {
        Utils::logAndThrow<GenICam::InvalidArgumentException>(
            getSubject(this), "No settings passed.", "loadSettings");
    }
    Guard guard = lockNode();
    if (getState() != NodeState::Stopped) {
        Utils::logAndThrow<GenICam::RuntimeException>(
            getSubject(this), "vCell must not be running to load.", "loadSettings");
    }
    resetSettings();
    loadLists(*settings);
    loadActiveSets(*settings);
    loadModes(*settings);
    updatePortsOfLists();
    guard.unlock();
    notifySettingsChanged();
}

void Camera::resetSettings() {
    impl_->activeStreams.clear();
    impl_->stagedStreams.clear();
    impl_->deviceProperties.clear();
    impl_->eventPinConfigurations.clear();
    impl_->chunkPinConfigurations.clear();
    impl_->acquisitionModePort->setTypedValue(AcquisitionMode::Continuous);
    impl_->fixCorruptImagesPort->setTypedValue(FixCorruptImages::Off);
}

// Outputs of event pins are only added, and without a key those of before stay.
void Camera::loadLists(ISettings& store) {
    if (store.contains(SettingsPath(devicePropertiesKey))) {
        for (const gcstring& name : store.getKeys(SettingsPath(devicePropertiesKey))) {
            impl_->deviceProperties.push_back(
                {name, store.getString(makePath(devicePropertiesKey, name))});
        }
    }
    if (store.contains(SettingsPath(eventConfigurationKey))) {
        loadTexts(store, eventConfigurationKey, impl_->eventPinConfigurations);
        createEventOutputs();
    }
    if (store.contains(SettingsPath(chunkPinConfigurationsKey))) {
        loadTexts(store, chunkPinConfigurationsKey, impl_->chunkPinConfigurations);
        rebuildChunkPins();
    }
}

// The sets reach a device with the next allocation, also if one is open now.
void Camera::loadActiveSets(ISettings& store) {
    if (!store.contains(SettingsPath(featureStreamsKey))) {
        return;
    }
    for (const gcstring& name : store.getKeys(SettingsPath(featureStreamsKey))) {
        const gcstring text = store.getString(makePath(featureStreamsKey, name));
        const auto found = impl_->identifierToStreamType.find(name);
        if (found == impl_->identifierToStreamType.end()) {
            continue;
        }
        impl_->activeStreams[found->second] = text;
        // The port shows the selected set, which may be another one.
        impl_->configurationSetActivePort->writeValue(
            impl_->activeStreams[impl_->streamType].c_str(), false);
        impl_->streamPending[found->second] = true;
    }
}

// A number that is no mode is kept, and shows at the next start.
void Camera::loadModes(ISettings& store) {
    if (store.contains(SettingsPath(acquisitionModeKey))) {
        impl_->acquisitionModePort->setValue(loadMode(store, acquisitionModeKey), false);
    }
    if (store.contains(SettingsPath(fixCorruptImagesKey))) {
        impl_->fixCorruptImagesPort->setValue(loadMode(store, fixCorruptImagesKey), false);
    }
}

// An empty list of properties leaves its ports as they are.
void Camera::updatePortsOfLists() {
    if (!impl_->deviceProperties.empty()) {
        setDevicePropertyPortsAvailable(true);
    }
    updateDevicePropertySelectorMaximum();
    setDevicePropertySelector(0);
    setEventPinParametersAvailable(true);
    updateEventPinSelectorMaximum();
    setEventPinSelector(0);
    setChunkPinParametersAvailable(true);
    updateChunkPinSelectorMaximum();
    setChunkPinSelector(0);
}

}  // namespace Plugin::OrlixVCellPackageBase
