#include "host/outputtap.h"

#include "host/valuereader.h"
#include "orlixdataprocessingcore/core/graphupdate.h"

namespace Orlix::Host {

OutputTap::OutputTap(std::size_t index, const OpenOutput& output, std::uint64_t limit,
                     std::shared_ptr<RunState> state, std::shared_ptr<OutputWriter> writer)
    : index_(index), limit_(limit), state_(std::move(state)), writer_(std::move(writer)) {
    report_.node = output.node;
    report_.pin = output.pin;
}

void OutputTap::put(const std::shared_ptr<DataProcessing::Core::IGraphUpdate>& update,
                    const DataProcessing::Utils::Variant& value) {
    const std::uint64_t updateNumber = update != nullptr ? update->getSequenceNumber() : 0;
    const std::uint64_t number = count(updateNumber, errorOf(value) != nullptr);
    if (number == 0) {
        return;
    }
    state_->noteValue();
    if (writer_ != nullptr) {
        writer_->add({index_, number, updateNumber, value});
    }
    if (number == limit_) {
        state_->requestStop();
    }
}

std::uint64_t OutputTap::count(std::uint64_t update, bool hasError) {
    const std::lock_guard lock(mutex_);
    // A source may hand updates over out of order: an older one can come after the last that
    // counts.
    const bool isComplete = limit_ != 0 && report_.frames >= limit_;
    if (isComplete || !state_->takes(update)) {
        return 0;
    }
    last_ = RunClock::now();
    if (report_.frames == 0) {
        first_ = last_;
    }
    ++report_.frames;
    report_.errors += hasError ? 1 : 0;
    if (report_.frames == limit_) {
        // What the graph still has under way is finished, but is not part of this run's result.
        state_->setLastUpdate(update);
    }
    return report_.frames;
}

void OutputTap::skip(const std::shared_ptr<DataProcessing::Core::IGraphUpdate>&) {}

bool OutputTap::hasSpace() const {
    return writer_ == nullptr || writer_->hasSpace();
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
