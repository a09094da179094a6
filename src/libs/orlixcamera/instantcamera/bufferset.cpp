#include "orlixcamera/instantcamera/bufferset.h"

#include <utility>

#include "orlixcamera/instantcamera/messages.h"

namespace Orlix::Detail {

BufferSet::BufferSet(std::size_t count, std::size_t capacity,
                     const std::shared_ptr<ChunkMaps>& chunkMaps,
                     std::shared_ptr<StreamCounters> counters)
    : capacity_(capacity), counters_(std::move(counters)) {
    slots_.reserve(count);
    free_.reserve(count);
    for (std::size_t index = 0; index < count; ++index) {
        slots_.push_back(std::make_unique<FrameSlot>(capacity, chunkMaps));
        free_.push_back(slots_.back().get());
    }
}

void BufferSet::Activate(Transport::IStream& stream, Queueing queueing) {
    const std::scoped_lock lock(mutex_);
    stream_ = &stream;
    queueing_ = queueing;
    wanted_ = false;
    while (queueing == Queueing::Automatic && !free_.empty()) {
        stream.Queue(free_.back()->buffer);
        free_.pop_back();
    }
}

void BufferSet::Deactivate() noexcept {
    const std::scoped_lock lock(mutex_);
    stream_ = nullptr;
}

void BufferSet::QueueOne() {
    const std::scoped_lock lock(mutex_);
    wanted_ = free_.empty();
    if (stream_ != nullptr && !wanted_) {
        stream_->Queue(free_.back()->buffer);
        free_.pop_back();
    }
}

void BufferSet::Return(FrameSlot& slot) noexcept {
    std::string why;
    {
        const std::scoped_lock lock(mutex_);
        if (stream_ != nullptr && (queueing_ == Queueing::Automatic || wanted_)) {
            try {
                stream_->Queue(slot.buffer);
                wanted_ = false;
                return;
            } catch (...) {
                why = TextOfCurrentException();
            }
        }
        free_.push_back(&slot);
    }
    // Who hears of it may stop the camera, which takes the lock.
    if (!why.empty()) {
        Tell("A buffer can't be queued: " + why);
    }
}

}  // namespace Orlix::Detail
