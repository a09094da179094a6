// What transport layers and the owners of cameras do with the properties of a device.
#pragma once

#include <string>
#include <vector>

#include "orlixcamera/deviceinfo.h"

namespace Orlix {

// Those that decide which camera is meant. The full name alone does where it is given: other
// properties may have changed since.
[[nodiscard]] inline CDeviceInfo WantedProperties(const CDeviceInfo& info) {
    if (info.GetFullName().empty()) {
        return info;
    }
    CDeviceInfo wanted;
    wanted.SetPropertyValue(Key::FullName, info.GetFullName());
    return wanted;
}

// " Key='value'" for each, in the order of the keys.
[[nodiscard]] inline std::string DescribeProperties(const CInfoBase& info) {
    std::string text;
    std::vector<gcstring> names;
    info.GetPropertyNames(names);
    for (const gcstring& name : names) {
        gcstring value;
        static_cast<void>(info.GetPropertyValue(name, value));
        text += " " + name.str() + "='" + value.str() + "'";
    }
    return text;
}

[[nodiscard]] inline bool HaveSameProperties(const CInfoBase& first, const CInfoBase& second) {
    return first.IsSubset(second) && second.IsSubset(first);
}

}  // namespace Orlix
