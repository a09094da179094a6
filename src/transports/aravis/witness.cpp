#include "aravis/witness.h"

#include <netinet/in.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <exception>
#include <system_error>
#include <utility>

#include "aravis/bigendian.h"

namespace Orlix::Aravis {

namespace {

constexpr std::size_t mostBytes = 65536;  // of a packet

// As much room as the other socket has: what is too long for a buffer may come at full speed.
void takeRoomOf(int other, int descriptor) {
    int size = 0;
    socklen_t length = sizeof size;
    if (::getsockopt(other, SOL_SOCKET, SO_RCVBUF, &size, &length) == 0) {
        size /= 2;  // the kernel tells twice of what was asked for
        static_cast<void>(::setsockopt(descriptor, SOL_SOCKET, SO_RCVBUF, &size, sizeof size));
    }
}

}  // namespace

// The parts of a packet's header, for both lengths of ids.
struct Witness::Packet {
    explicit Packet(std::span<std::uint8_t> all) : bytes(all) {
        isLong =
            bytes.size() > Gvsp::formatPlace && (bytes[Gvsp::formatPlace] & Gvsp::longIdsBit) != 0;
        header = isLong ? Gvsp::longHeader : Gvsp::shortHeader;
    }
    [[nodiscard]] bool IsWhole() const { return bytes.size() >= header; }
    [[nodiscard]] std::uint8_t Format() const {
        return bytes[Gvsp::formatPlace] & Gvsp::formatMask;
    }
    [[nodiscard]] bool HasError() const {
        return (GetNumber(bytes.data(), 2) & Gvsp::errorBit) != 0;
    }
    [[nodiscard]] std::uint64_t Block() const {
        return isLong ? GetNumber(bytes.data() + 8, 8) : GetNumber(bytes.data() + 2, 2);
    }
    [[nodiscard]] std::uint64_t Number() const {
        return isLong ? GetNumber(bytes.data() + 16, 4) : GetNumber(bytes.data() + 5, 3);
    }
    void SetNumber(std::uint32_t number) const {
        isLong ? PutNumber(bytes.data() + 16, 4, number) : PutNumber(bytes.data() + 5, 3, number);
    }

    std::span<std::uint8_t> bytes;
    bool isLong = false;
    std::size_t header = 0;
};

std::unique_ptr<Witness> Witness::Open(const StreamSocket& socket, const StreamShape& shape) {
    std::unique_ptr<Witness> witness(new Witness(socket, shape));
    return socket.IsKnown() && witness->open() ? std::move(witness) : nullptr;
}

Witness::Witness(const StreamSocket& socket, const StreamShape& shape)
    : stream_(socket),
      shape_(shape),
      whenQueued_(MakePacketFilter(shape, Buffers::Queued)),
      whenNone_(MakePacketFilter(shape, Buffers::None)),
      bytes_(mostBytes) {}

Witness::~Witness() {
    End();
    for (const int descriptor : {socket_, wake_}) {
        if (descriptor >= 0) {
            ::close(descriptor);
        }
    }
}

// The order of the sockets is that of their joining: Aravis' has number 0. Until the filter is
// there any packet may come here; the thread sends it on.
bool Witness::open() {
    sockaddr_in name{};
    socklen_t length = sizeof name;
    auto* const plainName = reinterpret_cast<sockaddr*>(&name);
    const int on = 1;
    socket_ = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    wake_ = ::eventfd(0, EFD_CLOEXEC);
    const auto share = [&](int descriptor) {
        return ::setsockopt(descriptor, SOL_SOCKET, SO_REUSEPORT, &on, sizeof on) == 0;
    };
    if (socket_ < 0 || wake_ < 0 || !share(stream_.Get()) || !share(socket_) ||
        ::getsockname(stream_.Get(), plainName, &length) != 0 ||
        ::bind(socket_, plainName, length) != 0) {
        return false;
    }
    takeRoomOf(stream_.Get(), socket_);
    const sock_fprog program{static_cast<unsigned short>(whenQueued_.size()),
                             const_cast<sock_filter*>(whenQueued_.data())};
    if (::setsockopt(stream_.Get(), SOL_SOCKET, SO_ATTACH_REUSEPORT_CBPF, &program,
                     sizeof program) != 0) {
        return false;
    }
    try {
        thread_ = std::thread([this] { run(); });
    } catch (const std::system_error&) {
        return false;
    }
    return true;
}

void Witness::SetBuffers(Buffers buffers) noexcept {
    {
        const std::scoped_lock lock(mutex_);
        if (buffers == buffers_) {
            return;
        }
    }
    if (buffers == Buffers::None) {
        attach(buffers);
        return;
    }
    const std::scoped_lock order(receive_);
    sendOn();
    attach(buffers);
    sendOn();
}

void Witness::attach(Buffers buffers) noexcept {
    const auto& filter = buffers == Buffers::None ? whenNone_ : whenQueued_;
    const sock_fprog program{static_cast<unsigned short>(filter.size()),
                             const_cast<sock_filter*>(filter.data())};
    const std::scoped_lock lock(mutex_);
    if (::setsockopt(stream_.Get(), SOL_SOCKET, SO_ATTACH_REUSEPORT_CBPF, &program,
                     sizeof program) == 0) {
        buffers_ = buffers;
    }
}

void Witness::End() noexcept {
    if (!thread_.joinable()) {
        return;
    }
    const std::uint64_t one = 1;
    static_cast<void>(::write(wake_, &one, sizeof one));
    thread_.join();
    const std::scoped_lock lock(mutex_);
    hasEnded_ = true;
}

void Witness::run() noexcept {
    std::array<pollfd, 2> waits = {pollfd{socket_, POLLIN, 0}, pollfd{wake_, POLLIN, 0}};
    while (waits[1].revents == 0) {
        static_cast<void>(::poll(waits.data(), waits.size(), -1));
        const std::scoped_lock order(receive_);
        sendOn();
    }
}

// With the lock held; no longer than for what a moment brings.
void Witness::sendOn() noexcept {
    constexpr int most = 1000;
    for (int packet = 0; packet < most; ++packet) {
        const ssize_t size = ::recv(socket_, bytes_.data(), bytes_.size(), 0);
        if (size <= 0) {
            return;
        }
        try {
            take({bytes_.data(), static_cast<std::size_t>(size)});
        } catch (const std::exception&) {
            // Without memory for what it tells, the packet is lost.
        }
    }
}

// What is beyond the buffer is left out, and the trailer gets the place behind what has room.
void Witness::take(std::span<std::uint8_t> bytes) {
    const Packet packet(bytes);
    if (!packet.IsWhole()) {
        return;
    }
    const FrameShape& shape = packet.isLong ? shape_.ofLongIds : shape_.ofShortIds;
    const bool isTrailer = packet.Format() == Gvsp::trailer;
    const bool isPayload = packet.Format() == Gvsp::payload;
    const std::uint64_t room = isTrailer ? shape.count + 1 : shape.count;
    const bool isBeyond = (isTrailer || isPayload) && packet.Number() > room;
    const bool isLast = isPayload && packet.Number() == shape.count;
    // There are cameras that number it one too high; had they sent more, that packet would tell.
    const bool isMiscounted = isTrailer && packet.Number() == room + 1;
    const bool isLong =
        (isBeyond && !isMiscounted) || (isLast && bytes.size() > packet.header + shape.last);
    note(packet, isTrailer && packet.HasError(), isLong);
    if (isPayload && isBeyond) {
        return;
    }
    if (isLast) {
        bytes = bytes.first(std::min(bytes.size(), packet.header + shape.last));
    } else if (isBeyond) {
        packet.SetNumber(shape.count + 1);
    }
    PutNumber(bytes.data(), 2, Gvsp::seen);
    sockaddr_in name{};
    socklen_t length = sizeof name;
    auto* const plainName = reinterpret_cast<sockaddr*>(&name);
    if (::getsockname(socket_, plainName, &length) == 0) {
        static_cast<void>(
            ::sendto(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL, plainName, length));
    }
}

void Witness::note(const Packet& packet, bool isBad, bool isLong) {
    constexpr std::size_t mostNotes = 256;
    const std::scoped_lock lock(mutex_);
    hasLongIds_ = packet.isLong;
    const std::uint64_t number = numberOf(packet.Block(), std::max(newest_, lastTaken_));
    if (isBad || isLong) {
        notes_.push_back({number, isLong ? Evidence::TooLong : Evidence::BadTrailer});
        if (notes_.size() > mostNotes) {
            notes_.pop_front();
        }
    }
    if (buffers_ != Buffers::None || packet.Format() == Gvsp::payload || number <= lastTaken_) {
        return;
    }
    missed_.Add(number);
    newest_ = std::max(newest_, number);
}

// Short ids begin anew at 1 after 65535: the number with that id that is nearest.
std::uint64_t Witness::numberOf(std::uint64_t block, std::uint64_t near) const noexcept {
    constexpr std::uint64_t period = 0xFFFF;
    if (hasLongIds_ || block > period) {
        return block;
    }
    const std::uint64_t round = near / period * period + block;
    if (round > near + period / 2) {
        return round > period ? round - period : round;
    }
    return round + period / 2 < near ? round + period : round;
}

Evidence Witness::TakeEvidence(std::uint64_t block) {
    const std::scoped_lock lock(mutex_);
    if (block == 0) {
        return Evidence::None;
    }
    const std::uint64_t number = numberOf(block, lastTaken_);
    Evidence evidence = Evidence::None;
    for (const Note& note : notes_) {
        evidence = note.number == number ? std::max(evidence, note.evidence) : evidence;
    }
    std::erase_if(notes_, [&](const Note& note) { return note.number <= number; });
    return evidence;
}

void Witness::NoteStart(std::uint64_t underruns) {
    const std::scoped_lock lock(mutex_);
    starts_.push_back({newest_, underruns});
}

std::uint64_t Witness::TakeMissedBefore(std::uint64_t block) {
    const std::scoped_lock lock(mutex_);
    Start start{0, underrunsOfLast_};
    if (!starts_.empty()) {
        start = starts_.front();
        starts_.pop_front();
    }
    if (block == 0) {
        unknown_.push_back(start);
        return 0;
    }
    const std::uint64_t number = numberOf(block, lastTaken_);
    const std::uint64_t before = std::exchange(lastTaken_, number);
    const bool hadUnderruns = std::exchange(underrunsOfLast_, start.underruns) != start.underruns;
    const std::uint64_t seen = missed_.TakeBelow(number);
    missed_.Remove(number);
    const bool isGap = before != 0 && number > before && (seen > 0 || hadUnderruns);
    const std::uint64_t between = isGap ? number - before - 1 : seen;
    const std::uint64_t unknown = unknown_.size();
    unknown_.clear();
    return between > unknown ? between - unknown : 0;
}

std::uint64_t Witness::CountMissed(std::span<const std::uint64_t> held) {
    const std::scoped_lock lock(mutex_);
    std::uint64_t lastHeld = lastTaken_;
    std::size_t unknown = unknown_.size();
    for (const std::uint64_t block : held) {
        unknown += block == 0 ? 1 : 0;
        lastHeld = std::max(lastHeld, block != 0 ? numberOf(block, lastTaken_) : 0);
    }
    if (unknown == 0) {
        addUnseen(lastHeld);
    }
    NumberSet missed = missed_;
    for (const std::uint64_t block : held) {
        missed.Remove(block != 0 ? numberOf(block, lastTaken_) : 0);
    }
    const auto leaveOut = [&](const Start& start) {
        if (unknown > 0 && missed.Has(start.newest)) {
            missed.Remove(start.newest);
            --unknown;
        }
    };
    std::for_each(unknown_.begin(), unknown_.end(), leaveOut);
    std::for_each(starts_.begin(), starts_.end(), leaveOut);
    if (hasEnded_ && held.size() > starts_.size()) {
        // A frame that got its buffer when starts were no longer noted.
        leaveOut({newest_, 0});
    }
    const bool isInDoubt = !hasEnded_ && missed.Has(newest_);
    return missed.Count() - (isInDoubt ? 1 : 0);
}

// What lies between the last frame with a buffer and the first that was seen without one has waited
// in Aravis' socket for a buffer that didn't come.
void Witness::addUnseen(std::uint64_t lastHeld) {
    constexpr std::uint64_t most = 1000;
    const auto first = missed_.FirstAbove(lastHeld);
    if (lastHeld == 0 || !first || *first - lastHeld > most) {
        return;
    }
    for (std::uint64_t number = *first; number-- > lastHeld + 1;) {
        missed_.Add(number);
    }
}

}  // namespace Orlix::Aravis
