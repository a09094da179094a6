// One frame as it goes over the wire: a block of numbered packets, the leader first, then the
// payload in equal pieces, then the trailer. Written by the thread that sends it; read by others
// once it is in the history.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <vector>

#include "protocol.h"

namespace Orlix::Camsim {

// What a device does when it is asked for a packet again.
enum class Resends : std::uint8_t { Answer, Ignore, Deny };

// A packet, as its header names it.
struct PacketName {
    std::uint64_t block = 0;
    bool longIds = false;
    PacketKind kind = PacketKind::Payload;
    std::uint32_t packet = 0;
};
// Returns the size of the header; there is room for the long one.
std::size_t WriteHeader(const PacketName& name, Status status, std::uint8_t* out) noexcept;

struct Block {
    std::uint64_t id = 0;
    bool longIds = false;
    Endpoint destination;
    std::uint32_t bytesPerPacket = 0;
    std::vector<std::uint8_t> data;
    std::array<std::uint8_t, 36> leader{};
    std::size_t leaderSize = 36;
    std::array<std::uint8_t, 16> trailer{};
    std::size_t trailerSize = 8;
    Status trailerStatus = Status::Success;
    Resends resends = Resends::Answer;
    // Packets that are gone for good, as if the device had no memory of them.
    std::uint32_t firstLost = 0;
    std::uint32_t lostEnd = 0;
    // All packets before this one have had their turn.
    std::atomic<std::uint32_t> turnEnd{0};

    [[nodiscard]] std::uint32_t PayloadPackets() const noexcept {
        return static_cast<std::uint32_t>((data.size() + bytesPerPacket - 1) / bytesPerPacket);
    }
    // Leader and trailer, too.
    [[nodiscard]] std::uint32_t PacketCount() const noexcept { return PayloadPackets() + 2; }
    [[nodiscard]] Bytes ContentOf(std::uint32_t packet) const noexcept;
    [[nodiscard]] PacketName NameOf(std::uint32_t packet) const noexcept;
};

// The bytes of a frame that one packet carries.
[[nodiscard]] constexpr std::uint32_t BytesPerPacket(std::uint32_t packetSize,
                                                     bool longIds) noexcept {
    const std::size_t headers = ipAndUdpHeader + (longIds ? longPacketHeader : shortPacketHeader);
    return static_cast<std::uint32_t>(packetSize - headers) & ~3U;
}

// The blocks that can be sent again; the oldest gives way to the next. Any thread may call.
class History {
public:
    explicit History(std::size_t size) : size_(size) {}

    // Keeps a block from being filled anew as long as this object lives.
    class Hold {
    public:
        Hold(History& history, std::uint64_t id);
        ~Hold();
        Hold(const Hold&) = delete;
        Hold& operator=(const Hold&) = delete;
        // Null if it isn't there any more, or never was.
        [[nodiscard]] const Block* Get() const noexcept { return block_.get(); }

    private:
        History& history_;
        std::shared_ptr<const Block> block_;
    };

    // A block to fill, that nobody else sees. Its memory is that of an old one.
    [[nodiscard]] std::shared_ptr<Block> Take();
    void Put(std::shared_ptr<Block> block);
    void Clear();

private:
    const std::size_t size_;
    mutable std::mutex mutex_;
    std::deque<std::shared_ptr<Block>> blocks_;
};

}  // namespace Orlix::Camsim
