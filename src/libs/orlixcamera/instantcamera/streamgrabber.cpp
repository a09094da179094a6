#include "orlixcamera/instantcamera/streamgrabber.h"

#include <utility>

namespace Orlix::Detail {

using Transport::StreamBuffer;

StreamGrabber::StreamGrabber(std::shared_ptr<Transport::IDevice> device,
                             std::shared_ptr<StreamCounters> counters)
    : device_(std::move(device)), counters_(std::move(counters)) {}

StreamGrabber::~StreamGrabber() {
    Stop();
    Close();
}

void StreamGrabber::openStream() {
    if (stream_ == nullptr) {
        stream_ = device_->OpenStream();
        counters_->Attach(*stream_);
    }
}

StreamCounters::Run StreamGrabber::Start(std::shared_ptr<BufferSet> buffers, Queueing queueing,
                                         const ExpectedFrames& frames) {
    openStream();
    buffers_ = std::move(buffers);
    geometry_ = frames.geometry;
    counters_->SetBuffers(static_cast<std::int64_t>(frames.payloadSize),
                          static_cast<std::int64_t>(buffers_->GetCount()));
    const StreamCounters::Run run = counters_->BeginRun();
    {
        const std::scoped_lock lock(mutex_);
        running_ = true;
        run_ = run;
    }
    try {
        buffers_->Activate(*stream_, queueing);
        stream_->Start(frames.payloadSize);
    } catch (...) {
        Stop();
        throw;
    }
    return run;
}

void StreamGrabber::Stop() noexcept {
    {
        const std::scoped_lock lock(mutex_);
        if (!running_) {
            return;
        }
        running_ = false;
    }
    buffers_->Deactivate();
    stream_->Stop();
    {
        // A frame of the next run must not fall to a Take of this one.
        std::unique_lock lock(mutex_);
        nobodyWaits_.wait(lock, [this] { return waiting_ == 0; });
    }
    takeAllBack();
}

void StreamGrabber::takeAllBack() noexcept {
    while (StreamBuffer* const buffer = stream_->TakeBack()) {
        buffers_->Return(FrameSlot::Of(*buffer));
    }
    counters_->EndRun();
}

void StreamGrabber::Close() noexcept {
    if (stream_ != nullptr) {
        counters_->Detach();
        stream_.reset();
    }
}

FrameSlot* StreamGrabber::Take(StreamCounters::Run run, std::chrono::milliseconds timeOut) {
    {
        const std::scoped_lock lock(mutex_);
        if (!running_ || run != run_) {
            return nullptr;
        }
        ++waiting_;
    }
    // Whatever happens, Stop must hear of the end of this call.
    struct Leave {
        StreamGrabber& grabber;
        ~Leave() {
            const std::scoped_lock lock(grabber.mutex_);
            --grabber.waiting_;
            grabber.nobodyWaits_.notify_all();
        }
    };
    const Leave leave{*this};
    StreamBuffer* const buffer = stream_->Wait(timeOut);
    if (buffer == nullptr) {
        return nullptr;
    }
    FrameSlot& slot = FrameSlot::Of(*buffer);
    slot.Examine();
    slot.Assume(geometry_);
    return &slot;
}

}  // namespace Orlix::Detail
