// The part of Camera that goes wrong on purpose. Private functions here expect the lock, but
// for those that a clock calls.
#include "gcbase/gcexception.h"
#include "orlixcamera/emulated/camera.h"

namespace Orlix::Emulated {

using GenICam::AccessException;
using GenICam::RuntimeException;
using GenICam::TimeoutException;
using std::chrono::nanoseconds;

bool Camera::Unplug(nanoseconds duration) {
    const std::scoped_lock lock(mutex_);
    return unplug(duration);
}

bool Camera::Plug() {
    const std::scoped_lock lock(mutex_);
    return plug();
}

bool Camera::plug() {
    if (plugged_) {
        return false;
    }
    registers_.PowerUp();
    plugged_ = true;
    ++plugNumber_;
    place_.agenda->Add(Clock::now(), place_.plugChanged);
    schedule(Occasion::After, plugNumber_);
    watchIdle();
    return true;
}

void Camera::LoadFaults(const std::string& script) {
    const std::scoped_lock lock(mutex_);
    registers_.LoadFaults(script);
    static_cast<void>(registers_.TakeNewFaults());
    beginFaults();
}

bool Camera::unplug(nanoseconds duration) {
    if (!plugged_) {
        return false;
    }
    plugged_ = false;
    session_ = 0;
    registers_.EndAcquisition();
    if (const auto holder = std::exchange(holder_, nullptr)) {
        holder->OnLost();
    }
    place_.agenda->Add(Clock::now(), place_.plugChanged);
    if (duration > nanoseconds(0)) {
        place_.agenda->Add(Clock::now() + duration,
                           [weak = weak_from_this(), number = plugNumber_] {
                               if (const auto self = weak.lock()) {
                                   self->endUnplug(number);
                               }
                           });
    }
    watchIdle();
    changed_.notify_all();
    return true;
}

// Unless it was plugged in meanwhile: another unplug has its own end, or none.
void Camera::endUnplug(std::uint64_t plugNumber) {
    const std::scoped_lock lock(mutex_);
    if (plugNumber == plugNumber_) {
        plug();
    }
}

void Camera::throwUnreachable() const {
    const std::string text = "Device '" + LabelOf(registers_.GetIdentity()) + "' can't be reached.";
    throw RuntimeException(text.c_str(), __FILE__, __LINE__);
}

void Camera::throwInUse(const std::string& name) const {
    const std::string text =
        "Device '" + LabelOf(registers_.GetIdentity()) + "' is in use by " + name + ".";
    throw AccessException(text.c_str(), __FILE__, __LINE__);
}

void Camera::failOpening(Lock& lock) {
    for (const FaultRule& rule : registers_.GetFaults().Take(Occasion::Open)) {
        if (rule.fault == Fault::InUse) {
            throwInUse(rule.holder);
        }
        if (rule.fault == Fault::Unplug) {
            unplug(rule.duration);
        } else {
            changed_.wait_for(lock, rule.duration, [this] { return !plugged_; });
        }
        throwUnreachable();
    }
}

void Camera::failAccess(Lock& lock, Session session, Occasion occasion, const char* what,
                        std::int64_t address) {
    const std::string_view name = Registers::GetName(address);
    for (const FaultRule& rule : registers_.GetFaults().Take(occasion, name)) {
        failAccess(lock, session, rule,
                   std::string(what) + " of register '" + std::string(name) + "' of device '" +
                       LabelOf(registers_.GetIdentity()) + "' ");
    }
}

void Camera::failAccess(Lock& lock, Session session, const FaultRule& rule,
                        const std::string& what) {
    switch (rule.fault) {
        case Fault::Events:
            postTests(static_cast<std::uint64_t>(rule.amount));
            break;
        case Fault::Refuse:
            throw AccessException((what + "is refused.").c_str(), __FILE__, __LINE__);
        case Fault::TimeOut:
            changed_.wait_for(lock, rule.duration, [&] { return session != session_; });
            requireSession(session);
            throw TimeoutException((what + "timed out.").c_str(), __FILE__, __LINE__);
        default:
            unplug(rule.duration);
            requireSession(session);
    }
}

// A new script counts from now on, so that of before is out of date.
void Camera::beginFaults() {
    ++faultsNumber_;
    schedule(Occasion::Every, 0);
    schedule(Occasion::After, plugNumber_);
    idle_ = false;
    watchIdle();
}

void Camera::schedule(Occasion occasion, std::uint64_t number) {
    const auto& rules = registers_.GetFaults().GetRules();
    for (std::size_t index = 0; index < rules.size(); ++index) {
        if (rules[index].occasion == occasion) {
            scheduleRule(index, number);
        }
    }
}

void Camera::scheduleRule(std::size_t index, std::uint64_t number) {
    const Clock::time_point time = Clock::now() + registers_.GetFaults().GetRules()[index].time;
    place_.agenda->Add(time, [weak = weak_from_this(), index, faults = faultsNumber_, number] {
        if (const auto self = weak.lock()) {
            self->onClock(index, faults, number);
        }
    });
}

void Camera::onClock(std::size_t index, std::uint64_t faultsNumber, std::uint64_t number) {
    const std::scoped_lock lock(mutex_);
    if (faultsNumber != faultsNumber_) {
        return;
    }
    const Occasion occasion = registers_.GetFaults().GetRules()[index].occasion;
    if (occasion == Occasion::Every) {
        scheduleRule(index, number);
    }
    const bool outOfDate = (occasion == Occasion::After && number != plugNumber_) ||
                           (occasion == Occasion::Idle && number != idleNumber_);
    if (outOfDate || !plugged_) {
        return;
    }
    if (const FaultRule* const rule = registers_.GetFaults().TakeRule(index)) {
        if (rule->fault == Fault::Events) {
            postTests(static_cast<std::uint64_t>(rule->amount));
        } else {
            unplug(rule->duration);
        }
    }
}

void Camera::watchIdle() {
    const bool idle = plugged_ && !registers_.IsAcquiring();
    if (idle == idle_) {
        return;
    }
    idle_ = idle;
    ++idleNumber_;
    if (idle) {
        schedule(Occasion::Idle, idleNumber_);
    }
}

}  // namespace Orlix::Emulated
