#include "orlixdataprocessingcore/threading/activity.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

namespace Orlix::DataProcessing::Threading {
namespace {

TEST(Activity, IsIdleWhenAllHaveLeft) {
    Activity activity;
    EXPECT_TRUE(activity.isIdle());
    activity.enter();
    activity.enter();
    activity.leave();
    EXPECT_FALSE(activity.isIdle());
    activity.leave();
    EXPECT_TRUE(activity.isIdle());
    activity.waitUntilIdle();
}

TEST(Activity, WhoeverHasWaitedMayDestroyIt) {
    for (int round = 0; round < 200; ++round) {
        auto activity = std::make_unique<Activity>();
        std::atomic<int> left{0};
        std::vector<std::thread> workers;
        for (int index = 0; index < 3; ++index) {
            activity->enter();
            workers.emplace_back([&left, &activity = *activity] {
                ++left;
                activity.leave();
            });
        }
        activity->waitUntilIdle();
        EXPECT_EQ(left, 3);
        activity.reset();
        for (std::thread& worker : workers) {
            worker.join();
        }
    }
}

}  // namespace
}  // namespace Orlix::DataProcessing::Threading
