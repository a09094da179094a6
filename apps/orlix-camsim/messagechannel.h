// The message channel: events of the camera as EVENT or EVENTDATA commands to the program in
// control, each waiting for its acknowledge and sent again without one. A thread of its own.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

#include "device.h"
#include "orlixcamera/emulated/event.h"
#include "serveddescription.h"
#include "statistics.h"
#include "wirefaults.h"

namespace Orlix::Camsim {

enum class EventForm : std::uint8_t { Data, Plain };  // with the values of the event, or without

struct MessageOptions {
    EventForm form = EventForm::Data;
    EventIds ids = EventIds::Short;
    // Records in one datagram at most. Those with data need the long form, which tells their size.
    std::size_t mostRecords = 1;
};

// Any thread may call.
class MessageChannel {
public:
    // The socket stays the caller's; nobody else reads from it.
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
    void run();
    void deliver(const std::vector<std::uint8_t>& message, std::uint16_t id,
                 const MessageSettings& settings);
    [[nodiscard]] std::vector<std::uint8_t> encode(const std::vector<Emulated::Event>& events,
                                                   std::uint16_t id, bool wantsAck) const;
    void append(std::vector<std::uint8_t>& message, const Emulated::Event& event) const;
    [[nodiscard]] bool waitForAck(std::uint16_t id, std::uint32_t milliseconds,
                                  std::uint64_t opening);
    [[nodiscard]] bool isEnded(std::uint64_t opening) const;

    const int socket_;
    const MessageOptions options_;
    const Silence& silence_;
    Statistics& statistics_;

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    MessageSettings settings_;
    std::uint64_t opening_ = 0;
    std::deque<Emulated::Event> events_;
    bool end_ = false;
    int wakeUp_ = -1;  // an event file of the system, for the wait on the socket
    std::thread thread_;
};

}  // namespace Orlix::Camsim
