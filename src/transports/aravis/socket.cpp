#include "aravis/socket.h"

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>

namespace Orlix::Aravis {
namespace {

sockaddr_in makeName(std::uint32_t address, std::uint16_t port) {
    sockaddr_in name{};
    name.sin_family = AF_INET;
    name.sin_addr.s_addr = htonl(address);
    name.sin_port = htons(port);
    return name;
}

const sockaddr* plain(const sockaddr_in& name) {
    return reinterpret_cast<const sockaddr*>(&name);
}

}  // namespace

std::uint32_t ParseAddress(const std::string& text) {
    in_addr address{};
    return ::inet_pton(AF_INET, text.c_str(), &address) == 1 ? ntohl(address.s_addr) : 0;
}

std::string FormatAddress(std::uint32_t address) {
    const in_addr raw{htonl(address)};
    std::array<char, INET_ADDRSTRLEN> text{};
    return ::inet_ntop(AF_INET, &raw, text.data(), text.size()) != nullptr ? text.data() : "";
}

UdpSocket::~UdpSocket() {
    if (descriptor_ >= 0) {
        ::close(descriptor_);
    }
}

bool UdpSocket::open() {
    if (descriptor_ < 0) {
        descriptor_ = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    }
    return descriptor_ >= 0;
}

bool UdpSocket::Connect(std::uint32_t address, std::uint16_t port) {
    const sockaddr_in name = makeName(address, port);
    return open() && ::connect(descriptor_, plain(name), sizeof name) == 0;
}

bool UdpSocket::Bind(std::uint32_t address) {
    const sockaddr_in name = makeName(address, 0);
    return open() && ::bind(descriptor_, plain(name), sizeof name) == 0;
}

sockaddr_in UdpSocket::localName() const {
    sockaddr_in name{};
    socklen_t length = sizeof name;
    static_cast<void>(::getsockname(descriptor_, reinterpret_cast<sockaddr*>(&name), &length));
    return name;
}

std::uint32_t UdpSocket::GetLocalAddress() const {
    return ntohl(localName().sin_addr.s_addr);
}

std::uint16_t UdpSocket::GetLocalPort() const {
    return ntohs(localName().sin_port);
}

bool UdpSocket::Send(std::span<const std::uint8_t> packet) const {
    return ::send(descriptor_, packet.data(), packet.size(), MSG_NOSIGNAL) ==
           static_cast<ssize_t>(packet.size());
}

bool UdpSocket::SendTo(std::span<const std::uint8_t> packet, const sockaddr_in& receiver) const {
    return ::sendto(descriptor_, packet.data(), packet.size(), MSG_NOSIGNAL, plain(receiver),
                    sizeof receiver) == static_cast<ssize_t>(packet.size());
}

std::size_t UdpSocket::Receive(std::span<std::uint8_t> packet, std::chrono::milliseconds timeOut,
                               sockaddr_in* sender) const {
    pollfd wait{descriptor_, POLLIN, 0};
    if (::poll(&wait, 1, static_cast<int>(std::max<std::int64_t>(timeOut.count(), 0))) <= 0) {
        return 0;
    }
    sockaddr_in from{};
    socklen_t length = sizeof from;
    // Also where the kernel reports that nobody listens at the other end.
    const ssize_t size = ::recvfrom(descriptor_, packet.data(), packet.size(), MSG_DONTWAIT,
                                    reinterpret_cast<sockaddr*>(&from), &length);
    if (sender != nullptr) {
        *sender = from;
    }
    return size > 0 ? static_cast<std::size_t>(size) : 0;
}

}  // namespace Orlix::Aravis
