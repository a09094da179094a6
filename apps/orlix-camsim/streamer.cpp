#include "streamer.h"

#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "gcbase/gcexception.h"

namespace Orlix::Camsim {

using Emulated::FrameOrder;
using Emulated::Session;
using std::chrono::nanoseconds;

Streamer::Streamer(std::shared_ptr<Camera> camera, int socket, const StreamOptions& options,
                   const WireFaults& faults, const Silence& silence, Statistics& statistics)
    : camera_(std::move(camera)),
      socket_(socket),
      options_(options),
      faults_(faults),
      silence_(silence),
      statistics_(statistics),
      history_(options.keptBlocks),
      sender_(socket, options.segmenting, statistics),
      resender_(socket, options.segmenting, statistics) {}

Streamer::~Streamer() {
    stop();
}

void Streamer::Set(Session session, const StreamSettings& settings) {
    const bool opens =
        session != 0 && settings.destination.port != 0 && settings.destination.address != 0;
    {
        const std::scoped_lock lock(mutex_);
        settings_ = settings;
    }
    const int mode = settings.doNotFragment ? IP_PMTUDISC_DO : IP_PMTUDISC_DONT;
    static_cast<void>(::setsockopt(socket_, IPPROTO_IP, IP_MTU_DISCOVER, &mode, sizeof mode));
    if (opens && session == session_) {
        return;
    }
    stop();
    if (opens) {
        session_ = session;
        stop_ = false;
        isStopping_ = false;
        thread_ = std::thread([this, session] { run(session); });
    }
}

void Streamer::stop() noexcept {
    if (thread_.joinable()) {
        {
            const std::scoped_lock lock(mutex_);
            isStopping_ = true;
            stopping_.notify_all();
        }
        camera_->Raise(stop_);
        thread_.join();
    }
    session_ = 0;
    history_.Clear();
}

// What it says doesn't matter; its size does, and that the network lets it through whole.
void Streamer::FireTestPacket(const StreamSettings& settings) {
    if (silence_.IsOn()) {
        return;
    }
    std::vector<std::uint8_t> packet(settings.packetSize - ipAndUdpHeader);
    for (std::size_t index = 0; index < packet.size(); ++index) {
        packet[index] = static_cast<std::uint8_t>(index);
    }
    const sockaddr_in address = ToSocketAddress(settings.destination);
    const ssize_t sent = ::sendto(socket_, packet.data(), packet.size(), 0,
                                  reinterpret_cast<const sockaddr*>(&address), sizeof address);
    ++(sent < 0 ? statistics_.sendErrors : statistics_.testPackets);
}

void Streamer::run(Session session) {
    try {
        camera_->BeginStream(session);
    } catch (const GenICam::GenericException&) {
        return;  // it has just lost its power
    }
    blockId_ = options_.firstBlock;
    nextPacket_ = {};
    Emulated::FrameCursor cursor;
    FrameOrder order;
    while (camera_->WaitForFrame(session, stop_, cursor, order)) {
        sendFrame(order);
        camera_->EndFrame(session, order, Emulated::Outcome::Received);
        if (order.faults.unplug) {
            camera_->Unplug(order.faults.unplugged);
        }
    }
    camera_->EndStream(session);
}

void Streamer::sendFrame(const FrameOrder& order) {
    const StreamSettings now = settings();
    const std::shared_ptr<Block> block = history_.Take();
    block->id = blockId_;
    block->longIds = now.longIds;
    block->destination = now.destination;
    block->bytesPerPacket = BytesPerPacket(now.packetSize, now.longIds);
    blockId_ = nextId(blockId_, now.longIds);
    fill(*block, order);
    describe(*block, order);
    spoil(*block, order);
    planSteps(*block, order);
    history_.Put(block);
    ++statistics_.frames;
    transmit(*block, now);
}

// 0 is no number of a frame.
std::uint64_t Streamer::nextId(std::uint64_t id, bool longIds) const noexcept {
    const std::uint64_t next = longIds ? id + 1 : (id + 1) & 0xFFFF;
    return next == 0 ? 1 : next;
}

bool Streamer::hasPicture(const FrameOrder& order) const noexcept {
    return !order.chunks.active || options_.chunkPayload == ChunkPayload::WithPicture;
}

void Streamer::fill(Block& block, const FrameOrder& order) {
    constexpr std::ptrdiff_t chunkTrailer = 8;
    picture_.Prepare(order.settings, order.frameNumber);
    const std::size_t pictureSize = hasPicture(order) ? picture_.GetSize() : 0;
    block.data.resize(pictureSize + Emulated::GetChunkBytes(order.chunks));
    if (pictureSize > 0) {
        picture_.Write(block.data.data(), order.frameNumber);
    }
    Emulated::ChunkValues values = order.values;
    values.timestamp = TicksOf(values.timestamp, options_.tickFrequency);
    Emulated::WriteChunks(order.chunks, values, picture_.GetSceneName(), block.data.data(),
                          pictureSize);
    if (!hasPicture(order)) {
        // Nor is there a chunk of no picture.
        block.data.erase(block.data.begin(), block.data.begin() + chunkTrailer);
    }
    if (order.faults.cutChunk) {
        Emulated::CutChunk(order.chunks, block.data.data(), block.data.size());
    }
}

void Streamer::describe(Block& block, const FrameOrder& order) const {
    const std::uint16_t withChunks = hasPicture(order) ? payloadImageWithChunks : payloadChunks;
    const std::uint16_t own = order.chunks.active ? withChunks : payloadImage;
    const std::uint16_t kind = options_.payloadType.value_or(own);
    block.leader.fill(0);
    Put(&block.leader[2], kind);
    Put(&block.leader[4], TicksOf(order.timestamp, options_.tickFrequency));
    block.leaderSize = hasPicture(order) ? block.leader.size() : 12;
    block.trailer.fill(0);
    Put(&block.trailer[2], kind);
    std::size_t end = 4;
    const auto append = [&](std::uint32_t number) {
        Put(&block.trailer[end], number);
        end += sizeof number;
    };
    if (order.chunks.active) {
        append(static_cast<std::uint32_t>(block.data.size()));
    }
    if (hasPicture(order)) {
        describePicture(block, order);
        append(order.settings.region.height);
    }
    if (order.chunks.active) {
        // The layout of the chunks is the same as long as the same ones are on.
        append(order.chunks.enabled + (order.chunks.unknown ? 1U << 31 : 0U));
    }
    block.trailerSize = end;
}

void Streamer::describePicture(Block& block, const FrameOrder& order) {
    const Emulated::Region& region = order.settings.region;
    std::uint8_t* const leader = block.leader.data();
    Put(leader + 12, static_cast<std::uint32_t>(order.settings.pixelType));
    Put(leader + 16, region.width);
    Put(leader + 20, region.height);
    Put(leader + 24, region.offsetX);
    Put(leader + 28, region.offsetY);
}

// The camera's own faults, as far as they lie in the frame.
void Streamer::spoil(Block& block, const FrameOrder& order) {
    const auto size = static_cast<std::int64_t>(block.data.size()) + order.faults.sizeChange;
    block.data.resize(static_cast<std::size_t>(std::max<std::int64_t>(size, 0)));
    block.trailerStatus = order.faults.badTrailer ? Status::DataOverrun : Status::Success;
    block.resends = faults_.ResendsOf(order.frameNumber + 1);
    block.firstLost = 0;
    block.lostEnd = 0;
    block.turnEnd = 0;
    const std::uint32_t count = block.PacketCount();
    if (order.faults.missingPackets > 0) {
        const auto lost = static_cast<std::uint32_t>(
            std::min<std::uint64_t>(order.faults.missingPackets, block.PayloadPackets()));
        block.firstLost = 1 + (block.PayloadPackets() - lost) / 2;
        block.lostEnd = block.firstLost + lost;
    }
    if (order.faults.unplug || order.faults.lostEnd) {
        block.resends = Resends::Ignore;
        block.firstLost = order.faults.unplug ? count / 2 : count - 1;
        block.lostEnd = count;
    }
}

void Streamer::planSteps(const Block& block, const FrameOrder& order) {
    steps_.clear();
    for (std::uint32_t packet = 0; packet < block.PacketCount(); ++packet) {
        if (packet >= block.firstLost && packet < block.lostEnd) {
            ++statistics_.droppedPackets;
        } else {
            steps_.push_back({packet, nanoseconds(0)});
        }
    }
    dropMiddle(block, order.faults.resentPackets);
    faults_.Apply(order.frameNumber + 1, block, steps_, statistics_);
}

// Packets that come only if they are asked for.
void Streamer::dropMiddle(const Block& block, std::uint64_t count) {
    const auto dropped =
        static_cast<std::uint32_t>(std::min<std::uint64_t>(count, block.PayloadPackets()));
    const std::uint32_t first = 1 + (block.PayloadPackets() - dropped) / 2;
    const auto end = std::remove_if(steps_.begin(), steps_.end(), [&](const WireStep& step) {
        return step.packet >= first && step.packet - first < dropped;
    });
    statistics_.droppedPackets += static_cast<std::uint64_t>(steps_.end() - end);
    steps_.erase(end, steps_.end());
}

// The link's speed and the delay between packets are kept on average: packets that are due within
// the shortest time that is worth a nap go out together.
void Streamer::transmit(Block& block, const StreamSettings& settings) {
    constexpr std::chrono::microseconds burst{100};
    constexpr std::chrono::milliseconds mostBehind{1};
    const nanoseconds delay(NanosecondsOf(settings.packetDelay, options_.tickFrequency));
    Clock::time_point now = Clock::now();
    nextPacket_ = std::max(nextPacket_, now - mostBehind);
    std::size_t first = 0;
    for (std::size_t index = 0; index < steps_.size(); ++index) {
        const WireStep& step = steps_[index];
        if (step.pause > nanoseconds(0)) {
            nextPacket_ = std::max(nextPacket_, now) + step.pause;
        }
        if (nextPacket_ - now > burst || step.pause > nanoseconds(0)) {
            sendSteps(block, first, index);
            first = index;
            napUntil(nextPacket_);
            now = Clock::now();
            nextPacket_ = std::max(nextPacket_, now - mostBehind);
        }
        nextPacket_ += timeOf(block, step.packet) + delay;
    }
    sendSteps(block, first, steps_.size());
    block.turnEnd = block.PacketCount();
}

// A pause of a script may be long; the end of the channel isn't to wait for it.
void Streamer::napUntil(Clock::time_point time) {
    std::unique_lock lock(mutex_);
    stopping_.wait_until(lock, time, [this] { return isStopping_; });
}

// What a packet takes on a link of that speed.
nanoseconds Streamer::timeOf(const Block& block, std::uint32_t packet) const noexcept {
    constexpr std::uint64_t nanosecondBits = 8'000;  // of a link of one megabit a second
    if (options_.linkMegabits == 0) {
        return nanoseconds(0);
    }
    const std::size_t header = block.longIds ? longPacketHeader : shortPacketHeader;
    const std::size_t size = ipAndUdpHeader + header + block.ContentOf(packet).size();
    return nanoseconds(size * nanosecondBits / options_.linkMegabits);
}

void Streamer::sendSteps(Block& block, std::size_t first, std::size_t end) {
    if (first == end) {
        return;
    }
    outgoing_.clear();
    std::uint32_t turnEnd = block.turnEnd;
    const std::uint32_t trailer = block.PacketCount() - 1;
    for (std::size_t index = first; index < end; ++index) {
        const std::uint32_t packet = steps_[index].packet;
        outgoing_.push_back({packet, packet == trailer ? block.trailerStatus : Status::Success});
        turnEnd = std::max(turnEnd, packet + 1);
    }
    // Before they are sent: who has a packet may ask for it again at once.
    block.turnEnd = turnEnd;
    if (!silence_.IsOn()) {
        statistics_.packets += outgoing_.size();
        statistics_.bytes += sender_.Send(block, outgoing_);
    } else {
        statistics_.droppedPackets += outgoing_.size();
    }
}

StreamSettings Streamer::settings() const {
    const std::scoped_lock lock(mutex_);
    return settings_;
}

// Packets whose turn is still to come aren't answered: they come.
void Streamer::Resend(const ResendRequest& request) {
    ++statistics_.resendRequests;
    const History::Hold hold(history_, request.blockId);
    const Block* const block = hold.Get();
    const Resends resends = block != nullptr ? block->resends : faults_.ResendsOf(0);
    if (resends == Resends::Ignore || silence_.IsOn() || request.firstPacket > request.lastPacket) {
        return;
    }
    if (block == nullptr || request.firstPacket >= block->PacketCount()) {
        deny(request);
        return;
    }
    ++attempt_;
    again_.clear();
    std::uint64_t denied = 0;
    const std::uint32_t turnEnd = block->turnEnd;
    for (std::uint32_t packet = request.firstPacket;
         packet < turnEnd && packet <= request.lastPacket; ++packet) {
        const bool isLost =
            resends == Resends::Deny || (packet >= block->firstLost && packet < block->lostEnd);
        denied += isLost ? 1 : 0;
        if (!isLost && faults_.Loses(block->id, packet, attempt_)) {
            ++statistics_.droppedPackets;
        } else {
            again_.push_back(
                {packet, isLost ? Status::PacketUnavailable : statusOfResent(*block, packet)});
        }
    }
    statistics_.deniedPackets += denied;
    statistics_.resentPackets += again_.size() - denied;
    static_cast<void>(resender_.Send(*block, again_));
}

// A trailer that tells of a damaged frame tells it each time.
Status Streamer::statusOfResent(const Block& block, std::uint32_t packet) noexcept {
    const bool isTrailer = packet == block.PacketCount() - 1;
    return isTrailer && block.trailerStatus != Status::Success ? block.trailerStatus
                                                               : Status::Resent;
}

// Of a block that is forgotten nobody knows how many packets it had: one answer for all of them,
// that is nothing but a header.
void Streamer::deny(const ResendRequest& request) {
    const Endpoint destination = settings().destination;
    ++statistics_.deniedPackets;
    if (destination.port == 0) {
        return;
    }
    std::array<std::uint8_t, longPacketHeader> header{};
    const PacketKind kind = request.firstPacket == 0 ? PacketKind::Leader : PacketKind::Payload;
    const std::size_t size =
        WriteHeader({request.blockId, request.longIds, kind, request.firstPacket},
                    Status::PacketUnavailable, header.data());
    const sockaddr_in address = ToSocketAddress(destination);
    if (::sendto(socket_, header.data(), size, 0, reinterpret_cast<const sockaddr*>(&address),
                 sizeof address) < 0) {
        ++statistics_.sendErrors;
    }
}

}  // namespace Orlix::Camsim
