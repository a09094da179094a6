#include "block.h"

#include <algorithm>
#include <utility>

namespace Orlix::Camsim {

Bytes Block::ContentOf(std::uint32_t packet) const noexcept {
    if (packet == 0) {
        return Bytes(leader).first(leaderSize);
    }
    if (packet > PayloadPackets()) {
        return Bytes(trailer).first(trailerSize);
    }
    const std::size_t begin = std::size_t{packet - 1} * bytesPerPacket;
    return Bytes(data).subspan(begin, std::min<std::size_t>(bytesPerPacket, data.size() - begin));
}

PacketName Block::NameOf(std::uint32_t packet) const noexcept {
    PacketKind kind = PacketKind::Payload;
    if (packet == 0) {
        kind = PacketKind::Leader;
    } else if (packet > PayloadPackets()) {
        kind = PacketKind::Trailer;
    }
    return {id, longIds, kind, packet};
}

std::size_t WriteHeader(const PacketName& name, Status status, std::uint8_t* out) noexcept {
    constexpr unsigned kindShift = 24;
    const auto kind = static_cast<std::uint32_t>(name.kind);
    Put(out, static_cast<std::uint16_t>(status));
    if (!name.longIds) {
        Put(out + 2, static_cast<std::uint16_t>(name.block));
        Put(out + 4, kind << kindShift | (name.packet & lastPacketId));
        return shortPacketHeader;
    }
    Put(out + 2, std::uint16_t{0});
    Put(out + 4, (kind | longIdFlag) << kindShift);
    Put(out + 8, name.block);
    Put(out + 16, name.packet);
    return longPacketHeader;
}

std::shared_ptr<Block> History::Take() {
    const std::scoped_lock lock(mutex_);
    if (blocks_.size() >= size_ && !blocks_.empty()) {
        std::shared_ptr<Block> oldest = std::move(blocks_.front());
        blocks_.pop_front();
        // Whoever sends it again at this moment keeps it.
        if (oldest.use_count() == 1) {
            return oldest;
        }
    }
    return std::make_shared<Block>();
}

void History::Put(std::shared_ptr<Block> block) {
    const std::scoped_lock lock(mutex_);
    blocks_.push_back(std::move(block));
}

History::Hold::Hold(History& history, std::uint64_t id) : history_(history) {
    const std::scoped_lock lock(history_.mutex_);
    const auto found = std::find_if(history_.blocks_.begin(), history_.blocks_.end(),
                                    [&](const auto& block) { return block->id == id; });
    block_ = found == history_.blocks_.end() ? nullptr : *found;
}

// Under the lock, so that who takes the block next sees that all reading is over.
History::Hold::~Hold() {
    const std::scoped_lock lock(history_.mutex_);
    block_ = nullptr;
}

void History::Clear() {
    const std::scoped_lock lock(mutex_);
    blocks_.clear();
}

}  // namespace Orlix::Camsim
