#include "orlixcamera/emulated/notices.h"

#include <utility>

namespace Orlix::Emulated {

class Notices::Opening final : public Holder {
public:
    Opening(std::shared_ptr<Notices> notices, std::uint64_t number)
        : notices_(std::move(notices)), number_(number) {}

    bool OnEvent(const Event& event) noexcept override { return notices_->post(number_, event); }
    void OnLost() noexcept override { notices_->postLoss(number_); }

private:
    const std::shared_ptr<Notices> notices_;
    const std::uint64_t number_;
};

void Notices::SetSink(Transport::IDeviceSink* sink) {
    std::unique_lock lock(mutex_);
    sink_ = sink;
    eventCall_.AwaitEnd(lock);
    lossCall_.AwaitEnd(lock);
}

std::shared_ptr<Holder> Notices::BeginOpening() {
    const std::scoped_lock lock(mutex_);
    opening_ = ++lastOpening_;
    count_ = 0;
    return std::make_shared<Opening>(shared_from_this(), opening_);
}

void Notices::EndOpening() noexcept {
    const std::scoped_lock lock(mutex_);
    opening_ = 0;
    count_ = 0;
    changed_.notify_all();
}

void Notices::Finish() noexcept {
    EndOpening();
    SetSink(nullptr);
    std::unique_lock lock(mutex_);
    changed_.wait(
        lock, [this] { return !eventThreadRuns_ || eventThread_ == std::this_thread::get_id(); });
}

bool Notices::post(std::uint64_t opening, const Event& event) {
    const std::scoped_lock lock(mutex_);
    if (sink_ == nullptr || opening != opening_) {
        return true;  // nobody misses it
    }
    if (count_ == events_.size()) {
        return false;
    }
    events_[(first_ + count_) % events_.size()] = event;
    ++count_;
    if (!eventThreadRuns_) {
        eventThreadRuns_ = true;
        std::thread([self = shared_from_this()] { self->deliverEvents(); }).detach();
    }
    changed_.notify_all();
    return true;
}

void Notices::postLoss(std::uint64_t opening) {
    std::thread([self = shared_from_this(), opening] { self->deliverLoss(opening); }).detach();
}

void Notices::deliverEvents() noexcept {
    std::unique_lock lock(mutex_);
    eventThread_ = std::this_thread::get_id();
    while (true) {
        changed_.wait(lock, [this] { return opening_ == 0 || count_ > 0; });
        if (opening_ == 0) {
            break;
        }
        const Event event = events_[first_];
        first_ = (first_ + 1) % events_.size();
        --count_;
        Transport::IDeviceSink* const sink = sink_;
        if (sink == nullptr) {
            continue;
        }
        eventCall_.Make(lock, [&] {
            const EventBytes bytes = EncodeEvent(event);
            sink->OnEvent({EventIdOf(event.kind), event.timestamp, bytes.data.data(), bytes.size});
        });
    }
    eventThread_ = std::thread::id();
    eventThreadRuns_ = false;
    changed_.notify_all();
}

void Notices::deliverLoss(std::uint64_t opening) noexcept {
    std::unique_lock lock(mutex_);
    // A loss soon after that of the opening before waits for its turn.
    lossCall_.AwaitTurn(lock);
    Transport::IDeviceSink* const sink = sink_;
    if (sink != nullptr && opening == opening_) {
        lossCall_.Make(lock, [sink] { sink->OnLost(); });
    }
}

}  // namespace Orlix::Emulated
