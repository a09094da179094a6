// The registers that every GigE Vision device has at the same addresses, below 0xA000: who it is,
// what it can do, and the settings of its channels. Only storage and rules; what follows from a
// write is the work of Device. One thread at a time.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "protocol.h"

namespace Orlix::Camsim {

namespace Reg {
inline constexpr std::uint32_t version = 0x0000;
inline constexpr std::uint32_t deviceMode = 0x0004;
inline constexpr std::uint32_t macHigh = 0x0008;
inline constexpr std::uint32_t macLow = 0x000C;
inline constexpr std::uint32_t ipSupported = 0x0010;
inline constexpr std::uint32_t ipCurrent = 0x0014;
inline constexpr std::uint32_t address = 0x0024;
inline constexpr std::uint32_t subnetMask = 0x0034;
inline constexpr std::uint32_t gateway = 0x0044;
inline constexpr std::uint32_t vendor = 0x0048;
inline constexpr std::uint32_t model = 0x0068;
inline constexpr std::uint32_t deviceVersion = 0x0088;
inline constexpr std::uint32_t info = 0x00A8;
inline constexpr std::uint32_t serial = 0x00D8;
inline constexpr std::uint32_t userName = 0x00E8;
inline constexpr std::uint32_t discoveryEnd = 0x00F8;
inline constexpr std::uint32_t firstUrl = 0x0200;
inline constexpr std::uint32_t secondUrl = 0x0400;
inline constexpr std::uint32_t interfaces = 0x0600;
inline constexpr std::uint32_t persistentAddress = 0x064C;
inline constexpr std::uint32_t persistentMask = 0x065C;
inline constexpr std::uint32_t persistentGateway = 0x066C;
inline constexpr std::uint32_t linkSpeed = 0x0670;
inline constexpr std::uint32_t messageChannels = 0x0900;
inline constexpr std::uint32_t streamChannels = 0x0904;
inline constexpr std::uint32_t actionSignals = 0x0908;
inline constexpr std::uint32_t activeLinks = 0x0910;
inline constexpr std::uint32_t gvspCapability = 0x092C;
inline constexpr std::uint32_t messageCapability = 0x0930;
inline constexpr std::uint32_t gvcpCapability = 0x0934;
inline constexpr std::uint32_t heartbeat = 0x0938;
inline constexpr std::uint32_t tickFrequencyHigh = 0x093C;
inline constexpr std::uint32_t tickFrequencyLow = 0x0940;
inline constexpr std::uint32_t timestampControl = 0x0944;
inline constexpr std::uint32_t timestampHigh = 0x0948;
inline constexpr std::uint32_t timestampLow = 0x094C;
inline constexpr std::uint32_t discoveryDelay = 0x0950;
inline constexpr std::uint32_t gvcpConfiguration = 0x0954;
inline constexpr std::uint32_t pendingTimeout = 0x0958;
inline constexpr std::uint32_t switchoverKey = 0x095C;
inline constexpr std::uint32_t gvspConfiguration = 0x0960;
inline constexpr std::uint32_t linkCapability = 0x0964;
inline constexpr std::uint32_t linkConfiguration = 0x0968;
inline constexpr std::uint32_t control = 0x0A00;
inline constexpr std::uint32_t primaryPort = 0x0A04;
inline constexpr std::uint32_t primaryAddress = 0x0A14;
inline constexpr std::uint32_t messagePort = 0x0B00;
inline constexpr std::uint32_t messageAddress = 0x0B10;
inline constexpr std::uint32_t messageTimeout = 0x0B14;
inline constexpr std::uint32_t messageRetries = 0x0B18;
inline constexpr std::uint32_t messageSource = 0x0B1C;
inline constexpr std::uint32_t streamPort = 0x0D00;
inline constexpr std::uint32_t packetSize = 0x0D04;
inline constexpr std::uint32_t packetDelay = 0x0D08;
inline constexpr std::uint32_t streamAddress = 0x0D18;
inline constexpr std::uint32_t streamSource = 0x0D1C;
inline constexpr std::uint32_t streamCapability = 0x0D20;
inline constexpr std::uint32_t streamConfiguration = 0x0D24;
inline constexpr std::uint32_t manifest = 0x9000;
inline constexpr std::uint32_t end = 0xA000;
}  // namespace Reg

namespace Bit {
inline constexpr std::uint32_t heartbeatOff = 0x00000001;       // of gvcpConfiguration
inline constexpr std::uint32_t longBlockIds = 0x40000000;       // of gvspConfiguration
inline constexpr std::uint32_t fireTestPacket = 0x80000000;     // of packetSize
inline constexpr std::uint32_t doNotFragment = 0x40000000;      // of packetSize
inline constexpr std::uint32_t latchTimestamp = 0x00000002;     // of timestampControl
inline constexpr std::uint32_t resetTimestamp = 0x00000001;     // of timestampControl
inline constexpr std::uint32_t exclusive = 0x00000001;          // of control
inline constexpr std::uint32_t controlled = 0x00000002;         // of control
inline constexpr std::uint32_t mayBeSwitchedOver = 0x00000004;  // of control
}  // namespace Bit

inline constexpr std::uint32_t smallestPacket = 220;
inline constexpr std::uint32_t largestPacket = 65532;
inline constexpr std::uint32_t shortestHeartbeat = 500;
inline constexpr std::uint64_t nanosecondsPerSecond = 1'000'000'000;
inline constexpr std::uint64_t fastestClock = 10 * nanosecondsPerSecond;  // ticks a second

// Of a clock of so many ticks a second.
[[nodiscard]] constexpr std::uint64_t TicksOf(std::uint64_t nanoseconds,
                                              std::uint64_t frequency) noexcept {
    return nanoseconds / nanosecondsPerSecond * frequency +
           nanoseconds % nanosecondsPerSecond * frequency / nanosecondsPerSecond;
}
[[nodiscard]] constexpr std::uint64_t NanosecondsOf(std::uint64_t ticks,
                                                    std::uint64_t frequency) noexcept {
    return ticks / frequency * nanosecondsPerSecond +
           ticks % frequency * nanosecondsPerSecond / frequency;
}

// All that the registers tell about the device.
struct DeviceIdentity {
    std::string vendor = "Orlix";
    std::string model = "EmulatedCamera";
    std::string version = "1.0";
    std::string info = "Simulated GigE Vision device";
    std::string serial = "SIM-0001";
    std::string userName;
    std::uint32_t address = 0x7F000001;
    std::uint32_t subnetMask = 0xFF000000;
    std::uint32_t linkMegabits = 1000;
    std::uint64_t tickFrequency = nanosecondsPerSecond;
};

class Bootstrap {
public:
    explicit Bootstrap(const DeviceIdentity& identity);

    // Everything that a loss of power resets.
    void PowerUp();

    [[nodiscard]] std::uint32_t Value(std::uint32_t address) const noexcept;
    void SetValue(std::uint32_t address, std::uint32_t value) noexcept;
    void SetText(std::uint32_t address, std::size_t size, const std::string& text) noexcept;

    // Whole range or nothing. InvalidAddress if a byte of it belongs to no register.
    [[nodiscard]] Status Read(std::uint32_t address, MutableBytes out) const noexcept;
    // Whether one word may be written by who has control.
    [[nodiscard]] Status CheckWrite(std::uint32_t address) const noexcept;
    // What would become of the register; or an error, where the value makes no sense.
    [[nodiscard]] Status CheckValue(std::uint32_t address, std::uint32_t value) const noexcept;
    [[nodiscard]] static bool Contains(std::uint32_t address) noexcept {
        return address < Reg::end;
    }

private:
    std::vector<std::uint8_t> memory_;
};

}  // namespace Orlix::Camsim
