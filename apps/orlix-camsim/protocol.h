// The numbers of GVCP and GVSP, the two protocols of GigE Vision, and how they lie in a datagram:
// highest byte first. Constants and plain functions; any thread may call.
// The adapter for real cameras has numbers of its own (src/transports/aravis/bootstrap.h and its
// message classes), on purpose: each checks the other, and a wrong number in one of them shows. In
// one header for both it would be a mistake that no test of one against the other can find.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace Orlix::Camsim {

using Bytes = std::span<const std::uint8_t>;
using MutableBytes = std::span<std::uint8_t>;

enum class Command : std::uint16_t {
    Discovery = 0x0002,
    DiscoveryAck = 0x0003,
    ForceIp = 0x0004,
    PacketResend = 0x0040,
    ReadReg = 0x0080,
    WriteReg = 0x0082,
    ReadMem = 0x0084,
    WriteMem = 0x0086,
    Event = 0x00C0,
    EventAck = 0x00C1,
    EventData = 0x00C2,
    EventDataAck = 0x00C3,
};

enum class Status : std::uint16_t {
    Success = 0x0000,
    Resent = 0x0100,
    NotImplemented = 0x8001,
    InvalidParameter = 0x8002,
    InvalidAddress = 0x8003,
    WriteProtect = 0x8004,
    BadAlignment = 0x8005,
    AccessDenied = 0x8006,
    Busy = 0x8007,
    PacketUnavailable = 0x800C,
    DataOverrun = 0x800D,
    InvalidHeader = 0x800E,
    Error = 0x8FFF,
};

inline constexpr std::uint16_t gvcpPort = 3956;
inline constexpr std::uint8_t commandKey = 0x42;
inline constexpr std::size_t commandHeaderSize = 8;
// Flags of a command; the meaning of the second one depends on the command.
inline constexpr std::uint8_t wantsAnswer = 0x01;
inline constexpr std::uint8_t mayBroadcastAnswer = 0x10;
inline constexpr std::uint8_t hasLongIds = 0x10;
// What a datagram of GVCP carries at most behind its header.
inline constexpr std::size_t mostCommandBytes = 540;
inline constexpr std::size_t mostMemoryBytes = 536;

enum class PacketKind : std::uint8_t { Leader = 1, Trailer = 2, Payload = 3 };
inline constexpr std::uint8_t longIdFlag = 0x80;
inline constexpr std::size_t shortPacketHeader = 8;
inline constexpr std::size_t longPacketHeader = 20;
inline constexpr std::size_t ipAndUdpHeader = 28;
inline constexpr std::uint32_t lastPacketId = 0x00FFFFFF;
inline constexpr std::uint32_t lastLongPacketId = 0xFFFFFFFF;

inline constexpr std::uint16_t payloadImage = 0x0001;
inline constexpr std::uint16_t payloadChunks = 0x0004;
inline constexpr std::uint16_t payloadImageWithChunks = 0x4001;

// Where a program sits. Both numbers as they are read, not as they are sent.
struct Endpoint {
    std::uint32_t address = 0;
    std::uint16_t port = 0;
    bool operator==(const Endpoint&) const = default;
};

[[nodiscard]] inline std::string TextOf(std::uint32_t address) {
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) {
        text += std::to_string(address >> shift & 0xFF) + (shift > 0 ? "." : "");
    }
    return text;
}

[[nodiscard]] inline std::string TextOf(const Endpoint& endpoint) {
    return TextOf(endpoint.address) + ":" + std::to_string(endpoint.port);
}

template <typename Number>
[[nodiscard]] Number Get(const std::uint8_t* bytes) noexcept {
    std::uint64_t value = 0;
    for (std::size_t index = 0; index < sizeof(Number); ++index) {
        value = value << 8 | bytes[index];
    }
    return static_cast<Number>(value);
}

template <typename Number>
void Put(std::uint8_t* bytes, Number number) noexcept {
    const auto value = static_cast<std::uint64_t>(number);
    for (std::size_t index = 0; index < sizeof(Number); ++index) {
        bytes[index] = static_cast<std::uint8_t>(value >> 8 * (sizeof(Number) - 1 - index));
    }
}

}  // namespace Orlix::Camsim
