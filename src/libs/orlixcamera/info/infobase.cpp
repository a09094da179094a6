#include "orlixcamera/infobase.h"

#include <algorithm>

namespace Orlix {

namespace {

const gcstring& deviceClassKey() {
    static const gcstring key("DeviceClass");
    return key;
}

}  // namespace

CInfoBase::CInfoBase() = default;
CInfoBase::CInfoBase(const CInfoBase&) = default;
CInfoBase& CInfoBase::operator=(const CInfoBase&) = default;
CInfoBase::~CInfoBase() = default;

bool CInfoBase::GetPropertyValue(const gcstring& key, gcstring& value) const {
    const auto found = properties_.find(key);
    if (found == properties_.end()) {
        return false;
    }
    value = found->second;
    return true;
}

CInfoBase& CInfoBase::SetPropertyValue(const gcstring& key, const gcstring& value) {
    properties_.insert_or_assign(key, value);
    return *this;
}

std::size_t CInfoBase::GetPropertyNames(std::vector<gcstring>& names) const {
    names.clear();
    for (const auto& [key, value] : properties_) {
        names.push_back(key);
    }
    return names.size();
}

bool CInfoBase::IsSubset(const CInfoBase& properties) const {
    return std::includes(properties_.begin(), properties_.end(), properties.properties_.begin(),
                         properties.properties_.end());
}

bool CInfoBase::IsDeviceClassAvailable() const {
    return properties_.contains(deviceClassKey());
}

gcstring CInfoBase::GetDeviceClass() const {
    gcstring value;
    static_cast<void>(GetPropertyValue(deviceClassKey(), value));
    return value;
}

}  // namespace Orlix
