// A UDP socket of IPv4. One thread at a time. Failure: std::system_error never; a
// socket that can't be made or used is just not open, or gives nothing.
#pragma once

#include <netinet/in.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace Orlix::Aravis {

// An address of IPv4 as a number, host order; 0 for a text that is none.
[[nodiscard]] std::uint32_t ParseAddress(const std::string& text);
[[nodiscard]] std::string FormatAddress(std::uint32_t address);

class UdpSocket {
public:
    UdpSocket() = default;
    ~UdpSocket();
    UdpSocket(const UdpSocket&) = delete;
    UdpSocket& operator=(const UdpSocket&) = delete;

    // Sends to and hears of that peer only; the local address is the one that the route has.
    [[nodiscard]] bool Connect(std::uint32_t address, std::uint16_t port);
    // Hears of everyone, on a port that is free.
    [[nodiscard]] bool Bind(std::uint32_t address);

    // False while the system has no descriptor for it.
    [[nodiscard]] bool IsOpen() const noexcept { return descriptor_ >= 0; }
    [[nodiscard]] std::uint32_t GetLocalAddress() const;
    [[nodiscard]] std::uint16_t GetLocalPort() const;

    [[nodiscard]] bool Send(std::span<const std::uint8_t> packet) const;
    bool SendTo(std::span<const std::uint8_t> packet, const sockaddr_in& receiver) const;
    // The number of bytes, 0 for none within the time; `sender` may be null.
    [[nodiscard]] std::size_t Receive(std::span<std::uint8_t> packet,
                                      std::chrono::milliseconds timeOut,
                                      sockaddr_in* sender = nullptr) const;

private:
    [[nodiscard]] bool open();
    [[nodiscard]] sockaddr_in localName() const;

    int descriptor_ = -1;
};

}  // namespace Orlix::Aravis
