// Brings the messages of a device to the handlers of camera events: a queue that the transport
// layer fills without waiting, and a thread that gives each message to the device's node map and
// calls the handlers whose nodes it changed.
#pragma once

#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "orlixcamera/cameraeventhandler.h"
#include "orlixcamera/instantcamera/devicemaps.h"
#include "orlixcamera/instantcamera/handlerlist.h"

namespace Orlix::Detail {

// A handler with the node that it waits for.
class EventRegistration final : public Registration<CCameraEventHandler> {
public:
    EventRegistration(CCameraEventHandler& handler, gcstring name, std::intptr_t userId,
                      ECameraEventAvailability needed)
        : Registration(handler),
          nodeName(std::move(name)),
          userProvidedId(userId),
          availability(needed) {}
    ~EventRegistration() override { Unbind(); }

    const gcstring nodeName;
    const std::intptr_t userProvidedId;
    const ECameraEventAvailability availability;

    // Looks the node up in the map of the device and listens to its changes. False if it isn't
    // there. Takes the map's lock.
    bool Bind(std::shared_ptr<DeviceMaps> maps);
    void Unbind() noexcept;
    // Null without one. The node that a message has changed since it was last asked; on the event
    // thread.
    [[nodiscard]] GenApi::INode* TakeChanged();

private:
    std::mutex mutex_;
    std::shared_ptr<DeviceMaps> maps_;  // keeps the node
    GenApi::INode* node_ = nullptr;
    std::intptr_t callback_ = 0;
    // Shared with the callback, which may be about to run when it is taken off.
    std::shared_ptr<std::atomic<bool>> changed_;
};

using EventRegistrations = HandlerList<EventRegistration>;

// Begin and End are called one at a time.
class EventDelivery {
public:
    // Calls the handler; guarded against what it throws.
    using CallHandler = std::function<void(EventRegistration&, GenApi::INode*)>;

    EventDelivery(EventRegistrations& handlers, StreamCounters& counters, CallHandler callHandler);
    ~EventDelivery();
    EventDelivery(const EventDelivery&) = delete;
    EventDelivery& operator=(const EventDelivery&) = delete;

    // Messages go to that map from now on. `priority` is for a new thread.
    void Begin(std::shared_ptr<DeviceMaps> maps, int priority);
    // No call of a handler is begun any more; waits for none.
    void End() noexcept;
    // Ends the thread; waits for a call that runs.
    void Quit();
    // Copies the message. Where the queue is full it is dropped and counted.
    void Post(const Transport::EventMessage& message) noexcept;

    // Messages are counted as they come: the last, and the one that a handler is called for, which
    // it asks for on its own thread.
    [[nodiscard]] std::uint64_t GetLastNumber() const noexcept { return lastNumber_; }
    [[nodiscard]] std::uint64_t GetHandledNumber() const noexcept { return handledNumber_; }

private:
    struct Message {
        std::uint64_t number = 0;
        std::uint16_t eventId = 0;
        std::vector<std::uint8_t> data;
    };

    static constexpr std::size_t queueSize = 1024;

    void run(int priority);
    [[nodiscard]] bool take(Message& message, std::shared_ptr<DeviceMaps>& maps,
                            std::uint64_t& opening);
    [[nodiscard]] bool isCurrent(std::uint64_t opening) const;
    void deliver(const Message& message, DeviceMaps& maps, std::uint64_t opening);

    EventRegistrations& handlers_;
    StreamCounters& counters_;
    const CallHandler callHandler_;

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::shared_ptr<DeviceMaps> maps_;  // null while closed
    std::uint64_t opening_ = 0;  // counts the calls of Begin; its maps may be those of before
    std::vector<Message> ring_;  // messages keep their memory
    std::size_t first_ = 0;
    std::size_t count_ = 0;
    bool quit_ = false;
    std::atomic<std::uint64_t> lastNumber_{0};
    std::atomic<std::uint64_t> handledNumber_{0};
    std::thread thread_;  // since the first Begin
};

}  // namespace Orlix::Detail
