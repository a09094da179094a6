#include "camsim/support/gevclient.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <bit>
#include <cstring>
#include <stdexcept>

#include "bootstrap.h"
#include "serveddescription.h"

namespace Orlix::Camsim::Testing {

Buffer commandOf(Command command, const Buffer& body, std::uint16_t id, std::uint8_t flags) {
    return Writer()
        .add(commandKey)
        .add(flags)
        .add(static_cast<std::uint16_t>(command))
        .add(static_cast<std::uint16_t>(body.size()))
        .add(id)
        .add(body)
        .bytes();
}

Buffer registerBytes(std::int64_t value) {
    Buffer bytes(sizeof value);
    std::memcpy(bytes.data(), &value, sizeof value);
    return bytes;
}

Buffer registerBytes(double value) {
    return registerBytes(std::bit_cast<std::int64_t>(value));
}

Ack parseAck(const Buffer& bytes) {
    if (bytes.size() < commandHeaderSize ||
        Get<std::uint16_t>(&bytes[4]) != bytes.size() - commandHeaderSize) {
        throw std::runtime_error("an answer whose length is wrong");
    }
    return {static_cast<Status>(Get<std::uint16_t>(&bytes[0])), Get<std::uint16_t>(&bytes[2]),
            Get<std::uint16_t>(&bytes[6]), Buffer(bytes.begin() + commandHeaderSize, bytes.end())};
}

UdpSocket::UdpSocket() : file_(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
    const int room = 8 << 20;
    if (::setsockopt(file_, SOL_SOCKET, SO_RCVBUFFORCE, &room, sizeof room) != 0) {
        ::setsockopt(file_, SOL_SOCKET, SO_RCVBUF, &room, sizeof room);
    }
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(::bind(file_, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
}

UdpSocket::~UdpSocket() {
    ::close(file_);
}

std::uint16_t UdpSocket::port() const {
    sockaddr_in address{};
    socklen_t size = sizeof address;
    ::getsockname(file_, reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(address.sin_port);
}

void UdpSocket::send(const Buffer& bytes, std::uint16_t port) const {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    EXPECT_EQ(::sendto(file_, bytes.data(), bytes.size(), 0,
                       reinterpret_cast<const sockaddr*>(&address), sizeof address),
              static_cast<ssize_t>(bytes.size()));
}

std::optional<Buffer> UdpSocket::tryReceive(int milliseconds) {
    pollfd wait{file_, POLLIN, 0};
    if (::poll(&wait, 1, milliseconds) != 1) {
        return std::nullopt;
    }
    Buffer bytes(65536);
    sockaddr_in sender{};
    socklen_t size = sizeof sender;
    const ssize_t count = ::recvfrom(file_, bytes.data(), bytes.size(), 0,
                                     reinterpret_cast<sockaddr*>(&sender), &size);
    if (count < 0) {
        return std::nullopt;
    }
    bytes.resize(static_cast<std::size_t>(count));
    lastSender_ = ntohs(sender.sin_port);
    return bytes;
}

Buffer UdpSocket::receive() {
    constexpr int longest = 30'000;
    auto bytes = tryReceive(longest);
    if (!bytes) {
        throw std::runtime_error("nothing came");
    }
    return std::move(*bytes);
}

Ack GevClient::run(Command command, const Buffer& body, std::uint8_t flags) {
    ++id_;
    send(commandOf(command, body, id_, flags));
    Ack ack = parseAck(receive());
    EXPECT_EQ(ack.id, id_);
    EXPECT_EQ(ack.command, static_cast<std::uint16_t>(command) + 1);
    return ack;
}

std::uint32_t GevClient::read(std::uint32_t address) {
    const Ack ack = run(Command::ReadReg, Writer().add(address).bytes());
    EXPECT_EQ(ack.status, Status::Success) << std::hex << address;
    return ack.body.size() == 4 ? Get<std::uint32_t>(ack.body.data()) : 0;
}

Status GevClient::write(std::uint32_t address, std::uint32_t value) {
    return run(Command::WriteReg, Writer().add(address).add(value).bytes()).status;
}

Buffer GevClient::readMemory(std::uint32_t address, std::uint16_t count) {
    const Ack ack =
        run(Command::ReadMem, Writer().add(address).add(std::uint16_t{0}).add(count).bytes());
    EXPECT_EQ(ack.status, Status::Success) << std::hex << address;
    return ack.body.size() < 4 ? Buffer() : Buffer(ack.body.begin() + 4, ack.body.end());
}

Status GevClient::writeMemory(std::uint32_t address, const Buffer& bytes) {
    return run(Command::WriteMem, Writer().add(address).add(bytes).bytes()).status;
}

void GevClient::set(std::int64_t address, std::int64_t value) {
    EXPECT_EQ(writeMemory(cameraBase + static_cast<std::uint32_t>(address), registerBytes(value)),
              Status::Success)
        << std::hex << address;
}

void GevClient::set(std::int64_t address, double value) {
    set(address, std::bit_cast<std::int64_t>(value));
}

std::int64_t GevClient::get(std::int64_t address) {
    const Buffer bytes = readMemory(cameraBase + static_cast<std::uint32_t>(address), 8);
    std::int64_t value = 0;
    std::memcpy(&value, bytes.data(), std::min(bytes.size(), sizeof value));
    return value;
}

void GevClient::takeControl() {
    ASSERT_EQ(write(Reg::control, Bit::controlled), Status::Success);
}

Packet parsePacket(const Buffer& bytes) {
    if (bytes.size() < shortPacketHeader) {
        throw std::runtime_error("a packet that is too short");
    }
    Packet packet;
    packet.status = static_cast<Status>(Get<std::uint16_t>(&bytes[0]));
    packet.longIds = (bytes[4] & longIdFlag) != 0;
    packet.kind = static_cast<PacketKind>(bytes[4] & 0x0F);
    packet.block = packet.longIds ? Get<std::uint64_t>(&bytes[8]) : Get<std::uint16_t>(&bytes[2]);
    packet.id = packet.longIds ? Get<std::uint32_t>(&bytes[16])
                               : Get<std::uint32_t>(&bytes[4]) & lastPacketId;
    packet.content.assign(bytes.begin() + (packet.longIds ? longPacketHeader : shortPacketHeader),
                          bytes.end());
    return packet;
}

Buffer Frame::payload() const {
    Buffer payload;
    for (const Packet& packet : packets) {
        if (packet.kind == PacketKind::Payload) {
            payload.insert(payload.end(), packet.content.begin(), packet.content.end());
        }
    }
    return payload;
}

std::vector<std::uint32_t> Frame::ids() const {
    std::vector<std::uint32_t> ids;
    for (const Packet& packet : packets) {
        ids.push_back(packet.id);
    }
    return ids;
}

void StreamReceiver::open(GevClient& client, std::uint32_t packetSize) {
    ASSERT_EQ(client.write(Reg::packetSize, packetSize), Status::Success);
    ASSERT_EQ(client.write(Reg::streamAddress, INADDR_LOOPBACK), Status::Success);
    ASSERT_EQ(client.write(Reg::streamPort, socket_.port()), Status::Success);
}

Frame StreamReceiver::receiveFrame() {
    Frame frame;
    do {
        frame.packets.push_back(receive());
    } while (frame.packets.back().kind != PacketKind::Trailer);
    return frame;
}

}  // namespace Orlix::Camsim::Testing
