// Who serves what, seen by items of the test on the process-wide workers.
#include "orlixdataprocessingcore/threading/scheduler.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <latch>

#include "orlixdataprocessingcore/threading/activity.h"

namespace Orlix::DataProcessing::Threading {
namespace {

using Clock = std::chrono::steady_clock;
using Event = std::atomic<bool>;

// As a turn of short jobs: at work, and not asleep, for shorter than the monitor's interval.
bool isSetInATurn(const Event& event) {
    const auto end = Clock::now() + std::chrono::microseconds(300);
    while (!event && Clock::now() < end) {
    }
    return event;
}

class LightItem final : public IReadyItem {
public:
    LightItem(Event& served, Activity& activity) : served_(served), activity_(activity) {}
    Turn serve() noexcept override {
        served_ = true;
        return Turn::Done;
    }
    Weight weight() const noexcept override { return Weight::Light; }
    Activity* activity() const noexcept override { return &activity_; }

private:
    Event& served_;
    Activity& activity_;
};

// Two of them hand one line of turns to each other, so that its worker comes to no other item.
class ItemOfALine final : public IReadyItem {
public:
    ItemOfALine(Event& event, unsigned int& turns, std::latch& begun, Activity& activity)
        : event_(event), turns_(turns), begun_(begun), activity_(activity) {}

    void lead(ItemOfALine& next) { next_ = &next; }
    bool hasSeenTheEvent = false;

    Turn serve() noexcept override {
        // A worker that is in its first turn when the monitor looks is taken for stuck.
        if (turns_ == 1) {
            begun_.count_down();
        }
        const bool isSet = turns_ != 0 && isSetInATurn(event_);
        hasSeenTheEvent = hasSeenTheEvent || isSet;
        if (++turns_ < turnsOfALine && !isSet) {
            Scheduler::instance().schedule(*next_, this);
        }
        return Turn::Done;
    }
    Weight weight() const noexcept override { return Weight::Short; }
    Activity* activity() const noexcept override { return &activity_; }

private:
    static constexpr unsigned int turnsOfALine = 31;

    Event& event_;
    unsigned int& turns_;
    std::latch& begun_;
    Activity& activity_;
    ItemOfALine* next_ = nullptr;
};

bool isLightItemServedBesideALine() {
    Activity activity;
    Event served{false};
    unsigned int turns = 0;
    std::latch begun(1);
    ItemOfALine first(served, turns, begun, activity);
    ItemOfALine second(served, turns, begun, activity);
    first.lead(second);
    second.lead(first);
    LightItem light(served, activity);
    Scheduler::instance().schedule(first);
    begun.wait();
    Scheduler::instance().schedule(light);
    activity.waitUntilIdle();
    return first.hasSeenTheEvent || second.hasSeenTheEvent;
}

// A line of turns takes as long as four looks of the monitor; on a busy machine a look may come
// late now and then.
TEST(Scheduler, ALightItemDoesNotWaitForTheEndOfALongLine) {
    bool isServed = false;
    for (int attempt = 0; attempt < 100 && !isServed; ++attempt) {
        isServed = isLightItemServedBesideALine();
    }
    EXPECT_TRUE(isServed);
}

}  // namespace
}  // namespace Orlix::DataProcessing::Threading
