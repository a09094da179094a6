#include "aravis/notices.h"

namespace Orlix::Aravis {

void Notices::SetSink(Transport::IDeviceSink* sink) {
    Lock lock(mutex_);
    sink_ = sink;
    const auto isFree = [](std::thread::id caller) {
        return caller == std::thread::id() || caller == std::this_thread::get_id();
    };
    changed_.wait(lock, [&] { return isFree(eventCaller_) && isFree(lossCaller_); });
}

std::uint64_t Notices::BeginOpening() {
    const std::scoped_lock lock(mutex_);
    opening_ = ++lastOpening_;
    return opening_;
}

void Notices::EndOpening() noexcept {
    const std::scoped_lock lock(mutex_);
    opening_ = 0;
}

void Notices::TellEvent(std::uint64_t opening, const Transport::EventMessage& message) {
    Lock lock(mutex_);
    // A thread of the opening before may still be inside.
    changed_.wait(lock, [this] { return eventCaller_ == std::thread::id(); });
    if (sink_ == nullptr || opening != opening_) {
        return;
    }
    Transport::IDeviceSink* const sink = sink_;
    eventCaller_ = std::this_thread::get_id();
    lock.unlock();
    sink->OnEvent(message);
    lock.lock();
    eventCaller_ = std::thread::id();
    changed_.notify_all();
}

void Notices::TellLoss(std::uint64_t opening) {
    Lock lock(mutex_);
    changed_.wait(lock, [this] { return lossCaller_ == std::thread::id(); });
    if (sink_ == nullptr || opening != opening_) {
        return;
    }
    Transport::IDeviceSink* const sink = sink_;
    lossCaller_ = std::this_thread::get_id();
    lock.unlock();
    sink->OnLost();
    lock.lock();
    lossCaller_ = std::thread::id();
    changed_.notify_all();
}

}  // namespace Orlix::Aravis
