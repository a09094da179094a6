#include "packetsender.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/udp.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace Orlix::Camsim {
namespace {

constexpr std::size_t mostSegments = 64;
constexpr std::size_t mostGroupBytes = 65000;

}  // namespace

sockaddr_in ToSocketAddress(const Endpoint& endpoint) noexcept {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(endpoint.address);
    address.sin_port = htons(endpoint.port);
    return address;
}

Endpoint ToEndpoint(const sockaddr_in& address) noexcept {
    return {ntohl(address.sin_addr.s_addr), ntohs(address.sin_port)};
}

std::uint64_t PacketSender::Send(const Block& block, std::span<const OutgoingPacket> packets) {
    std::uint64_t bytes = 0;
    while (!packets.empty()) {
        const std::size_t count = std::min(packets.size(), mostPackets);
        bytes += sendBatch(block, packets.first(count));
        packets = packets.subspan(count);
    }
    return bytes;
}

std::uint64_t PacketSender::sendBatch(const Block& block, std::span<const OutgoingPacket> packets) {
    group(block, packets);
    sockaddr_in address = ToSocketAddress(block.destination);
    makeMessages(&address, sizeof address);
    return sendMessages();
}

// Neighbours of one size go together, with a smaller one at the end.
void PacketSender::group(const Block& block, std::span<const OutgoingPacket> packets) {
    groups_.clear();
    for (std::size_t index = 0; index < packets.size(); ++index) {
        const OutgoingPacket& packet = packets[index];
        auto& header = headers_[index];
        const std::size_t headerSize =
            WriteHeader(block.NameOf(packet.packet), packet.status, header.data());
        const bool hasContent = packet.status == Status::Success ||
                                packet.status == Status::Resent ||
                                packet.status == Status::DataOverrun;
        const Bytes content = hasContent ? block.ContentOf(packet.packet) : Bytes();
        parts_[2 * index] = {header.data(), headerSize};
        // The system doesn't write into what it sends.
        parts_[2 * index + 1] = {const_cast<std::uint8_t*>(content.data()), content.size()};
        const std::size_t size = headerSize + content.size();
        const bool joins = canSegment_ && !groups_.empty() &&
                           groups_.back().last == groups_.back().segment &&
                           size <= groups_.back().segment && groups_.back().count < mostSegments &&
                           groups_.back().bytes + size <= mostGroupBytes;
        if (!joins) {
            groups_.push_back({index, 0, size, size, 0});
        }
        groups_.back().count += 1;
        groups_.back().last = size;
        groups_.back().bytes += size;
    }
}

void PacketSender::makeMessages(void* address, std::size_t addressSize) {
    messages_.assign(groups_.size(), mmsghdr{});
    controls_.resize(groups_.size());
    for (std::size_t index = 0; index < groups_.size(); ++index) {
        msghdr& message = messages_[index].msg_hdr;
        message.msg_name = address;
        message.msg_namelen = static_cast<socklen_t>(addressSize);
        message.msg_iov = &parts_[2 * groups_[index].first];
        message.msg_iovlen = 2 * groups_[index].count;
        if (groups_[index].count > 1) {
            addSegmentSize(message, controls_[index], groups_[index].segment);
        }
    }
}

void PacketSender::addSegmentSize(msghdr& message, Control& control, std::size_t segment) const {
    control = {};
    message.msg_control = &control;
    message.msg_controllen = sizeof control.bytes;
    cmsghdr* const header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_UDP;
    header->cmsg_type = UDP_SEGMENT;
    header->cmsg_len = CMSG_LEN(sizeof(std::uint16_t));
    const auto value = static_cast<std::uint16_t>(segment);
    std::memcpy(CMSG_DATA(header), &value, sizeof value);
}

std::uint64_t PacketSender::sendMessages() {
    std::uint64_t bytes = 0;
    std::size_t done = 0;
    while (done < messages_.size()) {
        const int count = ::sendmmsg(socket_, &messages_[done],
                                     static_cast<unsigned>(messages_.size() - done), 0);
        if (count > 0) {
            for (const std::size_t end = done + static_cast<std::size_t>(count); done < end;
                 ++done) {
                bytes += groups_[done].bytes;
            }
        } else if (errno != EINTR) {
            bytes += sendSingly(groups_[done], messages_[done].msg_hdr);
            ++done;
        }
    }
    return bytes;
}

// A message of several packets fails where the network can't take packets of that size, or the
// system can't cut them; then there are no more of that kind.
std::uint64_t PacketSender::sendSingly(const Group& group, const msghdr& message) {
    if (group.count == 1) {
        ++statistics_.sendErrors;
        return 0;
    }
    canSegment_ = false;
    std::uint64_t bytes = 0;
    for (std::size_t index = 0; index < group.count; ++index) {
        msghdr single{};
        single.msg_name = message.msg_name;
        single.msg_namelen = message.msg_namelen;
        single.msg_iov = &parts_[2 * (group.first + index)];
        single.msg_iovlen = 2;
        const ssize_t size = ::sendmsg(socket_, &single, 0);
        if (size < 0) {
            ++statistics_.sendErrors;
        } else {
            bytes += static_cast<std::uint64_t>(size);
        }
    }
    return bytes;
}

}  // namespace Orlix::Camsim
