// A camera as discovery sees it. A value.
#pragma once

#include <cstdint>
#include <string>

#include "orlixcamera/deviceinfo.h"

namespace Orlix::Aravis {

enum class Protocol : std::uint8_t { GigE, Usb3 };

[[nodiscard]] constexpr const char* DeviceClassOf(Protocol protocol) noexcept {
    return protocol == Protocol::GigE ? "GigE" : "USB3";
}

struct Found {
    Protocol protocol = Protocol::GigE;
    std::string id;             // by which Aravis knows it
    std::string label;          // "Name (serial number)", for messages
    std::uint32_t address = 0;  // of IPv4; 0 for USB
    CDeviceInfo info;
};

}  // namespace Orlix::Aravis
