// One emulated camera: its memory, who controls it, whether it is plugged in, and the acquisition
// that a stream follows. Shared by the layer, the devices that stand for it and their streams.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "orlixcamera/api.h"
#include "orlixcamera/deviceinfo.h"
#include "orlixcamera/emulated/agenda.h"
#include "orlixcamera/emulated/notices.h"
#include "orlixcamera/emulated/registers.h"

namespace Orlix::Emulated {

// Names one opening of a camera; 0 names none.
using Session = std::uint64_t;
using Clock = std::chrono::steady_clock;

// All that the sender of a frame needs.
struct FrameOrder {
    std::uint64_t frameNumber = 0;  // from 0 with each acquisition
    std::uint64_t timestamp = 0;    // nanoseconds of the camera's clock, at the start of exposure
    PictureSettings settings;
    ChunkSettings chunks;
    ChunkValues values;
    FrameFaults faults;
};

enum class Outcome : std::uint8_t { Received, NoBuffer };

// Where a stream stands between two frames; it begins empty.
struct FrameCursor {
    std::uint64_t acquisition = 0;
    std::uint64_t frameCount = 0;
    bool started = false;    // by the trigger of the acquisition
    bool triggered = false;  // the frame that comes next
    Clock::time_point nextExposure;
};

// What a camera has of its surroundings.
struct Place {
    const char* ipConfiguration = nullptr;  // null without a network
    std::string address;
    bool tellsSerialNumber = true;
    bool tellsClassAndModel = true;
    std::shared_ptr<Agenda> agenda;
    // Called by the agenda when the camera was plugged in or out.
    std::function<void()> plugChanged;
};

// Any thread may call; no call waits for another but WaitForFrame, and those that a fault script
// lets time out.
class ORLIXCAMERA_API Camera : public std::enable_shared_from_this<Camera> {
public:
    Camera(Identity identity, Place place);

    [[nodiscard]] CDeviceInfo GetInfo() const;
    // "Name (serial number)", for messages.
    [[nodiscard]] std::string GetLabel() const;

    // Takes control. The holder hears of the camera until Release; of its loss once, and as the
    // last. Throws AccessException if another has control, RuntimeException if it isn't there.
    [[nodiscard]] Session Take(const std::string& name, std::shared_ptr<Holder> holder);
    void Release(Session session) noexcept;
    [[nodiscard]] bool Holds(Session session) const noexcept;

    // Memory; RuntimeException if the session has ended.
    void Read(Session session, std::int64_t address, void* buffer, std::size_t length);
    void Write(Session session, std::int64_t address, const void* buffer, std::size_t length);

    // Memory for one who only watches: needs no session, and no fault script minds.
    // RuntimeException if it isn't there.
    void Peek(std::int64_t address, void* buffer, std::size_t length) const;

    [[nodiscard]] bool IsPlugged() const noexcept;
    // Both answer whether anything changed. It is plugged in again after `duration`, if that isn't
    // 0.
    bool Unplug(std::chrono::nanoseconds duration = {});
    bool Plug();

    // Replaces the fault script. Throws InvalidArgumentException as the parser.
    void LoadFaults(const std::string& script);

    // One stream at a time. Begin throws RuntimeException if there is one, or the session has
    // ended.
    void BeginStream(Session session);
    void EndStream(Session session) noexcept;
    // Waits for the end of the next frame's exposure. False once the session has ended or
    // `stop` is set, which Raise does.
    [[nodiscard]] bool WaitForFrame(Session session, const bool& stop, FrameCursor& cursor,
                                    FrameOrder& order);
    // To be told of every frame that WaitForFrame gave.
    void EndFrame(Session session, const FrameOrder& order, Outcome outcome);
    // Sets `flag` where WaitForFrame sees it at once.
    void Raise(bool& flag) noexcept;

private:
    using Lock = std::unique_lock<std::mutex>;

    void requireSession(Session session) const;
    [[nodiscard]] bool isEnded(Session session, const bool& stop) const noexcept;
    [[nodiscard]] bool isCurrent(const FrameCursor& cursor) const noexcept;
    bool waitForAcquisition(Lock& lock, Session session, const bool& stop, FrameCursor& cursor);
    bool waitForTrigger(Lock& lock, Session session, const bool& stop, FrameCursor& cursor,
                        Trigger trigger);
    bool waitUntil(Lock& lock, Session session, const bool& stop, const FrameCursor& cursor,
                   Clock::time_point time);
    bool waitForExposure(Lock& lock, Session session, const bool& stop, const FrameCursor& cursor);
    void beginFrame(FrameCursor& cursor, FrameOrder& order);
    void finishFrame(FrameCursor& cursor);
    bool post(EventKind kind, std::uint64_t timestamp, std::uint64_t frameId);
    void postTests(std::uint64_t count);

    bool unplug(std::chrono::nanoseconds duration);
    bool plug();
    void endUnplug(std::uint64_t plugNumber);
    [[noreturn]] void throwUnreachable() const;
    [[noreturn]] void throwInUse(const std::string& name) const;
    void failOpening(Lock& lock);
    void failAccess(Lock& lock, Session session, Occasion occasion, const char* what,
                    std::int64_t address);
    void failAccess(Lock& lock, Session session, const FaultRule& rule, const std::string& what);
    void beginFaults();
    void schedule(Occasion occasion, std::uint64_t number);
    void scheduleRule(std::size_t index, std::uint64_t number);
    void onClock(std::size_t index, std::uint64_t faultsNumber, std::uint64_t number);
    void watchIdle();

    const Place place_;
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    Registers registers_;
    bool plugged_ = true;
    Session session_ = 0;  // that has control
    Session lastSession_ = 0;
    Session streaming_ = 0;
    std::string holderName_;
    std::shared_ptr<Holder> holder_;
    bool eventsLost_ = false;

    // So that what was scheduled is known to be out of date.
    std::uint64_t faultsNumber_ = 0;
    std::uint64_t plugNumber_ = 0;
    std::uint64_t idleNumber_ = 0;
    bool idle_ = false;
};

}  // namespace Orlix::Emulated
