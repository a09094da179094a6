// Asks an open camera for a sign of life, several times a second, and tells the connection of its
// loss: Aravis takes five seconds to notice. GigE Vision cameras are asked over a socket of its
// own, so that a register access that takes its time is no obstacle.
#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

#include "aravis/connection.h"

namespace Orlix::Aravis {

class Heartbeat {
public:
    explicit Heartbeat(std::shared_ptr<Connection> connection);
    // Ends it; waits for a question that is under way.
    ~Heartbeat();
    Heartbeat(const Heartbeat&) = delete;
    Heartbeat& operator=(const Heartbeat&) = delete;

private:
    // False once it is to end.
    [[nodiscard]] bool pause();
    void watchNetwork();
    void watchUsb();
    [[nodiscard]] ControlSign ask(GvcpClient& client) const noexcept;

    const std::shared_ptr<Connection> connection_;
    std::mutex mutex_;
    std::condition_variable changed_;
    bool quit_ = false;
    std::thread thread_;
};

}  // namespace Orlix::Aravis
