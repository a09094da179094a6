// The thread of Aravis that fills the buffers of a stream. Any thread may ask.
#pragma once

#include <sys/types.h>

#include <atomic>

namespace Orlix::Aravis {

class ReceivingThread {
public:
    // To be called on it, before its first packet.
    void Enter() noexcept;
    // Whether it has nothing in hand now: it is seen waiting for packets, or has ended. False also
    // where the system doesn't show what its threads do.
    [[nodiscard]] bool IsIdle() const noexcept;

private:
    std::atomic<pid_t> id_{0};
};

}  // namespace Orlix::Aravis
