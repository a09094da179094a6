// What has to be done at a later time, or on another thread: one thread that begins with the first
// task. Any thread may call.
#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "orlixcamera/api.h"

namespace Orlix::Emulated {

// Tasks must not throw, and run one after the other with no lock held. Those that are left when it
// ends are forgotten. It may end within a task.
class ORLIXCAMERA_API Agenda {
public:
    using Clock = std::chrono::steady_clock;

    Agenda();
    ~Agenda();
    Agenda(const Agenda&) = delete;
    Agenda& operator=(const Agenda&) = delete;

    void Add(Clock::time_point time, std::function<void()> task);

private:
    struct State;

    const std::shared_ptr<State> state_;
};

}  // namespace Orlix::Emulated
