#include "aravis/survey.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <mutex>
#include <optional>
#include <span>
#include <utility>

#include "aravis/bootstrap.h"
#include "aravis/cleantext.h"
#include "aravis/glib.h"
#include "aravis/gvcpclient.h"
#include "aravis/systemlock.h"

namespace Orlix::Aravis {
namespace {

// Strings that Aravis owns until its next look, made fit for users; but for the first.
struct Entry {
    std::string id;  // as Aravis wants it back
    std::string physicalId;
    std::string address;
    std::string vendor;
    std::string model;
    std::string serialNumber;
    std::string manufacturerInfo;
    std::string protocol;
};

std::string textOf(const char* text) {
    return text != nullptr ? CleanText(text) : "";
}

std::vector<Entry> lookAround() {
    const std::scoped_lock lock(SystemLock());
    arv_update_device_list();
    std::vector<Entry> entries(arv_get_n_devices());
    for (unsigned int index = 0; index < entries.size(); ++index) {
        Entry& entry = entries[index];
        const char* const id = arv_get_device_id(index);
        entry.id = id != nullptr ? id : "";
        entry.physicalId = textOf(arv_get_device_physical_id(index));
        entry.address = textOf(arv_get_device_address(index));
        entry.vendor = textOf(arv_get_device_vendor(index));
        entry.model = textOf(arv_get_device_model(index));
        entry.serialNumber = textOf(arv_get_device_serial_nbr(index));
        entry.manufacturerInfo = textOf(arv_get_device_manufacturer_info(index));
        entry.protocol = textOf(arv_get_device_protocol(index));
    }
    return entries;
}

std::optional<Protocol> protocolOf(const Entry& entry) {
    if (entry.protocol == "GigEVision") {
        return Protocol::GigE;
    }
    if (entry.protocol == "USB3Vision") {
        return Protocol::Usb3;
    }
    return std::nullopt;
}

void set(CDeviceInfo& info, const char* key, const std::string& value) {
    info.SetPropertyValue(key, gcstring(value));
}

// Bits of the register to those of the property.
std::string ipConfigurationText(std::uint32_t current) {
    constexpr std::uint32_t persistent = 0x1;
    constexpr std::uint32_t dhcp = 0x2;
    constexpr unsigned int persistentValue = 0x100;
    constexpr unsigned int dhcpValue = 0x4;
    return std::to_string(((current & persistent) != 0 ? persistentValue : 0U) +
                          ((current & dhcp) != 0 ? dhcpValue : 0U));
}

void copyProperty(CDeviceInfo& info, const CDeviceInfo& from, const char* key) {
    gcstring value;
    if (from.GetPropertyValue(key, value)) {
        info.SetPropertyValue(key, value);
    }
}

struct NetworkText {
    const char* key;
    std::uint32_t address;
    std::uint32_t length;
};

// What the answer to the broadcast tells, but Aravis does not. A program with exclusive access
// keeps others from reading it; then it is as it was. A camera that is silent is not asked for the
// rest: everybody waits for the end of the look.
void addNetworkProperties(Found& camera, const Found* before) {
    GvcpClient client(camera.address);
    const GvcpClient::Patience patience{2, std::chrono::milliseconds(100)};
    constexpr std::array texts = {
        NetworkText{Key::UserDefinedName, Bootstrap::userDefinedName,
                    Bootstrap::userDefinedNameLength},
        NetworkText{Key::DeviceVersion, Bootstrap::deviceVersion, Bootstrap::deviceVersionLength},
    };
    auto answer = GvcpClient::Answer::Given;
    for (const NetworkText& text : texts) {
        std::vector<std::uint8_t> bytes(text.length);
        if (answer != GvcpClient::Answer::None) {
            answer = client.ReadMemory(text.address, bytes, patience);
        }
        if (answer == GvcpClient::Answer::Given) {
            const auto end = std::find(bytes.begin(), bytes.end(), std::uint8_t{0});
            set(camera.info, text.key, CleanText(std::string(bytes.begin(), end)));
        } else if (before != nullptr) {
            copyProperty(camera.info, before->info, text.key);
        }
    }
    std::uint32_t current = 0;
    if (answer != GvcpClient::Answer::None) {
        answer = client.ReadRegister(Bootstrap::ipConfiguration, current, patience);
    }
    if (answer == GvcpClient::Answer::Given) {
        set(camera.info, Key::IpConfigCurrent, ipConfigurationText(current));
    } else if (before != nullptr) {
        copyProperty(camera.info, before->info, Key::IpConfigCurrent);
    }
}

std::string fullNameOf(const Entry& entry, Protocol protocol) {
    return std::string(DeviceClassOf(protocol)) + "#" + CleanText(entry.id) + "#" +
           entry.physicalId;
}

std::string labelOf(const CDeviceInfo& info) {
    const gcstring name = info.GetUserDefinedName();
    return std::string((name.empty() ? info.GetModelName() : name).c_str()) + " (" +
           info.GetSerialNumber().c_str() + ")";
}

const Found* findByName(const std::vector<Found>& cameras, const gcstring& fullName) {
    const auto at = std::find_if(cameras.begin(), cameras.end(), [&](const Found& camera) {
        return camera.info.GetFullName() == fullName;
    });
    return at != cameras.end() ? &*at : nullptr;
}

Found describe(const Entry& entry, Protocol protocol, const std::vector<Found>& before) {
    Found camera;
    camera.protocol = protocol;
    camera.id = entry.id;
    const std::string fullName = fullNameOf(entry, protocol);
    set(camera.info, Key::DeviceClass, DeviceClassOf(protocol));
    set(camera.info, Key::FullName, fullName);
    set(camera.info, Key::VendorName, entry.vendor);
    set(camera.info, Key::ModelName, entry.model);
    if (!entry.serialNumber.empty()) {
        set(camera.info, Key::SerialNumber, entry.serialNumber);
    }
    if (!entry.manufacturerInfo.empty()) {
        set(camera.info, "ManufacturerInfo", entry.manufacturerInfo);
    }
    if (protocol == Protocol::GigE) {
        set(camera.info, Key::IpAddress, entry.address);
        set(camera.info, "MacAddress", entry.physicalId);
        camera.address = ParseAddress(entry.address);
        addNetworkProperties(camera, findByName(before, gcstring(fullName)));
    }
    camera.label = labelOf(camera.info);
    set(camera.info, Key::FriendlyName, camera.label);
    return camera;
}

// One broadcast may get lost, and a camera is not gone because of that.
bool stillAnswers(const Found& camera) {
    std::uint32_t privilege = 0;
    return camera.protocol == Protocol::GigE &&
           GvcpClient(camera.address)
                   .ReadRegister(Bootstrap::controlPrivilege, privilege,
                                 {3, std::chrono::milliseconds(100)}) != GvcpClient::Answer::None;
}

bool isKnownAddress(const std::vector<Found>& cameras, std::uint32_t address) {
    return std::any_of(cameras.begin(), cameras.end(),
                       [&](const Found& camera) { return camera.address == address; });
}

}  // namespace

std::vector<Found> TakeSurvey(const std::vector<Found>& before) {
    std::vector<Found> cameras;
    for (const Entry& entry : lookAround()) {
        const auto protocol = protocolOf(entry);
        if (!protocol || findByName(cameras, gcstring(fullNameOf(entry, *protocol))) != nullptr) {
            continue;
        }
        cameras.push_back(describe(entry, *protocol, before));
    }
    for (const Found& camera : before) {
        if (findByName(cameras, camera.info.GetFullName()) == nullptr &&
            !isKnownAddress(cameras, camera.address) && stillAnswers(camera)) {
            cameras.push_back(camera);
        }
    }
    return cameras;
}

}  // namespace Orlix::Aravis
