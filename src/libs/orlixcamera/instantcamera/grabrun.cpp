#include "orlixcamera/instantcamera/grabrun.h"

#include <algorithm>
#include <utility>

namespace Orlix::Detail {

using std::chrono::milliseconds;
using Transport::FrameFate;

namespace {

// How long a wait that nobody limits lasts before it begins anew; it is ended when grabbing is.
constexpr milliseconds collectorWait{1000};

milliseconds until(std::chrono::steady_clock::time_point deadline) {
    const auto left = std::chrono::ceil<milliseconds>(deadline - std::chrono::steady_clock::now());
    return std::max(left, milliseconds(0));
}

}  // namespace

GrabRun::GrabRun(GrabPlan plan, std::shared_ptr<StreamGrabber> grabber)
    : plan_(plan), grabber_(std::move(grabber)), latest_(collectsLatest() ? plan.queueSize : 0) {}

GrabRun::~GrabRun() {
    Forbid();
    if (collector_.joinable()) {
        collector_.join();
    }
}

bool GrabRun::collectsLatest() const noexcept {
    return plan_.strategy == GrabStrategy_LatestImageOnly ||
           plan_.strategy == GrabStrategy_LatestImages;
}

void GrabRun::Start(std::shared_ptr<BufferSet> buffers, const ExpectedFrames& frames) {
    buffers_ = std::move(buffers);
    const bool onDemand = plan_.strategy == GrabStrategy_UpcomingImage;
    number_ =
        grabber_->Start(buffers_, onDemand ? Queueing::OnDemand : Queueing::Automatic, frames);
    if (collectsLatest()) {
        collector_ = std::thread([this] { collect(); });
    }
    const std::scoped_lock lock(mutex_);
    started_ = true;
    collected_.notify_all();
}

void GrabRun::Forbid() noexcept {
    const std::scoped_lock lock(mutex_);
    allowed_ = false;
    collected_.notify_all();
}

void GrabRun::Stop() noexcept {
    Forbid();
    grabber_->Stop();
    if (collector_.joinable()) {
        collector_.join();
    }
    dropCollected();
}

bool GrabRun::IsAllowed() const {
    const std::scoped_lock lock(mutex_);
    return allowed_;
}

std::shared_ptr<GrabRun::ConfigurationRegistration> GrabRun::NextToTell(
    Step step, const HandlerList<ConfigurationRegistration>& handlers) {
    const std::scoped_lock lock(mutex_);
    if (silent_ || step < step_ || (step == Step::Error && !allowed_)) {
        return nullptr;
    }
    if (step > step_ || toTell_ == nullptr) {
        step_ = step;
        toTell_ = handlers.Get();
        told_ = 0;
    }
    return told_ < toTell_->size() ? (*toTell_)[told_++] : nullptr;
}

void GrabRun::SetStartTold() noexcept {
    const std::scoped_lock lock(mutex_);
    startTold_ = true;
    collected_.notify_all();
}

void GrabRun::WaitUntilStartTold() {
    std::unique_lock lock(mutex_);
    collected_.wait(lock, [this] { return startTold_ || !allowed_; });
}

void GrabRun::Silence() noexcept {
    const std::scoped_lock lock(mutex_);
    silent_ = true;
}

bool GrabRun::IsComplete() const {
    const std::scoped_lock lock(mutex_);
    return plan_.maxImages != 0 && handedOut_ >= plan_.maxImages;
}

CGrabResultPtr GrabRun::TakeFrame(milliseconds timeOut) {
    const Clock::time_point deadline = Clock::now() + timeOut;
    if (!waitForStart(deadline)) {
        return {};
    }
    std::size_t skipped = 0;
    FrameSlot* slot = nullptr;
    if (collectsLatest()) {
        slot = takeLatest(deadline, skipped);
    } else if (plan_.strategy == GrabStrategy_UpcomingImage) {
        slot = takeUpcoming(deadline);
    } else {
        slot = takeWanted(deadline);
    }
    if (slot == nullptr) {
        return {};
    }
    FrameNumbers numbers{number_, 0, skipped};
    {
        const std::scoped_lock lock(mutex_);
        const bool tooMany = plan_.maxImages != 0 && handedOut_ >= plan_.maxImages;
        if (!allowed_ || tooMany) {
            count(FrameFate::Aborted);
            buffers_->Return(*slot);
            return {};
        }
        numbers.imageNumber = ++handedOut_;
        if (plan_.loop == GrabLoop_ProvidedByUser) {
            count(slot->buffer.fate);
        }
    }
    return slot->HandOut(buffers_, numbers);
}

// False if it doesn't come to it.
bool GrabRun::waitForStart(Clock::time_point deadline) {
    std::unique_lock lock(mutex_);
    collected_.wait_until(lock, deadline, [this] { return started_ || !allowed_; });
    return started_;
}

// In one step, so that no end of the run comes between the answer and the count.
bool GrabRun::CountAndAllow(const CGrabResultData& frame) {
    const std::scoped_lock lock(mutex_);
    count(allowed_ ? FrameSlot::Of(frame).buffer.fate : FrameFate::Aborted);
    return allowed_;
}

// The next frame that is handed over at all.
FrameSlot* GrabRun::takeWanted(Clock::time_point deadline) {
    for (;;) {
        FrameSlot* const slot = grabber_->Take(number_, until(deadline));
        if (slot == nullptr || plan_.deliverFailed || slot->buffer.fate == FrameFate::Delivered) {
            return slot;
        }
        count(slot->buffer.fate);
        buffers_->Return(*slot);
    }
}

// What was filled before it was asked for is too old; then one buffer goes to the stream.
FrameSlot* GrabRun::takeUpcoming(Clock::time_point deadline) {
    while (FrameSlot* const old = grabber_->Take(number_, milliseconds(0))) {
        skip(*old);
        const std::scoped_lock lock(mutex_);
        upcomingQueued_ = false;
    }
    for (;;) {
        {
            const std::scoped_lock lock(mutex_);
            if (!std::exchange(upcomingQueued_, true)) {
                buffers_->QueueOne();
            }
        }
        FrameSlot* const slot = grabber_->Take(number_, until(deadline));
        if (slot == nullptr) {
            return nullptr;
        }
        {
            const std::scoped_lock lock(mutex_);
            upcomingQueued_ = false;
        }
        if (plan_.deliverFailed || slot->buffer.fate == FrameFate::Delivered) {
            return slot;
        }
        count(slot->buffer.fate);
        buffers_->Return(*slot);
    }
}

FrameSlot* GrabRun::takeLatest(Clock::time_point deadline, std::size_t& skipped) {
    std::unique_lock lock(mutex_);
    collected_.wait_until(lock, deadline,
                          [this] { return waiting_ != 0 || failure_ || !allowed_; });
    if (!allowed_ || waiting_ == 0) {
        if (allowed_ && failure_) {
            std::rethrow_exception(failure_);
        }
        return nullptr;
    }
    skipped = std::exchange(skipped_, 0);
    return popOldest();
}

void GrabRun::collect() noexcept {
    try {
        while (IsAllowed()) {
            if (FrameSlot* const slot = takeWanted(Clock::now() + collectorWait)) {
                put(*slot);
            }
        }
    } catch (...) {
        const std::scoped_lock lock(mutex_);
        failure_ = std::current_exception();
        collected_.notify_all();
    }
}

void GrabRun::put(FrameSlot& slot) {
    FrameSlot* oldest = nullptr;
    {
        const std::scoped_lock lock(mutex_);
        if (waiting_ == latest_.size()) {
            oldest = popOldest();
            ++skipped_;
        }
        latest_[(oldest_ + waiting_) % latest_.size()] = &slot;
        ++waiting_;
        collected_.notify_one();
    }
    if (oldest != nullptr) {
        skip(*oldest);
    }
}

// With mutex_ held, and not for an empty ring.
FrameSlot* GrabRun::popOldest() noexcept {
    FrameSlot* const slot = latest_[oldest_];
    oldest_ = (oldest_ + 1) % latest_.size();
    --waiting_;
    return slot;
}

void GrabRun::skip(FrameSlot& slot) {
    grabber_->GetCounters().CountSkipped(number_);
    buffers_->Return(slot);
}

void GrabRun::dropCollected() noexcept {
    const std::scoped_lock lock(mutex_);
    while (waiting_ != 0) {
        buffers_->Return(*popOldest());
    }
}

}  // namespace Orlix::Detail
