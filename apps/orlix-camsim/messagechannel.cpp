#include "messagechannel.h"

#include <netinet/in.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>

#include "packetsender.h"

namespace Orlix::Camsim {
namespace {

constexpr std::size_t mostWaiting = 1024;
constexpr std::uint16_t noStreamChannel = 0xFFFF;

}  // namespace

MessageChannel::MessageChannel(int socket, const MessageOptions& options, const Silence& silence,
                               Statistics& statistics)
    : socket_(socket),
      options_(options),
      silence_(silence),
      statistics_(statistics),
      wakeUp_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      thread_([this] { run(); }) {}

MessageChannel::~MessageChannel() {
    {
        const std::scoped_lock lock(mutex_);
        end_ = true;
        changed_.notify_all();
    }
    static_cast<void>(::eventfd_write(wakeUp_, 1));
    thread_.join();
    ::close(wakeUp_);
}

void MessageChannel::Set(const MessageSettings& settings) {
    const std::scoped_lock lock(mutex_);
    if (settings.destination != settings_.destination) {
        ++opening_;
        events_.clear();
        static_cast<void>(::eventfd_write(wakeUp_, 1));
    }
    settings_ = settings;
}

bool MessageChannel::Push(const Emulated::Event& event) noexcept {
    const std::scoped_lock lock(mutex_);
    if (settings_.destination.port == 0) {
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
        const MessageSettings settings = settings_;
        lock.unlock();
        id = static_cast<std::uint16_t>(id == UINT16_MAX ? 1 : id + 1);
        deliver(encode(events, id, settings.timeout != 0), id, settings);
        lock.lock();
    }
}

void MessageChannel::deliver(const std::vector<std::uint8_t>& message, std::uint16_t id,
                             const MessageSettings& settings) {
    std::uint64_t opening = 0;
    {
        const std::scoped_lock lock(mutex_);
        opening = opening_;
    }
    const sockaddr_in address = ToSocketAddress(settings.destination);
    for (std::uint64_t attempt = 0; attempt <= settings.retries && !isEnded(opening); ++attempt) {
        if (!silence_.IsOn()) {
            const ssize_t sent =
                ::sendto(socket_, message.data(), message.size(), 0,
                         reinterpret_cast<const sockaddr*>(&address), sizeof address);
            statistics_.sendErrors += sent < 0 ? 1 : 0;
        }
        ++(attempt == 0 ? statistics_.events : statistics_.eventRetries);
        if (settings.timeout == 0 || waitForAck(id, settings.timeout, opening)) {
            return;
        }
    }
    ++statistics_.lostEvents;
}

bool MessageChannel::isEnded(std::uint64_t opening) const {
    const std::scoped_lock lock(mutex_);
    return end_ || opening != opening_;
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

void MessageChannel::append(std::vector<std::uint8_t>& message,
                            const Emulated::Event& event) const {
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

bool MessageChannel::waitForAck(std::uint16_t id, std::uint32_t milliseconds,
                                std::uint64_t opening) {
    using std::chrono::steady_clock;
    const auto end = steady_clock::now() + std::chrono::milliseconds(milliseconds);
    while (true) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - steady_clock::now());
        pollfd files[] = {{socket_, POLLIN, 0}, {wakeUp_, POLLIN, 0}};
        const auto most = std::min<std::int64_t>(std::max<std::int64_t>(left.count(), 0), 60'000);
        ::poll(files, 2, static_cast<int>(most));
        if ((files[1].revents & POLLIN) != 0) {
            eventfd_t value = 0;
            static_cast<void>(::eventfd_read(wakeUp_, &value));
        }
        // The wake-up may be one of long ago.
        if (isEnded(opening)) {
            return false;
        }
        std::array<std::uint8_t, 64> answer{};
        const ssize_t size = ::recv(socket_, answer.data(), answer.size(), MSG_DONTWAIT);
        if (size >= static_cast<ssize_t>(commandHeaderSize) && !silence_.IsOn() &&
            Get<std::uint16_t>(&answer[6]) == id) {
            return true;
        }
        if (size < 0 && steady_clock::now() >= end) {
            return false;
        }
    }
}

}  // namespace Orlix::Camsim
