#include "orlixcamera/conversion/parallelstrips.h"

#include <gtest/gtest.h>
#include <tbb/task_arena.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <memory>
#include <thread>

namespace Orlix::Test {
namespace {

TEST(ParallelStrips, EachStripRunsOnceAndIsSeenByTheCaller) {
    std::array<int, 50> runs{};
    RunStrips(runs.size(), [&](std::size_t strip) { ++runs[strip]; });
    for (const int count : runs) {
        EXPECT_EQ(count, 1);
    }
}

struct Encounter {
    std::atomic<bool> begunElsewhere{false};
    std::atomic<bool> foreignRan{false};
    std::atomic<bool> foreignRanInWait{false};
};

thread_local bool waitsForStrips = false;

// Foreign work for the pool, of which a node's job is an example.
void EnqueueForeignWork(tbb::task_arena& arena, const std::shared_ptr<Encounter>& encounter) {
    arena.enqueue([encounter] {
        encounter->foreignRanInWait = waitsForStrips;
        encounter->foreignRan = true;
    });
}

// A node holds its lock while it converts: a thread that took up another node's work while it waits
// for its strips could wait for that lock itself. One strip runs on another thread and offers
// foreign work; the caller has nothing to do but to wait.
TEST(ParallelStrips, AThreadThatWaitsForItsStripsTakesUpNoOtherWork) {
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "the thread library's hand-over of the foreign work isn't instrumented";
#endif
    tbb::task_arena arena(2);
    const auto encounter = std::make_shared<Encounter>();
    arena.execute([&] {
        const std::thread::id caller = std::this_thread::get_id();
        waitsForStrips = true;
        RunStrips(2, [&](std::size_t) {
            if (std::this_thread::get_id() == caller) {
                while (!encounter->begunElsewhere) {
                    std::this_thread::yield();
                }
                return;
            }
            EnqueueForeignWork(arena, encounter);
            encounter->begunElsewhere = true;
            // Time enough for the caller to be tempted.
            for (int turn = 0; turn < 20000 && !encounter->foreignRan; ++turn) {
                std::this_thread::yield();
            }
        });
        waitsForStrips = false;
    });
    while (!encounter->foreignRan) {
        std::this_thread::yield();
    }
    EXPECT_FALSE(encounter->foreignRanInWait);
}

}  // namespace
}  // namespace Orlix::Test
