// Every frame that a device sent, by what became of it: since the device was opened, and since the
// camera object was made. A frame is counted when its fate is known; those that have none when
// their run ends are aborted, so the sum equals the frames sent as soon as grabbing has stopped.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <mutex>

#include "orlixcamera/api.h"
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

// Exported for its tests. Any thread may call. The stream is asked with no lock held that counting
// a frame takes.
class ORLIXCAMERA_API StreamCounters {
public:
    using Run = std::uint64_t;

    StreamCounters() = default;
    StreamCounters(const StreamCounters&) = delete;
    StreamCounters& operator=(const StreamCounters&) = delete;

    // A new opening of the device; all counts begin at zero. When it has ended they stay to be read
    // until the next begins.
    void BeginOpening();
    void EndOpening();

    // The stream of this opening is asked for its own counts until Detach.
    void Attach(const Transport::IStream& stream);
    void Detach();

    // The number of a run that begins now; runs don't overlap.
    [[nodiscard]] Run BeginRun();
    // The number of the run that began last; 0 before the first.
    [[nodiscard]] Run GetLastRun() const;
    // The stream has stopped and given all buffers back. Frames that have no fate yet, in those
    // buffers or in the hands of a thread that is late, are aborted; what that thread counts later
    // is ignored.
    void EndRun();
    void Count(Run run, Transport::FrameFate fate);
    void CountSkipped(Run run);
    void CountEventLost();
    void SetBuffers(std::int64_t payloadSize, std::int64_t bufferCount);
    void AddHeld(std::int64_t difference) noexcept { held_ += difference; }

    // Of this opening, or of the last one.
    [[nodiscard]] StreamCounts Get() const;
    // Of all openings; sizes are not among it.
    [[nodiscard]] StreamCounts GetTotal() const;

private:
    static constexpr std::size_t fateCount =
        static_cast<std::size_t>(Transport::FrameFate::Aborted) + 1;

    [[nodiscard]] Transport::StreamStatistics ofStream() const;
    void addTo(StreamCounts& counts) const;
    void addOwnTo(StreamCounts& counts) const;

    // Held while the stream is asked, so that it stays; taken before the other.
    mutable std::mutex streamMutex_;
    bool isOpen_ = false;
    const Transport::IStream* live_ = nullptr;
    Transport::StreamStatistics last_;  // of this opening's stream, when it has gone
    StreamCounts formerOpenings_;

    mutable std::mutex mutex_;
    std::array<std::uint64_t, fateCount> byFate_{};
    std::uint64_t skipped_ = 0;
    std::uint64_t eventsLost_ = 0;
    std::uint64_t aborted_ = 0;  // when their run ended
    Run lastRun_ = 0;
    Run run_ = 0;  // that goes on; 0 for none
    std::int64_t payloadSize_ = 0;
    std::int64_t bufferCount_ = 0;
    std::atomic<std::int64_t> held_{0};  // not reset: results outlive an opening
};

}  // namespace Orlix::Detail
