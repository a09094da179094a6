#include "bootstrap.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace Orlix::Camsim {
namespace {

enum class Access : std::uint8_t { Read, Write, WriteOnly };

struct Row {
    std::uint32_t address;
    std::uint32_t size;
    Access access;
    std::uint32_t initial;
};

// Bits are counted from the highest one, as the standard does.
constexpr std::uint32_t bit(unsigned number) {
    return std::uint32_t{1} << (31 - number);
}

constexpr std::uint32_t gevVersion = 0x00020000;
constexpr std::uint32_t bigEndianUtf8 = bit(0) | 1;
constexpr std::uint32_t ipConfigurations = 7;  // persistent, DHCP, link-local
constexpr std::uint32_t fixedAndLinkLocal = 5;
constexpr std::uint32_t sourcePortsAndShortIds = bit(0) | bit(1);
// Names, serial number, heartbeat off, link speed, primary application, manifest, switchover; event
// data, events, resends, memory writes, several registers in one command.
constexpr std::uint32_t capabilities = bit(0) | bit(1) | bit(2) | bit(3) | bit(4) | bit(5) |
                                       bit(10) | bit(27) | bit(28) | bit(29) | bit(30) | bit(31);

constexpr std::array table = {
    Row{Reg::version, 0xE8, Access::Read, gevVersion},
    Row{Reg::userName, 16, Access::Write, 0},
    Row{Reg::firstUrl, 0x400, Access::Read, 0},
    Row{Reg::interfaces, 4, Access::Read, 1},
    Row{Reg::persistentAddress, 4, Access::Write, 0},
    Row{Reg::persistentMask, 4, Access::Write, 0},
    Row{Reg::persistentGateway, 4, Access::Write, 0},
    Row{Reg::linkSpeed, 4, Access::Read, 1000},
    Row{Reg::messageChannels, 4, Access::Read, 1},
    Row{Reg::streamChannels, 4, Access::Read, 1},
    Row{Reg::actionSignals, 4, Access::Read, 0},
    Row{Reg::activeLinks, 4, Access::Read, 1},
    Row{Reg::gvspCapability, 4, Access::Read, sourcePortsAndShortIds},
    Row{Reg::messageCapability, 4, Access::Read, bit(0)},
    Row{Reg::gvcpCapability, 4, Access::Read, capabilities},
    Row{Reg::heartbeat, 4, Access::Write, 3000},
    Row{Reg::tickFrequencyHigh, 4, Access::Read, 0},
    Row{Reg::tickFrequencyLow, 4, Access::Read, 0},
    Row{Reg::timestampControl, 4, Access::WriteOnly, 0},
    Row{Reg::timestampHigh, 4, Access::Read, 0},
    Row{Reg::timestampLow, 4, Access::Read, 0},
    Row{Reg::discoveryDelay, 4, Access::Read, 0},
    Row{Reg::gvcpConfiguration, 4, Access::Write, 0},
    Row{Reg::pendingTimeout, 4, Access::Read, 0},
    Row{Reg::switchoverKey, 4, Access::WriteOnly, 0},
    Row{Reg::gvspConfiguration, 4, Access::Write, 0},
    Row{Reg::linkCapability, 4, Access::Read, 1},
    Row{Reg::linkConfiguration, 4, Access::Read, 0},
    Row{Reg::control, 4, Access::Write, 0},
    Row{Reg::primaryPort, 4, Access::Read, 0},
    Row{Reg::primaryAddress, 4, Access::Read, 0},
    Row{Reg::messagePort, 4, Access::Write, 0},
    Row{Reg::messageAddress, 4, Access::Write, 0},
    Row{Reg::messageTimeout, 4, Access::Write, 200},
    Row{Reg::messageRetries, 4, Access::Write, 2},
    Row{Reg::messageSource, 4, Access::Read, 0},
    Row{Reg::streamPort, 4, Access::Write, 0},
    Row{Reg::packetSize, 4, Access::Write, 1500},
    Row{Reg::packetDelay, 4, Access::Write, 0},
    Row{Reg::streamAddress, 4, Access::Write, 0},
    Row{Reg::streamSource, 4, Access::Read, 0},
    Row{Reg::streamCapability, 4, Access::Read, 0},
    Row{Reg::streamConfiguration, 4, Access::Write, 0},
    Row{Reg::manifest, 0x200, Access::Read, 0},
};
static_assert(std::is_sorted(table.begin(), table.end(),
                             [](const Row& a, const Row& b) { return a.address < b.address; }));

const Row* findRow(std::uint32_t address) noexcept {
    const auto next =
        std::upper_bound(table.begin(), table.end(), address,
                         [](std::uint32_t value, const Row& row) { return value < row.address; });
    if (next == table.begin()) {
        return nullptr;
    }
    const Row& row = *(next - 1);
    return address - row.address < row.size ? &row : nullptr;
}

}  // namespace

Bootstrap::Bootstrap(const DeviceIdentity& identity) : memory_(Reg::end) {
    PowerUp();
    SetValue(Reg::deviceMode, bigEndianUtf8);
    // A locally administered address, unique as long as the one of the network is.
    SetValue(Reg::macHigh, 0x0200);
    SetValue(Reg::macLow, identity.address);
    SetValue(Reg::ipSupported, ipConfigurations);
    SetValue(Reg::ipCurrent, fixedAndLinkLocal);
    SetValue(Reg::address, identity.address);
    SetValue(Reg::subnetMask, identity.subnetMask);
    SetText(Reg::vendor, 32, identity.vendor);
    SetText(Reg::model, 32, identity.model);
    SetText(Reg::deviceVersion, 32, identity.version);
    SetText(Reg::info, 48, identity.info);
    SetText(Reg::serial, 16, identity.serial);
    SetText(Reg::userName, 16, identity.userName);
    SetValue(Reg::linkSpeed, identity.linkMegabits);
    SetValue(Reg::tickFrequencyHigh, static_cast<std::uint32_t>(identity.tickFrequency >> 32));
    SetValue(Reg::tickFrequencyLow, static_cast<std::uint32_t>(identity.tickFrequency));
    SetValue(Reg::persistentAddress, identity.address);
    SetValue(Reg::persistentMask, identity.subnetMask);
}

void Bootstrap::PowerUp() {
    for (const Row& row : table) {
        const bool isPersistent =
            row.address >= Reg::persistentAddress && row.address <= Reg::persistentGateway;
        const bool isOfDevice = row.address == Reg::linkSpeed ||
                                row.address == Reg::tickFrequencyHigh ||
                                row.address == Reg::tickFrequencyLow;
        const bool isSource = row.address == Reg::streamSource || row.address == Reg::messageSource;
        if (row.size == sizeof row.initial && !isPersistent && !isOfDevice && !isSource) {
            SetValue(row.address, row.initial);
        }
    }
    SetValue(Reg::version, gevVersion);
}

std::uint32_t Bootstrap::Value(std::uint32_t address) const noexcept {
    return Get<std::uint32_t>(&memory_[address]);
}

void Bootstrap::SetValue(std::uint32_t address, std::uint32_t value) noexcept {
    Put(&memory_[address], value);
}

// The last byte stays zero, so that no reader runs into the next text.
void Bootstrap::SetText(std::uint32_t address, std::size_t size, const std::string& text) noexcept {
    std::memset(&memory_[address], 0, size);
    std::memcpy(&memory_[address], text.data(), std::min(text.size(), size - 1));
}

Status Bootstrap::Read(std::uint32_t address, MutableBytes out) const noexcept {
    for (std::size_t done = 0; done < out.size();) {
        const std::uint32_t here = address + static_cast<std::uint32_t>(done);
        const Row* const row = findRow(here);
        if (row == nullptr) {
            return Status::InvalidAddress;
        }
        if (row->access == Access::WriteOnly) {
            return Status::AccessDenied;
        }
        const std::size_t size =
            std::min<std::size_t>(row->size - (here - row->address), out.size() - done);
        std::memcpy(&out[done], &memory_[here], size);
        done += size;
    }
    return Status::Success;
}

Status Bootstrap::CheckWrite(std::uint32_t address) const noexcept {
    const Row* const row = findRow(address);
    if (row == nullptr) {
        return Status::InvalidAddress;
    }
    return row->access == Access::Read ? Status::WriteProtect : Status::Success;
}

Status Bootstrap::CheckValue(std::uint32_t address, std::uint32_t value) const noexcept {
    constexpr std::uint32_t sizeMask = 0xFFFF;
    const std::uint32_t size = value & sizeMask;
    const bool isWhole = size % sizeof(std::uint32_t) == 0;  // packets carry whole words
    if (address == Reg::packetSize && (size < smallestPacket || size > largestPacket || !isWhole)) {
        return Status::InvalidParameter;
    }
    return Status::Success;
}

}  // namespace Orlix::Camsim
