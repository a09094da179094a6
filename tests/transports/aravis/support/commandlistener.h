// The commands that go to cameras, read from the network itself. For tests in a network of their
// own, where they have the right to it.
#pragma once

#include <arpa/inet.h>
#include <linux/if_ether.h>
#include <linux/if_packet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "aravis/bigendian.h"
#include "aravis/gvcpclient.h"

namespace Orlix::Aravis::Testing {

class CommandListener {
public:
    enum Command : std::uint16_t {
        ReadRegister = 0x80,
        WriteRegister = 0x82,
        ReadMemory = 0x84,
        WriteMemory = 0x86,
    };
    struct Access {
        std::uint64_t command = 0;
        std::uint64_t address = 0;
        std::uint64_t value = 0;  // the word behind the address, if there is one

        [[nodiscard]] bool operator==(const Access&) const = default;
    };

    CommandListener()
        : socket_(::socket(AF_PACKET, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, htons(ETH_P_IP))) {
    }
    ~CommandListener() { ::close(socket_); }
    CommandListener(const CommandListener&) = delete;
    CommandListener& operator=(const CommandListener&) = delete;

    // Those since the last call. An access that has returned is among them.
    [[nodiscard]] std::vector<Access> Take() const {
        std::vector<Access> accesses;
        std::array<std::uint8_t, 2048> bytes{};
        sockaddr_ll from{};
        socklen_t length = sizeof from;
        while (true) {
            const ssize_t size = ::recvfrom(socket_, bytes.data(), bytes.size(), 0,
                                            reinterpret_cast<sockaddr*>(&from), &length);
            if (size < 0) {
                return accesses;
            }
            // The loopback network shows each packet on its way out, too.
            if (from.sll_pkttype != PACKET_OUTGOING) {
                take({bytes.data(), static_cast<std::size_t>(size)}, accesses);
            }
        }
    }

private:
    static void take(std::span<const std::uint8_t> packet, std::vector<Access>& accesses) {
        const std::size_t ipHeader = (packet[0] & 0x0FU) * std::size_t{4};
        constexpr std::size_t udpHeader = 8;
        constexpr std::size_t commandHeader = 8;
        constexpr std::size_t word = 4;
        constexpr std::uint8_t udp = 17;
        if (packet.size() < ipHeader + udpHeader + commandHeader + word || packet[9] != udp ||
            GetNumber(packet.data() + ipHeader + 2, 2) != gvcpPort) {
            return;
        }
        const auto command = packet.subspan(ipHeader + udpHeader);
        Access access;
        access.command = GetNumber(command.data() + 2, 2);
        access.address = GetNumber(command.data() + commandHeader, word);
        if (command.size() >= commandHeader + 2 * word) {
            access.value = GetNumber(command.data() + commandHeader + word, word);
        }
        accesses.push_back(access);
    }

    const int socket_;
};

}  // namespace Orlix::Aravis::Testing
