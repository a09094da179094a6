#include "aravis/notices.h"

namespace Orlix::Aravis {

void Notices::SetSink(Transport::IDeviceSink* sink) {
    Lock lock(mutex_);
    sink_ = sink;
    eventCall_.AwaitEnd(lock);
    lossCall_.AwaitEnd(lock);
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

Transport::IDeviceSink* Notices::sinkOf(std::uint64_t opening) const noexcept {
    return opening == opening_ ? sink_ : nullptr;
}

// A thread of the opening before may still be inside.
void Notices::TellEvent(std::uint64_t opening, const Transport::EventMessage& message) {
    Lock lock(mutex_);
    eventCall_.AwaitTurn(lock);
    if (Transport::IDeviceSink* const sink = sinkOf(opening)) {
        eventCall_.Make(lock, [&] { sink->OnEvent(message); });
    }
}

void Notices::TellLoss(std::uint64_t opening) {
    Lock lock(mutex_);
    lossCall_.AwaitTurn(lock);
    if (Transport::IDeviceSink* const sink = sinkOf(opening)) {
        lossCall_.Make(lock, [sink] { sink->OnLost(); });
    }
}

}  // namespace Orlix::Aravis
