// What a device tells its sink: events in their order, and its loss, each on a thread of its own
// that keeps this object and nothing else, since it may outlive the device. Any thread may call;
// nothing here waits for a call of the sink but SetSink and Finish.
#pragma once

#include <array>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>

#include "orlixcamera/emulated/event.h"
#include "orlixcamera/transport/guardedcall.h"
#include "orlixcamera/transport/transport.h"

namespace Orlix::Emulated {

// Hears of one holding of a camera. The camera's lock may be held during a call.
class Holder {
public:
    virtual ~Holder() = default;
    // False if the event has no room.
    virtual bool OnEvent(const Event& event) noexcept = 0;
    virtual void OnLost() noexcept = 0;
};

class Notices : public std::enable_shared_from_this<Notices> {
public:
    // When it returns, no call of the sink before is under way, but for one that runs on this very
    // thread.
    void SetSink(Transport::IDeviceSink* sink);

    // News of an opening that was closed meanwhile would be taken for that of the next, so each
    // opening has its own; this ends the one before.
    [[nodiscard]] std::shared_ptr<Holder> BeginOpening();
    void EndOpening() noexcept;
    // The opening and the sink, and the thread of the events if that isn't this one.
    void Finish() noexcept;

private:
    class Opening;

    bool post(std::uint64_t opening, const Event& event);
    void postLoss(std::uint64_t opening);
    void deliverEvents() noexcept;
    void deliverLoss(std::uint64_t opening) noexcept;

    std::mutex mutex_;
    std::condition_variable changed_;
    Transport::IDeviceSink* sink_ = nullptr;
    std::uint64_t opening_ = 0;  // that may tell, or 0
    std::uint64_t lastOpening_ = 0;
    std::thread::id eventThread_;  // while there is one
    Transport::GuardedCall eventCall_;
    Transport::GuardedCall lossCall_;
    bool eventThreadRuns_ = false;
    std::array<Event, 1024> events_;  // as a ring
    std::size_t first_ = 0;
    std::size_t count_ = 0;
};

}  // namespace Orlix::Emulated
