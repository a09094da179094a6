#include "orlixcamera/instantcamera/streamcounters.h"

#include <numeric>

namespace Orlix::Detail {

using Transport::FrameFate;

void StreamCounters::BeginOpening() {
    const std::scoped_lock streamLock(streamMutex_);
    const std::scoped_lock lock(mutex_);
    isOpen_ = true;
    last_ = {};
    byFate_ = {};
    skipped_ = 0;
    eventsLost_ = 0;
    aborted_ = 0;
    payloadSize_ = 0;
    bufferCount_ = 0;
}

void StreamCounters::EndOpening() {
    const std::scoped_lock streamLock(streamMutex_);
    addTo(formerOpenings_);
    isOpen_ = false;
}

void StreamCounters::Attach(const Transport::IStream& stream) {
    const std::scoped_lock streamLock(streamMutex_);
    live_ = &stream;
}

void StreamCounters::Detach() {
    const std::scoped_lock streamLock(streamMutex_);
    last_ = ofStream();
    live_ = nullptr;
}

StreamCounters::Run StreamCounters::BeginRun() {
    const std::scoped_lock lock(mutex_);
    run_ = ++lastRun_;
    return run_;
}

StreamCounters::Run StreamCounters::GetLastRun() const {
    const std::scoped_lock lock(mutex_);
    return lastRun_;
}

void StreamCounters::EndRun() {
    const std::scoped_lock streamLock(streamMutex_);
    const Transport::StreamStatistics stream = ofStream();
    const std::scoped_lock lock(mutex_);
    run_ = 0;
    const std::uint64_t filled = stream.delivered + stream.failed;
    const std::uint64_t known = std::accumulate(byFate_.begin(), byFate_.end(), skipped_);
    aborted_ = filled > known ? filled - known : 0;
}

void StreamCounters::Count(Run run, FrameFate fate) {
    const std::scoped_lock lock(mutex_);
    byFate_.at(static_cast<std::size_t>(fate)) += run == run_ ? 1 : 0;
}

void StreamCounters::CountSkipped(Run run) {
    const std::scoped_lock lock(mutex_);
    skipped_ += run == run_ ? 1 : 0;
}

void StreamCounters::CountEventLost() {
    const std::scoped_lock lock(mutex_);
    ++eventsLost_;
}

void StreamCounters::SetBuffers(std::int64_t payloadSize, std::int64_t bufferCount) {
    const std::scoped_lock lock(mutex_);
    payloadSize_ = payloadSize;
    bufferCount_ = bufferCount;
}

StreamCounts StreamCounters::Get() const {
    const std::scoped_lock streamLock(streamMutex_);
    StreamCounts counts;
    addTo(counts);
    counts.heldBuffers = held_.load();
    const std::scoped_lock lock(mutex_);
    counts.payloadSize = payloadSize_;
    counts.bufferCount = bufferCount_;
    return counts;
}

StreamCounts StreamCounters::GetTotal() const {
    const std::scoped_lock streamLock(streamMutex_);
    StreamCounts counts = formerOpenings_;
    if (isOpen_) {
        addTo(counts);
    }
    return counts;
}

Transport::StreamStatistics StreamCounters::ofStream() const {
    return live_ != nullptr ? live_->GetStatistics() : last_;
}

// The stream last: so no frame has a fate here that the stream doesn't know of yet.
void StreamCounters::addTo(StreamCounts& counts) const {
    addOwnTo(counts);
    const Transport::StreamStatistics stream = ofStream();
    counts.lostForBuffer += stream.missedForBuffer;
    counts.resentPackets += stream.resentPackets;
    counts.sent += stream.delivered + stream.failed + stream.missedForBuffer;
}

void StreamCounters::addOwnTo(StreamCounts& counts) const {
    const std::scoped_lock lock(mutex_);
    const auto of = [this](FrameFate fate) { return byFate_.at(static_cast<std::size_t>(fate)); };
    counts.delivered += of(FrameFate::Delivered);
    counts.missingPackets += of(FrameFate::MissingPackets);
    counts.wrongSize += of(FrameFate::WrongSize);
    counts.badTrailer += of(FrameFate::BadTrailer);
    counts.timedOut += of(FrameFate::TimedOut);
    counts.aborted += of(FrameFate::Aborted) + aborted_;
    counts.failed = counts.missingPackets + counts.wrongSize + counts.badTrailer + counts.timedOut +
                    counts.aborted;
    counts.skipped += skipped_;
    counts.eventsLost += eventsLost_;
}

}  // namespace Orlix::Detail
