// The buffers of a camera for frames of one size. Each is with the stream, with a thread of the
// camera, with the holders of its result, or free.
#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include "orlixcamera/instantcamera/frameslot.h"
#include "orlixcamera/instantcamera/streamcounters.h"

namespace Orlix::Detail {

// Who decides when a free buffer goes to the stream.
enum class Queueing : std::uint8_t { Automatic, OnDemand };

// Kept alive by the results that are out, so it outlives the stream, the camera and the device. Any
// thread may call.
class BufferSet : public std::enable_shared_from_this<BufferSet> {
public:
    // BadAllocException without the memory.
    BufferSet(std::size_t count, std::size_t capacity, const std::shared_ptr<ChunkMaps>& chunkMaps,
              std::shared_ptr<StreamCounters> counters);

    [[nodiscard]] std::size_t GetCount() const noexcept { return slots_.size(); }
    [[nodiscard]] std::size_t GetCapacity() const noexcept { return capacity_; }

    // From now on free buffers go to the stream: all of them at once, and those that come back
    // when they do; with OnDemand only when asked for.
    void Activate(Transport::IStream& stream, Queueing queueing);
    // The stream gets nothing more.
    void Deactivate() noexcept;
    // Gives one buffer to the stream: a free one, or the next that comes back.
    void QueueOne();

    // A buffer that the stream or a holder is done with.
    void Return(FrameSlot& slot) noexcept;
    void CountHeld(std::int64_t difference) noexcept { counters_->AddHeld(difference); }

private:
    const std::size_t capacity_;
    const std::shared_ptr<StreamCounters> counters_;
    std::vector<std::unique_ptr<FrameSlot>> slots_;

    std::mutex mutex_;
    Transport::IStream* stream_ = nullptr;
    Queueing queueing_ = Queueing::Automatic;
    bool wanted_ = false;           // by the stream, when none was free
    std::vector<FrameSlot*> free_;  // has room for all
};

}  // namespace Orlix::Detail
