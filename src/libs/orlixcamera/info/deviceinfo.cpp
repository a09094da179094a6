#include "orlixcamera/deviceinfo.h"

namespace Orlix {

namespace {

gcstring find(const CInfoBase& properties, const char* key) {
    gcstring value;
    return properties.GetPropertyValue(key, value) ? value : gcstring();
}

}  // namespace

CDeviceInfo::CDeviceInfo() = default;
CDeviceInfo::CDeviceInfo(const CInfoBase& properties) : CInfoBase(properties) {}
CDeviceInfo::~CDeviceInfo() = default;
CDeviceInfo::CDeviceInfo(const CDeviceInfo&) = default;
CDeviceInfo& CDeviceInfo::operator=(const CDeviceInfo&) = default;

gcstring CDeviceInfo::GetFullName() const {
    return find(*this, Key::FullName);
}

gcstring CDeviceInfo::GetFriendlyName() const {
    return find(*this, Key::FriendlyName);
}

gcstring CDeviceInfo::GetModelName() const {
    return find(*this, Key::ModelName);
}

gcstring CDeviceInfo::GetVendorName() const {
    return find(*this, Key::VendorName);
}

gcstring CDeviceInfo::GetSerialNumber() const {
    return find(*this, Key::SerialNumber);
}

gcstring CDeviceInfo::GetUserDefinedName() const {
    return find(*this, Key::UserDefinedName);
}

}  // namespace Orlix
