// The message channel: events of the camera as EVENT or EVENTDATA commands to the program in
// control, each waiting for its acknowledge and sent again without one. A thread of its own.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

#include "device.h"
#include "orlixcamera/emulated/event.h"
#include "serveddescription.h"
#include "sockets.h"
#include "statistics.h"
#include "wirefaults.h"

namespace Orlix::Camsim {

enum class EventForm : std::uint8_t { Data, Plain };  // with the values of the event, or without

struct MessageOptions {
    EventForm form = EventForm::Data;
    EventIds ids = EventIds::Short;
    // Records in one datagram at most. Those with data need the long form, which tells their size.
    std::size_t mostRecords = 1;
    std::uint64_t tickFrequency = nanosecondsPerSecond;
};

// Any thread may call.
class MessageChannel {
public:
    // The socket stays the caller's; nobody else reads from it. Throws RuntimeException if the
    // system has no event file left.
    MessageChannel(int socket, const MessageOptions& options, const Silence& silence,
                   Statistics& statistics);
    ~MessageChannel();
    MessageChannel(const MessageChannel&) = delete;
    MessageChannel& operator=(const MessageChannel&) = delete;

    // Without a port the channel is closed, and what waits is forgotten.
    void Set(const MessageSettings& settings);
    // Never blocks. False if there is no room.
    bool Push(const Emulated::Event& event) noexcept;

private:
    // Whose channel it is. A new destination makes another of it, so that nothing of the old one is
    // waited for any more.
    struct Opening {
        MessageSettings settings;
        std::uint64_t number = 0;
    };

    void run();
    void deliver(const std::vector<std::uint8_t>& message, std::uint16_t id,
                 const Opening& opening);
    void sendOnce(const std::vector<std::uint8_t>& message, const Endpoint& destination);
    [[nodiscard]] std::vector<std::uint8_t> encode(const std::vector<Emulated::Event>& events,
                                                   std::uint16_t id, bool wantsAck) const;
    void append(std::vector<std::uint8_t>& message, Emulated::Event event) const;
    [[nodiscard]] bool waitForAck(std::uint16_t id, const Opening& opening);
    void waitForAnswer(std::chrono::steady_clock::time_point end) const;
    [[nodiscard]] bool isEnded(const Opening& opening) const;

    const int socket_;
    const MessageOptions options_;
    const Silence& silence_;
    Statistics& statistics_;

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    Opening opening_;
    std::deque<Emulated::Event> events_;
    bool end_ = false;
    const EventFile wakeUp_;  // ends the wait on the socket
    std::thread thread_;
};

}  // namespace Orlix::Camsim
