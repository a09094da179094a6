// A client of GVCP that sends any bytes, and a receiver of GVSP that hands out single packets. They
// wait for the network, never for a time.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "protocol.h"

namespace Orlix::Camsim::Testing {

using Buffer = std::vector<std::uint8_t>;

// Appends numbers with their highest byte first.
class Writer {
public:
    template <typename Number>
    Writer& add(Number number) {
        bytes_.resize(bytes_.size() + sizeof number);
        Put(&bytes_[bytes_.size() - sizeof number], number);
        return *this;
    }
    Writer& add(const Buffer& bytes) {
        bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
        return *this;
    }
    [[nodiscard]] const Buffer& bytes() const { return bytes_; }

private:
    Buffer bytes_;
};

[[nodiscard]] Buffer commandOf(Command command, const Buffer& body, std::uint16_t id,
                               std::uint8_t flags = wantsAnswer);
// A number of the camera's registers, lowest byte first.
[[nodiscard]] Buffer registerBytes(std::int64_t value);
[[nodiscard]] Buffer registerBytes(double value);

struct Ack {
    Status status = Status::Error;
    std::uint16_t command = 0;
    std::uint16_t id = 0;
    Buffer body;
};
[[nodiscard]] Ack parseAck(const Buffer& bytes);

// A socket of the loopback network. Fails the test if nothing comes for half a minute.
class UdpSocket {
public:
    UdpSocket();
    ~UdpSocket();
    UdpSocket(const UdpSocket&) = delete;
    UdpSocket& operator=(const UdpSocket&) = delete;

    [[nodiscard]] std::uint16_t port() const;
    void send(const Buffer& bytes, std::uint16_t port) const;
    // Nothing if none comes in that many milliseconds.
    [[nodiscard]] std::optional<Buffer> tryReceive(int milliseconds);
    [[nodiscard]] Buffer receive();
    [[nodiscard]] std::uint16_t lastSender() const { return lastSender_; }

private:
    int file_;
    std::uint16_t lastSender_ = 0;
};

// One program's way to the device. Numbers its commands.
class GevClient {
public:
    explicit GevClient(std::uint16_t port) : port_(port) {}

    void send(const Buffer& bytes) { socket_.send(bytes, port_); }
    [[nodiscard]] Buffer receive() { return socket_.receive(); }
    [[nodiscard]] std::optional<Buffer> tryReceive(int milliseconds) {
        return socket_.tryReceive(milliseconds);
    }
    [[nodiscard]] Ack run(Command command, const Buffer& body, std::uint8_t flags = wantsAnswer);
    [[nodiscard]] std::uint32_t read(std::uint32_t address);
    [[nodiscard]] Status write(std::uint32_t address, std::uint32_t value);
    [[nodiscard]] Buffer readMemory(std::uint32_t address, std::uint16_t count);
    [[nodiscard]] Status writeMemory(std::uint32_t address, const Buffer& bytes);
    // Registers of the camera, by its own addresses.
    void set(std::int64_t address, std::int64_t value);
    void set(std::int64_t address, double value);
    [[nodiscard]] std::int64_t get(std::int64_t address);
    void takeControl();

private:
    UdpSocket socket_;
    std::uint16_t port_;
    std::uint16_t id_ = 0;
};

struct Packet {
    Status status = Status::Success;
    std::uint64_t block = 0;
    PacketKind kind{};
    std::uint32_t id = 0;
    bool longIds = false;
    Buffer content;
};
[[nodiscard]] Packet parsePacket(const Buffer& bytes);

// All packets of one frame as they came, up to the trailer.
struct Frame {
    std::vector<Packet> packets;

    [[nodiscard]] const Buffer& leader() const { return packets.front().content; }
    [[nodiscard]] const Buffer& trailer() const { return packets.back().content; }
    [[nodiscard]] Buffer payload() const;
    [[nodiscard]] std::vector<std::uint32_t> ids() const;
};

class StreamReceiver {
public:
    // Opens the stream channel of a device that the client controls.
    void open(GevClient& client, std::uint32_t packetSize = 1500);
    [[nodiscard]] Packet receive() { return parsePacket(socket_.receive()); }
    [[nodiscard]] Buffer receiveRaw() { return socket_.receive(); }
    [[nodiscard]] std::optional<Buffer> tryReceive(int milliseconds) {
        return socket_.tryReceive(milliseconds);
    }
    [[nodiscard]] Frame receiveFrame();
    [[nodiscard]] std::uint16_t port() const { return socket_.port(); }

private:
    UdpSocket socket_;
};

}  // namespace Orlix::Camsim::Testing
