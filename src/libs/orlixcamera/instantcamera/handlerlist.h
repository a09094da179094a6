// The handlers of one kind that are registered with a camera, and the rules for calling them: a
// copy of the list is called with no lock held, an owned handler ends after its last call, and one
// that isn't owned is not called once it has been taken off.
#pragma once

#include <algorithm>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "orlixcamera/cameraenums.h"

namespace Orlix::Detail {

// One registration. Whoever calls the handler holds a reference.
template <class Handler>
class Registration {
public:
    using Destroy = std::function<void(Handler&)>;

    // The handler stays its owner's.
    explicit Registration(Handler& handler) : handler_(handler) {}
    virtual ~Registration() {
        if (destroy_) {
            destroy_(handler_);
        }
    }
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;

    // From now on the handler ends together with this; an empty `destroy` leaves it to its owner.
    void Own(Destroy destroy) noexcept { destroy_ = std::move(destroy); }

    [[nodiscard]] Handler& GetHandler() const noexcept { return handler_; }

    // Calls unless the handler was taken off.
    template <class Function>
    void Call(Function&& function) {
        {
            const std::scoped_lock lock(mutex_);
            if (removed_) {
                return;
            }
            callers_.push_back(std::this_thread::get_id());
        }
        struct Leave {
            Registration& self;
            ~Leave() {
                const std::scoped_lock lock(self.mutex_);
                auto& callers = self.callers_;
                callers.erase(
                    std::find(callers.begin(), callers.end(), std::this_thread::get_id()));
                self.callEnded_.notify_all();
            }
        };
        const Leave leave{*this};
        std::forward<Function>(function)(handler_);
    }

    // No call is begun any more. For a handler that isn't owned, waits for those of other threads.
    void Remove() {
        std::unique_lock lock(mutex_);
        removed_ = true;
        if (!destroy_) {
            callEnded_.wait(lock, [this] {
                return std::all_of(callers_.begin(), callers_.end(), [](std::thread::id caller) {
                    return caller == std::this_thread::get_id();
                });
            });
        }
    }

private:
    Handler& handler_;
    Destroy destroy_;  // set before any other thread knows of this
    std::mutex mutex_;
    std::condition_variable callEnded_;
    std::vector<std::thread::id> callers_;  // keeps its memory, so that a call allocates nothing
    bool removed_ = false;
};

// Any thread may call. `Item` is a Registration or derived from one.
template <class Item>
class HandlerList {
public:
    using Items = std::vector<std::shared_ptr<Item>>;

    HandlerList() : items_(std::make_shared<const Items>()) {}
    ~HandlerList() = default;
    HandlerList(const HandlerList&) = delete;
    HandlerList& operator=(const HandlerList&) = delete;

    [[nodiscard]] std::shared_ptr<const Items> Get() const {
        const std::scoped_lock lock(mutex_);
        return items_;
    }

    // Returns those that were replaced, for the caller to let go of with no lock held. The item
    // owns its handler once it is on the list: when this throws, the handler is still its owner's.
    [[nodiscard]] Items Add(const std::shared_ptr<Item>& item, typename Item::Destroy destroy,
                            bool replaceAll) {
        const std::scoped_lock lock(mutex_);
        Items next = replaceAll ? Items() : *items_;
        Items replaced = replaceAll ? *items_ : Items();
        next.push_back(item);
        items_ = std::make_shared<const Items>(std::move(next));
        item->Own(std::move(destroy));
        return replaced;
    }

    // Takes off the first that fits; null if none does.
    template <class Predicate>
    [[nodiscard]] std::shared_ptr<Item> Take(Predicate&& fits) {
        const std::scoped_lock lock(mutex_);
        Items next = *items_;
        const auto found =
            std::find_if(next.begin(), next.end(), [&](const auto& item) { return fits(*item); });
        if (found == next.end()) {
            return nullptr;
        }
        std::shared_ptr<Item> item = *found;
        next.erase(found);
        items_ = std::make_shared<const Items>(std::move(next));
        return item;
    }

    // The list is empty afterwards.
    [[nodiscard]] std::shared_ptr<const Items> TakeAll() {
        const std::scoped_lock lock(mutex_);
        return std::exchange(items_, std::make_shared<const Items>());
    }

private:
    mutable std::mutex mutex_;
    std::shared_ptr<const Items> items_;
};

}  // namespace Orlix::Detail
