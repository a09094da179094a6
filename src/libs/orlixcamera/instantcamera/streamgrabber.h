// The stream of an open device: started with a set of buffers, asked for frames by one run of
// grabbing after the other, and counted.
#pragma once

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>

#include "orlixcamera/instantcamera/bufferset.h"
#include "orlixcamera/instantcamera/streamcounters.h"
#include "orlixcamera/transport/transport.h"

namespace Orlix::Detail {

// Of a run, by the settings of the camera.
struct ExpectedFrames {
    std::size_t payloadSize = 0;
    FrameGeometry geometry;
};

// Start, Stop and Close are called one at a time; Take on any thread, which may hold this object
// longer than the camera does.
class StreamGrabber {
public:
    StreamGrabber(std::shared_ptr<Transport::IDevice> device,
                  std::shared_ptr<StreamCounters> counters);
    ~StreamGrabber();
    StreamGrabber(const StreamGrabber&) = delete;
    StreamGrabber& operator=(const StreamGrabber&) = delete;

    // Begins a run and returns its number; what it throws leaves everything stopped. Opens the
    // stream where needed.
    [[nodiscard]] StreamCounters::Run Start(std::shared_ptr<BufferSet> buffers, Queueing queueing,
                                            const ExpectedFrames& frames);
    // Ends the run: no Take gets a frame from now on. Waits for no more than those inside Take,
    // which return at once.
    void Stop() noexcept;
    // After Stop; results that are out keep theirs.
    void DropBuffers() noexcept { buffers_.reset(); }
    // Lets the stream go, so that the device can be closed.
    void Close() noexcept;

    // The next frame of that run, examined; null after the time-out, and at once when the run has
    // ended. It is to be counted and handed out, or returned to the set. Throws what the stream
    // throws.
    [[nodiscard]] FrameSlot* Take(StreamCounters::Run run, std::chrono::milliseconds timeOut);
    [[nodiscard]] StreamCounters& GetCounters() const noexcept { return *counters_; }

private:
    void openStream();
    void takeAllBack() noexcept;

    const std::shared_ptr<Transport::IDevice> device_;  // outlives its stream
    const std::shared_ptr<StreamCounters> counters_;
    std::unique_ptr<Transport::IStream> stream_;
    std::shared_ptr<BufferSet> buffers_;
    FrameGeometry geometry_;  // of the run

    std::mutex mutex_;
    std::condition_variable nobodyWaits_;
    bool running_ = false;
    StreamCounters::Run run_ = 0;  // the last
    unsigned int waiting_ = 0;     // calls inside the stream's Wait
};

}  // namespace Orlix::Detail
