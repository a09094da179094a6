// The identity of a camera: what a transport layer found out about it without opening it.
#pragma once

#include "orlixcamera/api.h"
#include "orlixcamera/infobase.h"

namespace Orlix {

// The keys that every transport layer fills where it can.
namespace Key {
inline constexpr const char* DeviceClass = "DeviceClass";
inline constexpr const char* FullName = "FullName";  // unique on this computer
inline constexpr const char* FriendlyName = "FriendlyName";
inline constexpr const char* ModelName = "ModelName";
inline constexpr const char* VendorName = "VendorName";
inline constexpr const char* SerialNumber = "SerialNumber";
inline constexpr const char* UserDefinedName = "UserDefinedName";
inline constexpr const char* DeviceVersion = "DeviceVersion";
inline constexpr const char* IpAddress = "IpAddress";
// Decimal; bit 0x4 DHCP, 0x100 persistent address, as the device is configured now.
inline constexpr const char* IpConfigCurrent = "_PortableIpConfigCurrent";
}  // namespace Key

class ORLIXCAMERA_API CDeviceInfo : public CInfoBase {
public:
    CDeviceInfo();
    explicit CDeviceInfo(const CInfoBase& properties);
    ~CDeviceInfo() override;
    CDeviceInfo(const CDeviceInfo&);
    CDeviceInfo& operator=(const CDeviceInfo&);

    // Each is empty if the layer doesn't know it.
    [[nodiscard]] gcstring GetFullName() const;
    [[nodiscard]] gcstring GetFriendlyName() const;
    [[nodiscard]] gcstring GetModelName() const;
    [[nodiscard]] gcstring GetVendorName() const;
    [[nodiscard]] gcstring GetSerialNumber() const;
    [[nodiscard]] gcstring GetUserDefinedName() const;
};

}  // namespace Orlix
