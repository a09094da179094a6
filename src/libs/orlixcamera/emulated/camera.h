// One emulated camera: its memory, who controls it, whether it is plugged in, and the acquisition
// that a stream follows. Shared by the layer, the devices that stand for it and their streams.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include "orlixcamera/deviceinfo.h"
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

// Any thread may call; no call waits for another but WaitForFrame.
class Camera {
public:
    Camera(Identity identity, std::string address, bool fixedAddress);

    [[nodiscard]] CDeviceInfo GetInfo() const;
    // "Name (serial number)", for messages.
    [[nodiscard]] std::string GetLabel() const;

    // Takes control. The holder hears of the camera until Release; of its loss once, and as the
    // last. Throws AccessException if another has control, RuntimeException if it isn't there.
    [[nodiscard]] Session Take(const std::string& name, std::shared_ptr<Holder> holder);
    void Release(Session session) noexcept;
    [[nodiscard]] bool Holds(Session session) const noexcept;

    // Memory; RuntimeException if the session has ended.
    void Read(Session session, std::int64_t address, void* buffer, std::size_t length) const;
    void Write(Session session, std::int64_t address, const void* buffer, std::size_t length);

    [[nodiscard]] bool IsPlugged() const noexcept;
    // Both answer whether anything changed.
    bool Unplug();
    bool Plug();

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
    void post(EventKind kind, std::uint64_t timestamp, std::uint64_t frameId);

    const std::string address_;
    const bool fixedAddress_;
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
};

}  // namespace Orlix::Emulated
