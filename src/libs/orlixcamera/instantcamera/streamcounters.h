// Every frame that a device sent, by what became of it: since the device was opened, and since the
// camera object was made. A frame is counted when its fate is known; those that have none when
// their run ends are aborted, so the sum equals the frames sent as soon as grabbing has stopped.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <mutex>
#include <numeric>

#include "orlixcamera/transport/transport.h"

namespace Orlix::Detail {

struct StreamCounts {
    std::uint64_t sent = 0;
    std::uint64_t delivered = 0;
    std::uint64_t failed = 0;  // the sum of the next five
    std::uint64_t missingPackets = 0;
    std::uint64_t wrongSize = 0;
    std::uint64_t badTrailer = 0;
    std::uint64_t timedOut = 0;
    std::uint64_t aborted = 0;
    std::uint64_t skipped = 0;
    std::uint64_t lostForBuffer = 0;
    std::uint64_t resentPackets = 0;
    std::uint64_t eventsLost = 0;
    std::int64_t payloadSize = 0;
    std::int64_t bufferCount = 0;
    std::int64_t heldBuffers = 0;
};

// Any thread may call.
class StreamCounters {
public:
    using Run = std::uint64_t;

    StreamCounters() = default;
    StreamCounters(const StreamCounters&) = delete;
    StreamCounters& operator=(const StreamCounters&) = delete;

    // A new opening of the device; all counts begin at zero. The stream is asked for its own counts
    // until Detach.
    void Attach(const Transport::IStream& stream) {
        const std::scoped_lock lock(mutex_);
        live_ = &stream;
        byFate_ = {};
        skipped_ = 0;
        eventsLost_ = 0;
        aborted_ = 0;
    }
    void Detach() {
        const std::scoped_lock lock(mutex_);
        addTo(formerOpenings_);
        last_ = ofStream();
        live_ = nullptr;
    }

    // The number of a run that begins now; runs don't overlap.
    [[nodiscard]] Run BeginRun() {
        const std::scoped_lock lock(mutex_);
        run_ = ++lastRun_;
        return run_;
    }
    // The stream has stopped and given all buffers back. Frames that have no fate yet, in those
    // buffers or in the hands of a thread that is late, are aborted; what that thread counts later
    // is ignored.
    void EndRun() {
        const std::scoped_lock lock(mutex_);
        run_ = 0;
        const Transport::StreamStatistics stream = ofStream();
        const std::uint64_t filled = stream.delivered + stream.failed;
        const std::uint64_t known = std::accumulate(byFate_.begin(), byFate_.end(), skipped_);
        aborted_ = filled > known ? filled - known : 0;
    }
    void Count(Run run, Transport::FrameFate fate) {
        const std::scoped_lock lock(mutex_);
        byFate_.at(static_cast<std::size_t>(fate)) += run == run_ ? 1 : 0;
    }
    void CountSkipped(Run run) {
        const std::scoped_lock lock(mutex_);
        skipped_ += run == run_ ? 1 : 0;
    }
    void CountEventLost() {
        const std::scoped_lock lock(mutex_);
        ++eventsLost_;
    }
    void SetBuffers(std::int64_t payloadSize, std::int64_t bufferCount) {
        const std::scoped_lock lock(mutex_);
        payloadSize_ = payloadSize;
        bufferCount_ = bufferCount;
    }
    void AddHeld(std::int64_t difference) noexcept { held_ += difference; }

    // Of this opening, or of the last one.
    [[nodiscard]] StreamCounts Get() const {
        const std::scoped_lock lock(mutex_);
        StreamCounts counts;
        addTo(counts);
        counts.payloadSize = payloadSize_;
        counts.bufferCount = bufferCount_;
        counts.heldBuffers = held_.load();
        return counts;
    }
    // Of all openings; sizes are not among it.
    [[nodiscard]] StreamCounts GetTotal() const {
        const std::scoped_lock lock(mutex_);
        StreamCounts counts = formerOpenings_;
        if (live_ != nullptr) {
            addTo(counts);
        }
        return counts;
    }

private:
    static constexpr std::size_t fateCount =
        static_cast<std::size_t>(Transport::FrameFate::Aborted) + 1;

    [[nodiscard]] Transport::StreamStatistics ofStream() const {
        return live_ != nullptr ? live_->GetStatistics() : last_;
    }
    void addTo(StreamCounts& counts) const {
        using Transport::FrameFate;
        const auto of = [this](FrameFate fate) {
            return byFate_.at(static_cast<std::size_t>(fate));
        };
        counts.delivered += of(FrameFate::Delivered);
        counts.missingPackets += of(FrameFate::MissingPackets);
        counts.wrongSize += of(FrameFate::WrongSize);
        counts.badTrailer += of(FrameFate::BadTrailer);
        counts.timedOut += of(FrameFate::TimedOut);
        counts.aborted += of(FrameFate::Aborted) + aborted_;
        counts.failed = counts.missingPackets + counts.wrongSize + counts.badTrailer +
                        counts.timedOut + counts.aborted;
        counts.skipped += skipped_;
        const Transport::StreamStatistics stream = ofStream();
        counts.lostForBuffer += stream.missedForBuffer;
        counts.resentPackets += stream.resentPackets;
        counts.sent += stream.delivered + stream.failed + stream.missedForBuffer;
        counts.eventsLost += eventsLost_;
    }

    mutable std::mutex mutex_;
    const Transport::IStream* live_ = nullptr;
    Transport::StreamStatistics last_;
    std::array<std::uint64_t, fateCount> byFate_{};
    std::uint64_t skipped_ = 0;
    std::uint64_t eventsLost_ = 0;
    std::uint64_t aborted_ = 0;  // when their run ended
    StreamCounts formerOpenings_;
    Run lastRun_ = 0;
    Run run_ = 0;  // that goes on; 0 for none
    std::int64_t payloadSize_ = 0;
    std::int64_t bufferCount_ = 0;
    std::atomic<std::int64_t> held_{0};  // not reset: results outlive an opening
};

}  // namespace Orlix::Detail
