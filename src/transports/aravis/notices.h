// The way from a device's threads to its sink: no call under way when the sink is taken away, none
// of an opening that has ended. Shared by the device and its threads, which may outlive it. Any
// thread may call; nothing waits for a call of the sink but SetSink.
#pragma once

#include <cstdint>
#include <mutex>

#include "orlixcamera/transport/guardedcall.h"
#include "orlixcamera/transport/transport.h"

namespace Orlix::Aravis {

class Notices {
public:
    // When it returns, no call of the sink before is under way, but for one on this very thread.
    void SetSink(Transport::IDeviceSink* sink);

    // News of one opening must not be taken for that of the next; this ends the one before.
    [[nodiscard]] std::uint64_t BeginOpening();
    void EndOpening() noexcept;

    // By one thread of an opening.
    void TellEvent(std::uint64_t opening, const Transport::EventMessage& message);
    void TellLoss(std::uint64_t opening);

private:
    using Lock = Transport::GuardedCall::Lock;

    [[nodiscard]] Transport::IDeviceSink* sinkOf(std::uint64_t opening) const noexcept;

    std::mutex mutex_;
    Transport::IDeviceSink* sink_ = nullptr;
    std::uint64_t opening_ = 0;  // that may tell, or 0
    std::uint64_t lastOpening_ = 0;
    Transport::GuardedCall eventCall_;
    Transport::GuardedCall lossCall_;
};

}  // namespace Orlix::Aravis
