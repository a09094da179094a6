#include "orlixcamera/instantcamera/eventdelivery.h"

#include <utility>

#include "genapi/callback.h"
#include "orlixcamera/instantcamera/messages.h"
#include "orlixcamera/instantcamera/threadpriority.h"

namespace Orlix::Detail {

namespace {

// Set while this thread gives a message to a map: a change of a node at another time, or on
// another thread, is no event.
thread_local bool delivering = false;

}  // namespace

bool EventRegistration::Bind(std::shared_ptr<DeviceMaps> maps) {
    Unbind();
    GenApi::INode* const node = maps->GetDevice().GetNode(nodeName);
    if (node == nullptr) {
        return false;
    }
    auto changed = std::make_shared<std::atomic<bool>>(false);
    const auto note = [changed](GenApi::INode*) {
        if (delivering) {
            *changed = true;
        }
    };
    const std::intptr_t callback = GenApi::Register(node, note, GenApi::cbPostOutsideLock);
    {
        const std::scoped_lock lock(mutex_);
        if (node_ == nullptr) {
            maps_ = std::move(maps);
            node_ = node;
            callback_ = callback;
            changed_ = std::move(changed);
            return true;
        }
    }
    // Another thread that opens or registers was quicker.
    GenApi::Deregister(node, callback);
    return true;
}

void EventRegistration::Unbind() noexcept {
    std::shared_ptr<DeviceMaps> maps;
    GenApi::INode* node = nullptr;
    std::intptr_t callback = 0;
    {
        const std::scoped_lock lock(mutex_);
        maps = std::move(maps_);
        node = std::exchange(node_, nullptr);
        callback = callback_;
        changed_.reset();
    }
    if (node != nullptr) {
        GenApi::Deregister(node, callback);
    }
}

GenApi::INode* EventRegistration::TakeChanged() {
    const std::scoped_lock lock(mutex_);
    return changed_ != nullptr && changed_->exchange(false) ? node_ : nullptr;
}

EventDelivery::EventDelivery(EventRegistrations& handlers, StreamCounters& counters,
                             CallHandler callHandler)
    : handlers_(handlers), counters_(counters), callHandler_(std::move(callHandler)) {}

EventDelivery::~EventDelivery() {
    Quit();
}

void EventDelivery::Quit() {
    {
        const std::scoped_lock lock(mutex_);
        quit_ = true;
        changed_.notify_all();
    }
    if (thread_.joinable()) {
        thread_.join();
    }
}

void EventDelivery::Begin(std::shared_ptr<DeviceMaps> maps, int priority) {
    const std::scoped_lock lock(mutex_);
    ring_.resize(queueSize);
    if (!thread_.joinable()) {
        thread_ = std::thread([this, priority] { run(priority); });
    }
    maps_ = std::move(maps);
    ++opening_;
    count_ = 0;
}

void EventDelivery::End() noexcept {
    std::shared_ptr<DeviceMaps> maps;  // ends, if it does, with the lock released
    const std::scoped_lock lock(mutex_);
    maps = std::move(maps_);
    count_ = 0;
}

void EventDelivery::Post(const Transport::EventMessage& message) noexcept {
    bool taken = false;
    try {
        const std::scoped_lock lock(mutex_);
        const std::uint64_t number = ++lastNumber_;
        if (maps_ == nullptr) {
            return;
        }
        if (count_ < ring_.size()) {
            Message& place = ring_[(first_ + count_) % ring_.size()];
            place.number = number;
            place.eventId = message.eventId;
            place.data.assign(message.data, message.data + message.size);
            ++count_;
            taken = true;
            changed_.notify_one();
        }
    } catch (...) {
        Tell("An event can't be kept: " + TextOfCurrentException());
    }
    if (!taken) {
        counters_.CountEventLost();
    }
}

bool EventDelivery::take(Message& message, std::shared_ptr<DeviceMaps>& maps,
                         std::uint64_t& opening) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return count_ != 0 || quit_; });
    if (quit_) {
        return false;
    }
    std::swap(message, ring_[first_]);
    first_ = (first_ + 1) % ring_.size();
    --count_;
    maps = maps_;
    opening = opening_;
    return true;
}

void EventDelivery::run(int priority) {
    SetThreadPriority(priority, "event");
    Message message;
    std::shared_ptr<DeviceMaps> maps;
    std::uint64_t opening = 0;
    while (take(message, maps, opening)) {
        if (maps != nullptr) {
            CallGuarded("the delivery of a camera event",
                        [&] { deliver(message, *maps, opening); });
        }
        maps.reset();
    }
}

bool EventDelivery::isCurrent(std::uint64_t opening) const {
    const std::scoped_lock lock(mutex_);
    return maps_ != nullptr && opening_ == opening && !quit_;
}

void EventDelivery::deliver(const Message& message, DeviceMaps& maps, std::uint64_t opening) {
    {
        struct Delivering {
            Delivering() { delivering = true; }
            ~Delivering() { delivering = false; }
        };
        const Delivering mark;
        maps.GetEventAdapter().DeliverMessage(message.eventId, message.data.data(),
                                              static_cast<std::int64_t>(message.data.size()));
    }
    if (!isCurrent(opening)) {
        // Closed meanwhile; its nodes must not show a message that came too late.
        maps.GetEventAdapter().ForgetMessages();
    }
    handledNumber_ = message.number;
    const auto handlers = handlers_.Get();
    for (const auto& handler : *handlers) {
        // Taken in any case, so that no later message is held for this one.
        GenApi::INode* const node = handler->TakeChanged();
        if (node != nullptr && isCurrent(opening)) {
            callHandler_(*handler, node);
        }
    }
}

}  // namespace Orlix::Detail
