#include "messagechannel.h"

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <chrono>

#include "packetsender.h"

namespace Orlix::Camsim {
namespace {

constexpr std::size_t mostWaiting = 1024;
constexpr std::uint16_t noStreamChannel = 0xFFFF;

bool isAcknowledge(Bytes datagram) {
    if (datagram.size() < commandHeaderSize) {
        return false;
    }
    const auto command = static_cast<Command>(Get<std::uint16_t>(&datagram[2]));
    return command == Command::EventAck || command == Command::EventDataAck;
}

}  // namespace

MessageChannel::MessageChannel(int socket, const MessageOptions& options, const Silence& silence,
                               Statistics& statistics)
    : socket_(socket),
      options_(options),
      silence_(silence),
      statistics_(statistics),
      thread_([this] { run(); }) {}

MessageChannel::~MessageChannel() {
    {
        const std::scoped_lock lock(mutex_);
        end_ = true;
        changed_.notify_all();
    }
    wakeUp_.Raise();
    thread_.join();
}

void MessageChannel::Set(const MessageSettings& settings) {
    const std::scoped_lock lock(mutex_);
    if (settings.destination != opening_.settings.destination) {
        ++opening_.number;
        events_.clear();
        wakeUp_.Raise();
    }
    opening_.settings = settings;
}

bool MessageChannel::Push(const Emulated::Event& event) noexcept {
    const std::scoped_lock lock(mutex_);
    if (opening_.settings.destination.port == 0) {
        return true;  // nobody misses it
    }
    if (events_.size() >= mostWaiting) {
        return false;
    }
    events_.push_back(event);
    changed_.notify_all();
    return true;
}

void MessageChannel::run() {
    const bool isSingle = options_.form == EventForm::Data && options_.ids == EventIds::Short;
    const std::size_t most = isSingle ? 1 : std::max<std::size_t>(options_.mostRecords, 1);
    std::uint16_t id = 0;
    std::unique_lock lock(mutex_);
    while (true) {
        changed_.wait(lock, [this] { return end_ || !events_.empty(); });
        if (end_) {
            return;
        }
        const std::size_t count = std::min(most, events_.size());
        const auto last = events_.begin() + static_cast<std::ptrdiff_t>(count);
        const std::vector<Emulated::Event> events(events_.begin(), last);
        events_.erase(events_.begin(), last);
        const Opening opening = opening_;
        lock.unlock();
        id = static_cast<std::uint16_t>(id == UINT16_MAX ? 1 : id + 1);
        deliver(encode(events, id, opening.settings.timeout != 0), id, opening);
        lock.lock();
    }
}

void MessageChannel::deliver(const std::vector<std::uint8_t>& message, std::uint16_t id,
                             const Opening& opening) {
    const MessageSettings& settings = opening.settings;
    for (std::uint64_t attempt = 0; attempt <= settings.retries && !isEnded(opening); ++attempt) {
        sendOnce(message, settings.destination);
        ++(attempt == 0 ? statistics_.events : statistics_.eventRetries);
        if (settings.timeout == 0 || waitForAck(id, opening)) {
            return;
        }
    }
    ++statistics_.lostEvents;
}

void MessageChannel::sendOnce(const std::vector<std::uint8_t>& message,
                              const Endpoint& destination) {
    if (silence_.IsOn()) {
        return;
    }
    const sockaddr_in address = ToSocketAddress(destination);
    const ssize_t sent = ::sendto(socket_, message.data(), message.size(), 0,
                                  reinterpret_cast<const sockaddr*>(&address), sizeof address);
    statistics_.sendErrors += sent < 0 ? 1 : 0;
}

bool MessageChannel::isEnded(const Opening& opening) const {
    const std::scoped_lock lock(mutex_);
    return end_ || opening.number != opening_.number;
}

std::vector<std::uint8_t> MessageChannel::encode(const std::vector<Emulated::Event>& events,
                                                 std::uint16_t id, bool wantsAck) const {
    const Command command = options_.form == EventForm::Data ? Command::EventData : Command::Event;
    std::vector<std::uint8_t> message(commandHeaderSize);
    for (const Emulated::Event& event : events) {
        append(message, event);
    }
    message[0] = commandKey;
    message[1] = static_cast<std::uint8_t>((wantsAck ? wantsAnswer : 0) |
                                           (options_.ids == EventIds::Long ? hasLongIds : 0));
    Put(&message[2], static_cast<std::uint16_t>(command));
    Put(&message[4], static_cast<std::uint16_t>(message.size() - commandHeaderSize));
    Put(&message[6], id);
    return message;
}

void MessageChannel::append(std::vector<std::uint8_t>& message, Emulated::Event event) const {
    event.timestamp = TicksOf(event.timestamp, options_.tickFrequency);
    const bool isLong = options_.ids == EventIds::Long;
    const Emulated::EventBytes data = Emulated::EncodeEvent(event);
    const std::size_t dataSize = options_.form == EventForm::Data ? data.size : 0;
    const std::size_t headerSize = isLong ? 24 : 16;
    const std::size_t begin = message.size();
    message.resize(begin + headerSize + dataSize);
    std::uint8_t* const out = &message[begin];
    const bool hasFrame = event.frameId != 0;
    Put(out, static_cast<std::uint16_t>(isLong ? headerSize + dataSize : 0));
    Put(out + 2, Emulated::EventIdOf(event.kind));
    Put(out + 4, hasFrame ? std::uint16_t{0} : noStreamChannel);
    if (isLong) {
        Put(out + 8, event.frameId);
        Put(out + 16, event.timestamp);
    } else {
        Put(out + 6, static_cast<std::uint16_t>(event.frameId));
        Put(out + 8, event.timestamp);
    }
    std::copy_n(data.data.begin(), dataSize, out + headerSize);
}

// Whoever keeps sending something else doesn't keep the time from running out.
bool MessageChannel::waitForAck(std::uint16_t id, const Opening& opening) {
    using std::chrono::steady_clock;
    const MessageSettings& settings = opening.settings;
    const auto end = steady_clock::now() + std::chrono::milliseconds(settings.timeout);
    while (!isEnded(opening)) {
        std::array<std::uint8_t, 64> datagram{};
        sockaddr_in address{};
        socklen_t addressSize = sizeof address;
        const ssize_t size = ::recvfrom(socket_, datagram.data(), datagram.size(), MSG_DONTWAIT,
                                        reinterpret_cast<sockaddr*>(&address), &addressSize);
        const Bytes answer =
            Bytes(datagram).first(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
        if (isAcknowledge(answer) && Get<std::uint16_t>(&answer[6]) == id && !silence_.IsOn() &&
            ToEndpoint(address) == settings.destination) {
            return true;
        }
        if (steady_clock::now() >= end) {
            return false;
        }
        if (size < 0) {
            waitForAnswer(end);
        }
    }
    return false;
}

void MessageChannel::waitForAnswer(std::chrono::steady_clock::time_point end) const {
    using std::chrono::milliseconds;
    constexpr milliseconds longest{60'000};
    const auto left = std::chrono::ceil<milliseconds>(end - std::chrono::steady_clock::now());
    pollfd files[] = {{socket_, POLLIN, 0}, {wakeUp_.Get(), POLLIN, 0}};
    const milliseconds time = std::clamp(left, milliseconds(0), longest);
    ::poll(files, 2, static_cast<int>(time.count()));
    // It may be one of long ago; who waits looks for himself whether it is the end.
    wakeUp_.Take();
}

}  // namespace Orlix::Camsim
