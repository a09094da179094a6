#include "host/outputtap.h"

#include <algorithm>
#include <utility>

#include "host/valuereader.h"
#include "orlixdataprocessingcore/core/graphupdate.h"

namespace Orlix::Host {

namespace {

// With so many the pin has no space: its node waits, and its source behind it, until the counted
// pin has come as far. That has got all these updates already, so it will.
constexpr std::size_t maxHeldImages = 8;
constexpr std::size_t maxHeldValues = 1024;

}  // namespace

OutputTap::OutputTap(std::size_t index, const OpenOutput& output, std::uint64_t limit,
                     std::shared_ptr<RunState> state, std::shared_ptr<OutputWriter> writer,
                     std::function<void()> onPassed, TapSource source)
    : index_(index),
      limit_(limit),
      source_(source),
      maxHeld_(output.isImage ? maxHeldImages : maxHeldValues),
      state_(std::move(state)),
      onPassed_(std::move(onPassed)),
      writer_(std::move(writer)) {
    report_.node = output.node;
    report_.pin = output.pin;
    if (limit_ != 0) {
        state_->countFromHere();
    }
}

void OutputTap::put(const std::shared_ptr<DataProcessing::Core::IGraphUpdate>& update,
                    const DataProcessing::Utils::Variant& value) {
    const std::uint64_t number = update != nullptr ? update->getSequenceNumber() : 0;
    if (!state_->takes(number)) {
        return;
    }
    state_->noteValue();
    bool hasSpaceAgain = false;
    {
        std::vector<Held> gone;
        const std::lock_guard lock(mutex_);
        if (isClosed_) {
            return;
        }
        const bool mayWait = limit_ == 0 && source_ == TapSource::SameAsCounted;
        if (!mayWait || (held_.empty() && number <= state_->passed())) {
            take({number, RunClock::now(), value});
        } else {
            // One that the counted pin has passed meanwhile doesn't wait, and makes space for all.
            const bool wasFull = held_.size() >= maxHeld_;
            held_.push_back({number, RunClock::now(), value});
            gone = letGo(Behind::Keep);
            hasSpaceAgain = wasFull && held_.size() < maxHeld_;
        }
    }
    if (hasSpaceAgain) {
        notifySpace();
    }
    if (limit_ != 0) {
        pass(number);
    }
}

void OutputTap::skip(const std::shared_ptr<DataProcessing::Core::IGraphUpdate>& update) {
    if (limit_ != 0 && update != nullptr) {
        pass(update->getSequenceNumber());
    }
}

void OutputTap::pass(std::uint64_t update) {
    state_->notePassed(update);
    if (onPassed_) {
        onPassed_();
    }
}

void OutputTap::release() {
    release(Behind::Keep);
}

void OutputTap::releaseAll() {
    release(Behind::LetGo);
}

void OutputTap::release(Behind behind) {
    std::vector<Held> gone;
    bool hasSpaceAgain = false;
    {
        const std::lock_guard lock(mutex_);
        const bool wasFull = held_.size() >= maxHeld_;
        gone = letGo(behind);
        hasSpaceAgain = wasFull && held_.size() < maxHeld_;
    }
    if (hasSpaceAgain) {
        notifySpace();
    }
}

void OutputTap::close() {
    std::deque<Held> gone;
    std::shared_ptr<OutputWriter> writer;
    {
        const std::lock_guard lock(mutex_);
        isClosed_ = true;
        gone.swap(held_);
        writer.swap(writer_);
    }
    notifySpace();
}

// In the order in which they came, so that only the first one decides.
std::vector<OutputTap::Held> OutputTap::letGo(Behind behind) {
    std::vector<Held> gone;
    while (!held_.empty() &&
           (behind == Behind::LetGo || held_.front().update <= state_->passed())) {
        take(held_.front());
        gone.push_back(std::move(held_.front()));
        held_.pop_front();
    }
    return gone;
}

void OutputTap::take(const Held& held) {
    const std::uint64_t number = count(held);
    if (number != 0 && writer_ != nullptr) {
        writer_->add({index_, number, held.update, held.value});
    }
    if (number != 0 && number == limit_) {
        state_->requestStop();
    }
}

std::uint64_t OutputTap::count(const Held& held) {
    // A source may hand updates over out of order: an older one can come after the last that
    // counts.
    const bool isComplete = limit_ != 0 && report_.frames >= limit_;
    if (isComplete || !state_->takes(held.update)) {
        return 0;
    }
    last_ = held.arrival;
    if (report_.frames == 0) {
        first_ = last_;
    }
    ++report_.frames;
    report_.errors += errorOf(held.value) != nullptr ? 1U : 0U;
    if (report_.frames == limit_) {
        // What the graph still has under way is finished, but is not part of this run's result.
        state_->setLastUpdate(std::max(held.update, state_->passed()));
    }
    return report_.frames;
}

bool OutputTap::hasSpace() const {
    const std::lock_guard lock(mutex_);
    return held_.size() < maxHeld_ && (writer_ == nullptr || writer_->hasSpace());
}

void OutputTap::setSpaceListener(
    const std::weak_ptr<DataProcessing::Core::ISpaceListener>& listener) {
    const std::lock_guard lock(mutex_);
    listener_ = listener;
}

void OutputTap::notifySpace() {
    std::weak_ptr<DataProcessing::Core::ISpaceListener> listener;
    {
        const std::lock_guard lock(mutex_);
        listener = listener_;
    }
    if (const auto target = listener.lock()) {
        target->onSpaceAvailable();
    }
}

OutputReport OutputTap::report() const {
    const std::lock_guard lock(mutex_);
    OutputReport report = report_;
    const std::chrono::duration<double> span = last_ - first_;
    if (report.frames > 1 && span.count() > 0) {
        report.rate = static_cast<double>(report.frames - 1) / span.count();
    }
    return report;
}

}  // namespace Orlix::Host
