#include "orlixcamera/emulated/camera.h"

#include <algorithm>
#include <utility>

#include "gcbase/gcexception.h"
#include "orlixcamera/emulated/registertable.h"
#include "orlixcamera/emulatedcameras.h"

namespace Orlix::Emulated {

using GenICam::RuntimeException;

namespace {

// A host that fell behind catches up on this much; older frames are left out, as a real camera's
// clock can't run faster either.
constexpr std::chrono::milliseconds mostCatchUp{100};

gcstring text(const std::string& value) {
    return gcstring(value);
}

std::uint64_t ticksOf(Clock::time_point time) {
    return static_cast<std::uint64_t>(time.time_since_epoch() / std::chrono::nanoseconds(1));
}

Clock::duration seconds(double count) {
    return std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(count));
}

std::uint64_t exposureTicks(const PictureSettings& settings) {
    constexpr double ticksPerMicrosecond = 1000;
    return static_cast<std::uint64_t>(settings.exposureMicroseconds * ticksPerMicrosecond);
}

}  // namespace

Camera::Camera(Identity identity, Place place)
    : place_(std::move(place)), registers_(std::move(identity)) {}

CDeviceInfo Camera::GetInfo() const {
    const std::scoped_lock lock(mutex_);
    const Identity& identity = registers_.GetIdentity();
    CDeviceInfo info;
    if (place_.tellsClassAndModel) {
        info.SetPropertyValue(Key::DeviceClass, EmulatedCameraClass);
        info.SetPropertyValue(Key::ModelName, text(identity.model));
    }
    info.SetPropertyValue(Key::FullName,
                          text(std::string(EmulatedCameraClass) + "#" + identity.serialNumber));
    info.SetPropertyValue(Key::FriendlyName, text(LabelOf(identity)));
    info.SetPropertyValue(Key::VendorName, text(identity.vendor));
    info.SetPropertyValue(Key::DeviceVersion, text(identity.version));
    if (place_.tellsSerialNumber) {
        info.SetPropertyValue(Key::SerialNumber, text(identity.serialNumber));
    }
    info.SetPropertyValue(Key::UserDefinedName, text(identity.userDefinedName));
    if (place_.ipConfiguration != nullptr) {
        info.SetPropertyValue(Key::IpConfigCurrent, place_.ipConfiguration);
        info.SetPropertyValue(Key::IpAddress, text(place_.address));
    }
    return info;
}

std::string Camera::GetLabel() const {
    const std::scoped_lock lock(mutex_);
    return LabelOf(registers_.GetIdentity());
}

Session Camera::Take(const std::string& name, std::shared_ptr<Holder> holder) {
    Lock lock(mutex_);
    if (!plugged_) {
        throwUnreachable();
    }
    failOpening(lock);
    if (session_ != 0) {
        throwInUse(holderName_);
    }
    holderName_ = name;
    holder_ = std::move(holder);
    eventsLost_ = false;
    session_ = ++lastSession_;
    return session_;
}

void Camera::Release(Session session) noexcept {
    const std::scoped_lock lock(mutex_);
    if (session != 0 && session == session_) {
        session_ = 0;
        holder_ = nullptr;
        registers_.EndAcquisition();
        watchIdle();
        changed_.notify_all();
    }
}

bool Camera::Holds(Session session) const noexcept {
    const std::scoped_lock lock(mutex_);
    return session != 0 && session == session_;
}

void Camera::Read(Session session, std::int64_t address, void* buffer, std::size_t length) {
    Lock lock(mutex_);
    requireSession(session);
    failAccess(lock, session, Occasion::Read, "Read", address);
    registers_.Read(address, buffer, length);
}

void Camera::Write(Session session, std::int64_t address, const void* buffer, std::size_t length) {
    Lock lock(mutex_);
    requireSession(session);
    failAccess(lock, session, Occasion::Write, "Write", address);
    if (address == At::acquisitionStart) {
        failAccess(lock, session, Occasion::Start, "Write", address);
    } else if (address == At::acquisitionStop) {
        failAccess(lock, session, Occasion::Stop, "Write", address);
    }
    registers_.Write(address, buffer, length);
    if (registers_.TakeTestEvent()) {
        postTests(1);
    }
    if (registers_.TakeNewFaults()) {
        beginFaults();
    }
    watchIdle();
    changed_.notify_all();
}

void Camera::Peek(std::int64_t address, void* buffer, std::size_t length) const {
    const std::scoped_lock lock(mutex_);
    if (!plugged_) {
        throwUnreachable();
    }
    registers_.Read(address, buffer, length);
}

bool Camera::IsPlugged() const noexcept {
    const std::scoped_lock lock(mutex_);
    return plugged_;
}

void Camera::BeginStream(Session session) {
    const std::scoped_lock lock(mutex_);
    requireSession(session);
    if (streaming_ == session) {
        const std::string message =
            "Device '" + LabelOf(registers_.GetIdentity()) + "' has an open stream already.";
        throw RuntimeException(message.c_str(), __FILE__, __LINE__);
    }
    streaming_ = session;
    registers_.ResetFramesSent();
}

void Camera::EndStream(Session session) noexcept {
    const std::scoped_lock lock(mutex_);
    if (streaming_ == session) {
        streaming_ = 0;
    }
}

bool Camera::WaitForFrame(Session session, const bool& stop, FrameCursor& cursor,
                          FrameOrder& order) {
    Lock lock(mutex_);
    while (!isEnded(session, stop)) {
        if (!waitForAcquisition(lock, session, stop, cursor) ||
            !waitForTrigger(lock, session, stop, cursor, Trigger::FrameStart) ||
            !waitForExposure(lock, session, stop, cursor)) {
            continue;
        }
        beginFrame(cursor, order);
        const Clock::time_point start = cursor.nextExposure;
        cursor.nextExposure = start + seconds(registers_.GetFramePeriod());
        if (waitUntil(lock, session, stop, cursor,
                      start + seconds(registers_.GetFrameTime()) + order.faults.late)) {
            finishFrame(cursor);
            post(EventKind::ExposureEnd, order.timestamp + exposureTicks(order.settings),
                 order.frameNumber + 1);
            return true;
        }
    }
    return false;
}

void Camera::EndFrame(Session session, const FrameOrder& order, Outcome outcome) {
    const std::scoped_lock lock(mutex_);
    if (session == session_) {
        registers_.CountFrame();
        const bool received = outcome == Outcome::Received;
        post(received ? EventKind::FrameEnd : EventKind::Overrun, ticksOf(Clock::now()),
             order.frameNumber + 1);
    }
}

void Camera::Raise(bool& flag) noexcept {
    const std::scoped_lock lock(mutex_);
    flag = true;
    changed_.notify_all();
}

void Camera::requireSession(Session session) const {
    if (session != 0 && session == session_) {
        return;
    }
    const std::string message = "Device '" + LabelOf(registers_.GetIdentity()) +
                                (plugged_ ? "' isn't open." : "' was removed.");
    throw RuntimeException(message.c_str(), __FILE__, __LINE__);
}

bool Camera::isEnded(Session session, const bool& stop) const noexcept {
    return stop || session != session_;
}

bool Camera::isCurrent(const FrameCursor& cursor) const noexcept {
    return registers_.IsAcquiring() && cursor.acquisition == registers_.GetAcquisitionNumber();
}

// True once frames may come; false to look again.
bool Camera::waitForAcquisition(Lock& lock, Session session, const bool& stop,
                                FrameCursor& cursor) {
    if (isCurrent(cursor) && cursor.started) {
        return true;
    }
    changed_.wait(lock, [&] { return isEnded(session, stop) || registers_.IsAcquiring(); });
    if (isEnded(session, stop)) {
        return false;
    }
    cursor = {registers_.GetAcquisitionNumber(), 0, false, false, Clock::now()};
    cursor.started = waitForTrigger(lock, session, stop, cursor, Trigger::AcquisitionStart);
    return cursor.started;
}

// True when the trigger came or isn't on; false when the acquisition ended first.
bool Camera::waitForTrigger(Lock& lock, Session session, const bool& stop, FrameCursor& cursor,
                            Trigger trigger) {
    bool waited = false;
    bool fired = false;
    changed_.wait(lock, [&] {
        const bool on = registers_.IsTriggerOn(trigger);
        waited = waited || on;
        fired = !on || registers_.TakeTrigger(trigger);
        return fired || isEnded(session, stop) || !isCurrent(cursor);
    });
    cursor.triggered = waited;
    const Clock::time_point now = Clock::now();
    if (waited || cursor.nextExposure + mostCatchUp < now) {
        cursor.nextExposure = std::max(cursor.nextExposure, now);
    }
    return fired && !isEnded(session, stop) && isCurrent(cursor);
}

// False when the acquisition or the stream ended before that time.
bool Camera::waitUntil(Lock& lock, Session session, const bool& stop, const FrameCursor& cursor,
                       Clock::time_point time) {
    return !changed_.wait_until(lock, time,
                                [&] { return isEnded(session, stop) || !isCurrent(cursor); });
}

// A start that nobody sees isn't waited for on its own, if the end of the frame before was near.
bool Camera::waitForExposure(Lock& lock, Session session, const bool& stop,
                             const FrameCursor& cursor) {
    constexpr std::chrono::milliseconds near{1};
    return (cursor.nextExposure - Clock::now() < near &&
            !registers_.IsEventOn(EventKind::FrameStart)) ||
           waitUntil(lock, session, stop, cursor, cursor.nextExposure);
}

// A change of the settings counts for the next exposure, so they are taken at its start.
void Camera::beginFrame(FrameCursor& cursor, FrameOrder& order) {
    order.settings = registers_.GetPictureSettings();
    order.chunks = registers_.GetChunkSettings();
    order.frameNumber = cursor.frameCount;
    order.faults = registers_.GetFaults().TakeFrame(order.frameNumber + 1);
    order.chunks.unknown = order.faults.unknownChunk;
    order.timestamp = ticksOf(cursor.nextExposure);
    const PictureSettings& settings = order.settings;
    order.values = {order.frameNumber + 1,         order.timestamp,
                    settings.exposureMicroseconds, settings.gainDecibels,
                    registers_.GetLineStatus(),    cursor.triggered};
    post(EventKind::FrameStart, order.timestamp, order.frameNumber + 1);
    postTests(order.faults.events);
}

void Camera::finishFrame(FrameCursor& cursor) {
    ++cursor.frameCount;
    const std::uint64_t limit = registers_.GetFrameLimit();
    if (limit != 0 && cursor.frameCount >= limit) {
        registers_.EndAcquisition();
        watchIdle();
    }
}

// Those of a storm that find no room are lost all at once; so are those beyond a number that would
// keep the camera from all else, however fast they are taken.
void Camera::postTests(std::uint64_t count) {
    constexpr std::uint64_t most = std::uint64_t{1} << 16U;
    const std::uint64_t now = ticksOf(Clock::now());
    std::uint64_t posted = 0;
    while (posted < std::min(count, most) && post(EventKind::Test, now, 0)) {
        ++posted;
    }
    eventsLost_ = eventsLost_ || (posted == most && posted < count);
}

// False for an event that nobody gets.
bool Camera::post(EventKind kind, std::uint64_t timestamp, std::uint64_t frameId) {
    if (holder_ == nullptr || !registers_.IsEventOn(kind)) {
        return false;
    }
    if (eventsLost_ && registers_.IsEventOn(EventKind::EventOverrun)) {
        eventsLost_ = !holder_->OnEvent({EventKind::EventOverrun, timestamp, 0});
    }
    const bool hadRoom = holder_->OnEvent({kind, timestamp, frameId});
    eventsLost_ = eventsLost_ || !hadRoom;
    return hadRoom;
}

}  // namespace Orlix::Emulated
