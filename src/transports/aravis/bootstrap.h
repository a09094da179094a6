// The registers that every GigE Vision device has, as far as they are used here.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Orlix::Aravis::Bootstrap {

inline constexpr std::uint32_t ipConfiguration = 0x0014;
inline constexpr std::uint32_t deviceVersion = 0x0088;
inline constexpr std::uint32_t deviceVersionLength = 32;
inline constexpr std::uint32_t userDefinedName = 0x00E8;
inline constexpr std::uint32_t userDefinedNameLength = 16;
inline constexpr std::uint32_t messageChannelCount = 0x0900;
inline constexpr std::uint32_t heartbeatTimeOut = 0x0938;   // milliseconds
inline constexpr std::uint32_t tickFrequencyHigh = 0x093C;  // ticks a second
inline constexpr std::uint32_t tickFrequencyLow = 0x0940;
inline constexpr std::uint32_t streamConfiguration = 0x0960;
inline constexpr std::uint32_t controlPrivilege = 0x0A00;    // CCP
inline constexpr std::uint32_t primaryPort = 0x0A04;         // of the program in control
inline constexpr std::uint32_t primaryApplication = 0x0A14;  // its IPv4 address
inline constexpr std::uint32_t messagePort = 0x0B00;         // MCP
inline constexpr std::uint32_t messageAddress = 0x0B10;      // MCDA
inline constexpr std::uint32_t messageTimeOut = 0x0B14;      // MCTT, milliseconds
inline constexpr std::uint32_t messageRetryCount = 0x0B18;   // MCRC
inline constexpr std::uint32_t streamPacketSize = 0x0D04;    // SCPS, lower 16 bits
inline constexpr std::uint32_t streamPacketDelay = 0x0D08;   // SCPD, ticks

inline constexpr std::uint32_t longFrameIds = 0x40000000;  // of the stream configuration
inline constexpr std::uint32_t privilegeMask = 0x3;        // of CCP: exclusive or control access

// Whether an access reaches into the register.
[[nodiscard]] constexpr bool Touches(std::uint32_t place, std::int64_t address,
                                     std::size_t length) noexcept {
    constexpr std::int64_t wordSize = 4;
    return address < place + wordSize && address + static_cast<std::int64_t>(length) > place;
}

}  // namespace Orlix::Aravis::Bootstrap
