#include "sockets.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "gcbase/gcexception.h"
#include "packetsender.h"

namespace Orlix::Camsim {
namespace {

[[noreturn]] void throwSystem(const std::string& what) {
    throw GenICam::RuntimeException((what + ": " + std::strerror(errno) + ".").c_str(), __FILE__,
                                    __LINE__);
}

std::uint32_t numberOf(const sockaddr* address) {
    return ntohl(reinterpret_cast<const sockaddr_in*>(address)->sin_addr.s_addr);
}

}  // namespace

OwnedFile::~OwnedFile() {
    if (file_ >= 0) {
        ::close(file_);
    }
}

Socket::Socket(const Endpoint& endpoint, Sharing sharing)
    : OwnedFile(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
    const int on = 1;
    if (sharing == Sharing::WithOthers) {
        static_cast<void>(::setsockopt(Get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on));
    }
    const sockaddr_in address = ToSocketAddress(endpoint);
    if (Get() < 0 ||
        ::bind(Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        throwSystem("Can't use the address " + TextOf(endpoint));
    }
}

void Socket::BindToInterface(const std::string& name) const {
    static_cast<void>(::setsockopt(Get(), SOL_SOCKET, SO_BINDTODEVICE, name.c_str(),
                                   static_cast<socklen_t>(name.size())));
}

void Socket::AllowBroadcast() const {
    const int on = 1;
    static_cast<void>(::setsockopt(Get(), SOL_SOCKET, SO_BROADCAST, &on, sizeof on));
}

Endpoint Socket::GetEndpoint() const {
    sockaddr_in address{};
    socklen_t size = sizeof address;
    if (::getsockname(Get(), reinterpret_cast<sockaddr*>(&address), &size) != 0) {
        throwSystem("Can't tell the address of a socket");
    }
    return ToEndpoint(address);
}

EventFile::EventFile() : OwnedFile(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (Get() < 0) {
        throwSystem("Can't make an event file");
    }
}

void EventFile::Raise() const noexcept {
    static_cast<void>(::eventfd_write(Get(), 1));
}

void EventFile::Take() const noexcept {
    eventfd_t value = 0;
    static_cast<void>(::eventfd_read(Get(), &value));
}

std::optional<Interface> FindInterface(std::uint32_t address) {
    ifaddrs* all = nullptr;
    if (::getifaddrs(&all) != 0) {
        return std::nullopt;
    }
    std::optional<Interface> found;
    for (const ifaddrs* one = all; one != nullptr && !found; one = one->ifa_next) {
        if (one->ifa_addr == nullptr || one->ifa_addr->sa_family != AF_INET ||
            one->ifa_netmask == nullptr) {
            continue;
        }
        const std::uint32_t mask = numberOf(one->ifa_netmask);
        if ((numberOf(one->ifa_addr) & mask) == (address & mask)) {
            found = Interface{one->ifa_name, mask};
        }
    }
    ::freeifaddrs(all);
    return found;
}

std::uint32_t ParseAddress(const std::string& text) {
    in_addr address{};
    if (::inet_pton(AF_INET, text.c_str(), &address) != 1) {
        throw GenICam::InvalidArgumentException(
            ("'" + text + "' is no address such as 127.0.0.1.").c_str(), __FILE__, __LINE__);
    }
    return ntohl(address.s_addr);
}

}  // namespace Orlix::Camsim
