#include "orlixcamera/emulated/stream.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

#include "gcbase/gcexception.h"

namespace Orlix::Emulated {

using Transport::FrameFate;
using Transport::StreamBuffer;

Stream::Stream(std::shared_ptr<Camera> camera, Session session)
    : camera_(std::move(camera)), session_(session) {
    camera_->BeginStream(session);
}

Stream::~Stream() {
    Stop();
    camera_->EndStream(session_);
}

void Stream::Queue(StreamBuffer& buffer) {
    const std::scoped_lock lock(mutex_);
    filled_.Reserve(bufferCount_ + 1);
    queued_.Push(buffer);
    ++bufferCount_;
}

void Stream::Start(std::size_t payloadSize) {
    const std::scoped_lock control(control_);
    if (thread_.joinable()) {
        throw GenICam::RuntimeException("The stream is started already.", __FILE__, __LINE__);
    }
    if (!camera_->Holds(session_)) {
        throwGone();
    }
    stop_ = false;
    {
        const std::scoped_lock lock(mutex_);
        state_ = State::Running;
    }
    thread_ = std::thread([this, payloadSize] { run(payloadSize); });
}

StreamBuffer* Stream::Wait(std::chrono::milliseconds timeOut) {
    std::unique_lock lock(mutex_);
    filledOrEnded_.wait_for(lock, timeOut,
                            [this] { return state_ != State::Running || !filled_.IsEmpty(); });
    if (state_ == State::Stopped) {
        return nullptr;
    }
    StreamBuffer* const buffer = filled_.Pop();
    if (buffer != nullptr) {
        --bufferCount_;
    } else if (state_ == State::Ended) {
        throwGone();
    }
    return buffer;
}

void Stream::Stop() noexcept {
    const std::scoped_lock control(control_);
    {
        const std::scoped_lock lock(mutex_);
        state_ = State::Stopped;
        filledOrEnded_.notify_all();
    }
    if (thread_.joinable()) {
        // The thread calls no one and waits for nothing but its camera, so this is short.
        camera_->Raise(stop_);
        thread_.join();
    }
}

StreamBuffer* Stream::TakeBack() noexcept {
    const std::scoped_lock lock(mutex_);
    if (state_ == State::Running) {
        return nullptr;
    }
    StreamBuffer* buffer = filled_.Pop();
    if (buffer == nullptr) {
        buffer = queued_.Pop();
        if (buffer != nullptr) {
            buffer->fate = FrameFate::Aborted;
            buffer->filled = 0;
        }
    }
    bufferCount_ -= buffer != nullptr ? 1 : 0;
    return buffer;
}

Transport::StreamStatistics Stream::GetStatistics() const {
    const std::scoped_lock lock(mutex_);
    return statistics_;
}

void Stream::run(std::size_t payloadSize) {
    FrameCursor cursor;
    FrameOrder order;
    while (camera_->WaitForFrame(session_, stop_, cursor, order)) {
        send(order, payloadSize);
    }
    const std::scoped_lock lock(mutex_);
    if (state_ == State::Running) {
        state_ = State::Ended;
        filledOrEnded_.notify_all();
    }
}

void Stream::send(const FrameOrder& order, std::size_t payloadSize) {
    StreamBuffer* buffer = nullptr;
    {
        const std::scoped_lock lock(mutex_);
        buffer = queued_.Pop();
        statistics_.missedForBuffer += buffer == nullptr ? 1 : 0;
    }
    if (buffer == nullptr) {
        camera_->EndFrame(session_, order, Outcome::NoBuffer);
        unplugAsOrdered(order);
        return;
    }
    const std::uint64_t missing = fill(*buffer, order, payloadSize);
    camera_->EndFrame(session_, order, Outcome::Received);
    {
        const std::scoped_lock lock(mutex_);
        ++(buffer->fate == FrameFate::Delivered ? statistics_.delivered : statistics_.failed);
        statistics_.resentPackets += order.faults.resentPackets;
        statistics_.missingPackets += missing;
        filled_.Push(*buffer);
        filledOrEnded_.notify_one();
    }
    unplugAsOrdered(order);
}

void Stream::unplugAsOrdered(const FrameOrder& order) {
    if (order.faults.unplug) {
        camera_->Unplug(order.faults.unplugged);
    }
}

// Returns how many packets of the frame got lost.
std::uint64_t Stream::fill(StreamBuffer& buffer, const FrameOrder& order, std::size_t payloadSize) {
    picture_.Prepare(order.settings, order.frameNumber);
    describe(buffer, order);
    const std::size_t pictureSize = picture_.GetSize();
    const std::size_t size = pictureSize + GetChunkBytes(order.chunks);
    const std::size_t room = std::min(payloadSize, buffer.capacity);
    if (size > room) {
        fail(buffer, FrameFate::WrongSize, 0,
             "The frame has " + std::to_string(size) + " bytes, its buffer has room for " +
                 std::to_string(room) + ".");
        return 0;
    }
    picture_.Write(buffer.data, order.frameNumber);
    WriteChunks(order.chunks, order.values, picture_.GetSceneName(),
                static_cast<std::uint8_t*>(buffer.data), pictureSize);
    buffer.fate = FrameFate::Delivered;
    buffer.error = gcstring();
    buffer.filled = size;
    return spoil(buffer, order);
}

// What the receiver would make of a frame that comes like that.
std::uint64_t Stream::spoil(StreamBuffer& buffer, const FrameOrder& order) {
    const FrameFaults& faults = order.faults;
    const std::size_t size = buffer.filled;
    if (faults.cutChunk) {
        CutChunk(order.chunks, static_cast<std::uint8_t*>(buffer.data), size);
    }
    if (faults.unplug) {
        fail(buffer, FrameFate::Aborted, size / 2, "The device was lost during the frame.");
    } else if (faults.lostEnd) {
        fail(buffer, FrameFate::TimedOut, size, "The end of the frame didn't come in time.");
    } else if (faults.missingPackets > 0) {
        return losePackets(buffer, faults.missingPackets);
    } else if (faults.sizeChange != 0) {
        const auto sent = static_cast<std::int64_t>(size) + faults.sizeChange;
        const std::size_t received = static_cast<std::size_t>(std::max<std::int64_t>(sent, 0));
        fail(buffer, FrameFate::WrongSize, std::min(received, buffer.capacity),
             "The frame has " + std::to_string(received) + " bytes instead of " +
                 std::to_string(size) + ".");
    } else if (faults.badTrailer) {
        fail(buffer, FrameFate::BadTrailer, size,
             "The device marked the trailer of the frame as invalid.");
    }
    return 0;
}

// Packets of the middle: what they would have brought stays black.
std::uint64_t Stream::losePackets(StreamBuffer& buffer, std::uint64_t lost) {
    constexpr std::uint64_t packetSize = 1440;
    const std::uint64_t size = buffer.filled;
    const std::uint64_t count = (size + packetSize - 1) / packetSize;
    lost = std::min(lost, count);
    const std::uint64_t from = (count - lost) / 2 * packetSize;
    const std::uint64_t to = std::min(from + lost * packetSize, size);
    std::memset(static_cast<std::uint8_t*>(buffer.data) + from, 0, to - from);
    fail(buffer, FrameFate::MissingPackets, size - (to - from),
         std::to_string(lost) + " of " + std::to_string(count) +
             " packets of the frame are missing.");
    return lost;
}

void Stream::fail(StreamBuffer& buffer, FrameFate fate, std::size_t filled,
                  const std::string& text) {
    buffer.fate = fate;
    buffer.filled = filled;
    buffer.error = gcstring(text);
}

void Stream::describe(StreamBuffer& buffer, const FrameOrder& order) {
    const PictureSettings& settings = order.settings;
    buffer.kind = order.chunks.active ? Transport::PayloadKind::ImageWithChunks
                                      : Transport::PayloadKind::Image;
    buffer.chunkByteOrder = order.chunks.byteOrder;
    buffer.frameId = order.frameNumber + 1;
    buffer.timestamp = order.timestamp;
    buffer.pixelType = settings.pixelType;
    buffer.width = settings.region.width;
    buffer.height = settings.region.height;
    buffer.offsetX = settings.region.offsetX;
    buffer.offsetY = settings.region.offsetY;
    buffer.paddingX = 0;
}

void Stream::throwGone() const {
    const std::string text = "Device '" + camera_->GetLabel() +
                             (camera_->IsPlugged() ? "' isn't open." : "' was removed.");
    throw GenICam::RuntimeException(text.c_str(), __FILE__, __LINE__);
}

}  // namespace Orlix::Emulated
