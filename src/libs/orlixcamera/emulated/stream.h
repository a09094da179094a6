// The frames of an emulated camera, written straight into the queued buffers by a thread of the
// stream's own. Every frame ends in a buffer or in the count of those that found none.
#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "orlixcamera/emulated/bufferring.h"
#include "orlixcamera/emulated/camera.h"
#include "orlixcamera/emulated/picture.h"
#include "orlixcamera/transport/transport.h"

namespace Orlix::Emulated {

// After the loss of the camera, or the closing of its device, Start throws RuntimeException, and so
// does Wait when it has handed out what was filled before.
class Stream final : public Transport::IStream {
public:
    // Throws RuntimeException if the camera streams already, or its device isn't open.
    Stream(std::shared_ptr<Camera> camera, Session session);
    ~Stream() override;

    void Queue(Transport::StreamBuffer& buffer) override;
    void Start(std::size_t payloadSize) override;
    [[nodiscard]] Transport::StreamBuffer* Wait(std::chrono::milliseconds timeOut) override;
    void Stop() noexcept override;
    [[nodiscard]] Transport::StreamBuffer* TakeBack() noexcept override;
    [[nodiscard]] Transport::StreamStatistics GetStatistics() const override;

private:
    enum class State : std::uint8_t { Stopped, Running, Ended };

    void run(std::size_t payloadSize);
    void send(const FrameOrder& order, std::size_t payloadSize);
    void unplugAsOrdered(const FrameOrder& order);
    std::uint64_t fill(Transport::StreamBuffer& buffer, const FrameOrder& order,
                       std::size_t payloadSize);
    static void describe(Transport::StreamBuffer& buffer, const FrameOrder& order);
    static std::uint64_t spoil(Transport::StreamBuffer& buffer, const FrameOrder& order);
    static std::uint64_t losePackets(Transport::StreamBuffer& buffer, std::uint64_t lost);
    static void fail(Transport::StreamBuffer& buffer, Transport::FrameFate fate, std::size_t filled,
                     const std::string& text);
    [[noreturn]] void throwGone() const;

    const std::shared_ptr<Camera> camera_;
    const Session session_;

    std::mutex control_;  // Start against Stop; outside of mutex_
    std::thread thread_;
    bool stop_ = false;  // under the camera's lock while the thread runs
    Picture picture_;    // the thread's

    mutable std::mutex mutex_;
    std::condition_variable filledOrEnded_;
    BufferRing queued_;
    BufferRing filled_;
    std::size_t bufferCount_ = 0;  // in either ring, or being filled
    State state_ = State::Stopped;
    Transport::StreamStatistics statistics_;
};

}  // namespace Orlix::Emulated
