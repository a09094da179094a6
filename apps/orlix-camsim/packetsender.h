// Puts packets of a block on the wire with few calls of the system: many datagrams a call and, if
// that is wanted and the system can do it, many packets a datagram. Nothing is copied on the way.
// One thread at a time; several senders may share a socket.
#pragma once

#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/uio.h>

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "block.h"
#include "protocol.h"
#include "statistics.h"

namespace Orlix::Camsim {

struct OutgoingPacket {
    std::uint32_t packet = 0;
    Status status = Status::Success;
};

// Whether the system is to cut large datagrams into packets. It is faster, but a program on this
// machine that reads packets from the network's own interface gets them uncut.
enum class Segmenting : std::uint8_t { Off, On };

class PacketSender {
public:
    // The socket stays the caller's.
    PacketSender(int socket, Segmenting segmenting, Statistics& statistics)
        : socket_(socket), statistics_(statistics), canSegment_(segmenting == Segmenting::On) {}

    // Returns how many bytes went out; what the system refused is counted as an error.
    std::uint64_t Send(const Block& block, std::span<const OutgoingPacket> packets);

private:
    static constexpr std::size_t mostPackets = 256;  // of one call of the system

    // Packets in one message.
    struct Group {
        std::size_t first = 0;
        std::size_t count = 0;
        std::size_t segment = 0;  // size of each but the last, which may be smaller
        std::size_t last = 0;
        std::size_t bytes = 0;
    };
    struct alignas(cmsghdr) Control {
        std::array<std::uint8_t, CMSG_SPACE(sizeof(std::uint16_t))> bytes;
    };

    std::uint64_t sendBatch(const Block& block, std::span<const OutgoingPacket> packets);
    void group(const Block& block, std::span<const OutgoingPacket> packets);
    void makeMessages(void* address, std::size_t addressSize);
    std::uint64_t sendMessages();
    std::uint64_t sendSingly(const Group& group, const msghdr& message);
    void addSegmentSize(msghdr& message, Control& control, std::size_t segment) const;

    const int socket_;
    Statistics& statistics_;
    bool canSegment_;
    std::array<std::array<std::uint8_t, longPacketHeader>, mostPackets> headers_;
    std::array<iovec, 2 * mostPackets> parts_;
    std::vector<Group> groups_;
    std::vector<mmsghdr> messages_;
    std::vector<Control> controls_;
};

// An address as the system takes it, and back.
[[nodiscard]] sockaddr_in ToSocketAddress(const Endpoint& endpoint) noexcept;
[[nodiscard]] Endpoint ToEndpoint(const sockaddr_in& address) noexcept;

}  // namespace Orlix::Camsim
