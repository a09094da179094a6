// The frames of an open camera: Aravis receives them straight into the queued buffers.
#pragma once

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <string>

#include "aravis/receiver.h"
#include "orlixcamera/transport/transport.h"

namespace Orlix::Aravis {

// After the loss of the camera, or the closing of its device, Start throws RuntimeException, and so
// does Wait when it has handed out what was filled before.
class Stream final : public Transport::IStream {
public:
    Stream(std::shared_ptr<Connection> connection, std::shared_ptr<StreamState> state,
           std::shared_ptr<void> place);
    ~Stream() override;

    void Queue(Transport::StreamBuffer& buffer) override;
    void Start(std::size_t payloadSize) override;
    [[nodiscard]] Transport::StreamBuffer* Wait(std::chrono::milliseconds timeOut) override;
    void Stop() noexcept override;
    [[nodiscard]] Transport::StreamBuffer* TakeBack() noexcept override;
    [[nodiscard]] Transport::StreamStatistics GetStatistics() const override;

private:
    class Visit;

    [[nodiscard]] std::string start(std::size_t payloadSize);
    [[nodiscard]] Transport::StreamBuffer* pop(std::unique_lock<std::mutex>& lock,
                                               std::chrono::milliseconds timeOut);
    void takeOut(Transport::StreamBuffer& buffer) noexcept;

    const std::shared_ptr<Connection> connection_;
    const std::shared_ptr<StreamState> state_;
    const std::shared_ptr<void> place_;  // of the device's one stream

    std::mutex control_;  // Start against Stop; outside of mutex_
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::shared_ptr<Receiver> receiver_;         // while it runs
    std::shared_ptr<Receiver> ending_;           // while Stop ends it
    std::deque<Transport::StreamBuffer*> held_;  // all buffers that the stream has
    unsigned int inside_ = 0;                    // threads that use the receiver
    Transport::StreamStatistics before_;         // of earlier runs
};

}  // namespace Orlix::Aravis
