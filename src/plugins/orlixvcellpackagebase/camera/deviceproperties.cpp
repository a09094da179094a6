// The properties that bind Camera to a device: how a user edits them, and how they are made from a
// chosen device.
#include <algorithm>
#include <cstdlib>

#include "camera/cameraimpl.h"
#include "camera/containers.h"
#include "orlixcamera/deviceinfo.h"

namespace Plugin::OrlixVCellPackageBase {

namespace Key = Orlix::Key;

namespace {

// Of the IP configuration: the address is the device's own, and so a name for it.
constexpr int persistentAddress = 0x100;

bool hasPersistentAddress(const ResourceInfo& device) {
    gcstring text;
    return device.GetPropertyValue(Key::IpConfigCurrent, text) &&
           (std::atoi(text.c_str()) & persistentAddress) != 0;
}

enum class EmptyValue { Copy, Skip };

// False if nothing was copied.
bool copyProperty(const ResourceInfo& device, const char* key, EmptyValue emptyValue,
                  ResourceInfo& result) {
    gcstring value;
    if (!device.GetPropertyValue(key, value) || (value.empty() && emptyValue == EmptyValue::Skip)) {
        return false;
    }
    result.SetPropertyValue(key, value);
    return true;
}

}  // namespace

// The number of a device is a last resort, so that a recipe runs with any camera of that name.
ResourceInfo Camera::getAssignmentProperties(const ResourceInfo& device,
                                             const std::vector<ResourceInfo>& allDevices) {
    ResourceInfo result;
    if (device.IsDeviceClassAvailable()) {
        result.SetPropertyValue(Key::DeviceClass, device.GetDeviceClass());
    }
    if (!copyProperty(device, Key::UserDefinedName, EmptyValue::Skip, result)) {
        if (hasPersistentAddress(device)) {
            // Without an address the device has no name of any kind.
            copyProperty(device, Key::IpAddress, EmptyValue::Skip, result);
        } else {
            copyProperty(device, Key::ModelName, EmptyValue::Copy, result);
        }
    }
    const auto matches =
        std::count_if(allDevices.begin(), allDevices.end(),
                      [&](const ResourceInfo& entry) { return entry.IsSubset(result); });
    if (matches > 1) {
        copyProperty(device, Key::SerialNumber, EmptyValue::Copy, result);
    }
    return result;
}

ResourceInfo Camera::getActiveAssignmentProperties() const {
    ResourceInfo properties;
    for (const auto& [key, value] : impl_->deviceProperties) {
        properties.SetPropertyValue(key, value);
    }
    return properties;
}

void Camera::setActiveAssignmentProperties(const ResourceInfo& properties) {
    Guard guard = lockNode();
    impl_->deviceProperties.clear();
    appendDeviceProperties(properties);
    if (updateDevicePropertyPorts()) {
        guard.unlock();
        notifySettingsChanged();
    }
}

// The list is cleared before anything can fail. Nobody is told of a choice without properties.
void Camera::executeDeviceChoose() {
    Guard guard = lockNode();
    impl_->deviceProperties.clear();
    appendDeviceProperties(getAssignmentProperties(
        getElement(impl_->deviceList, impl_->deviceSelector), impl_->deviceList));
    if (updateDevicePropertyPorts()) {
        guard.unlock();
        notifySettingsChanged();
    }
}

void Camera::appendDeviceProperties(const ResourceInfo& properties) {
    std::vector<gcstring> names;
    properties.GetPropertyNames(names);
    for (const gcstring& name : names) {
        gcstring value;
        static_cast<void>(properties.GetPropertyValue(name, value));
        impl_->deviceProperties.push_back({name, value});
    }
}

bool Camera::updateDevicePropertyPorts() {
    const bool present = !impl_->deviceProperties.empty();
    impl_->devicePropertyKeyPort->setAvailable(present);
    impl_->devicePropertyValuePort->setAvailable(present);
    impl_->devicePropertySelectorPort->setAvailable(present);
    impl_->devicePropertyRemovePort->setAvailable(present);
    updateDevicePropertySelectorMaximum();
    setDevicePropertySelector(0);
    return present;
}

void Camera::setDevicePropertyPortsAvailable(bool available) {
    impl_->devicePropertySelectorPort->setAvailable(available);
    impl_->devicePropertyKeyPort->setAvailable(available);
    impl_->devicePropertyValuePort->setAvailable(available);
    impl_->devicePropertyRemovePort->setAvailable(available);
}

void Camera::updateDevicePropertySelectorMaximum() {
    const Guard guard = lockNode();
    updateSelectorMaximum(*impl_->devicePropertySelectorPort, impl_->deviceProperties.size(),
                          [this](std::uint64_t value) { setDevicePropertySelector(value); });
}

std::uint64_t Camera::getDevicePropertySelector() const {
    const Guard guard = lockNode();
    return impl_->devicePropertySelector;
}

void Camera::setDevicePropertySelector(std::uint64_t value) {
    const Guard guard = lockNode();
    impl_->devicePropertySelector = value;
    impl_->devicePropertySelectorPort->notify();
}

gcstring Camera::getDevicePropertyKey() const {
    const Guard guard = lockNode();
    const auto& list = impl_->deviceProperties;
    const std::uint64_t index = impl_->devicePropertySelector;
    return index < list.size() ? list[index].key : gcstring();
}

gcstring Camera::getDevicePropertyValue() const {
    const Guard guard = lockNode();
    const auto& list = impl_->deviceProperties;
    const std::uint64_t index = impl_->devicePropertySelector;
    return index < list.size() ? list[index].value : gcstring();
}

void Camera::setDevicePropertyKey(const gcstring& text) {
    Guard guard = lockNode();
    if (impl_->devicePropertySelector < impl_->deviceProperties.size()) {
        impl_->deviceProperties[impl_->devicePropertySelector].key = text;
        guard.unlock();
        notifySettingsChanged();
    }
}

void Camera::setDevicePropertyValue(const gcstring& text) {
    Guard guard = lockNode();
    if (impl_->devicePropertySelector < impl_->deviceProperties.size()) {
        impl_->deviceProperties[impl_->devicePropertySelector].value = text;
        guard.unlock();
        notifySettingsChanged();
    }
}

// The selector stays where it is, unlike that of the pins.
void Camera::executeDevicePropertyAdd() {
    Guard guard = lockNode();
    if (impl_->deviceProperties.empty()) {
        setDevicePropertyPortsAvailable(true);
    }
    impl_->deviceProperties.emplace_back();
    updateDevicePropertySelectorMaximum();
    guard.unlock();
    notifySettingsChanged();
}

// With the last entry the selector goes to -1, all ones, and stays there until it is written.
void Camera::executeDevicePropertyRemove() {
    Guard guard = lockNode();
    eraseElement(impl_->deviceProperties, impl_->devicePropertySelector);
    if (impl_->deviceProperties.empty()) {
        setDevicePropertyPortsAvailable(false);
    }
    setDevicePropertySelector(getDevicePropertySelector());
    updateDevicePropertySelectorMaximum();
    guard.unlock();
    notifySettingsChanged();
}

}  // namespace Plugin::OrlixVCellPackageBase
