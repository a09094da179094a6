#include <gtest/gtest.h>

#include <optional>
#include <thread>

#include "orlixdataprocessingcore/utils/signal.h"
#include "orlixdataprocessingcore/utils/slowslot.h"

namespace {

using namespace Orlix::DataProcessing::Utils;
using Orlix::Test::SlowSlot;

TEST(ScopedConnection, DisconnectsAtItsEnd) {
    Signal<void()> signal;
    int calls = 0;
    {
        ScopedConnection scoped;
        scoped.set(signal.connect([&] { ++calls; }), false);
        signal();
    }
    signal();
    EXPECT_EQ(calls, 1);
    EXPECT_TRUE(signal.empty());
}

TEST(ScopedConnection, SettingAnotherConnectionEndsTheFirst) {
    Signal<void()> signal;
    std::string calls;
    ScopedConnection scoped;
    scoped.set(signal.connect([&] { calls += 'a'; }), true);
    scoped.set(signal.connect([&] { calls += 'b'; }), true);
    signal();
    EXPECT_EQ(calls, "b");
    ScopedConnection other(std::move(scoped));
    EXPECT_EQ(signal.size(), 1U);
    other = ScopedConnection();
    EXPECT_TRUE(signal.empty());
}

TEST(ScopedConnection, WithTrueItsEndWaitsForRunningCalls) {
    Signal<void()> signal;
    SlowSlot slot;
    std::optional<ScopedConnection> scoped(std::in_place);
    scoped->set(signal.connect([&] { slot(); }), true);
    std::thread emitter([&] { signal(); });
    slot.waitUntilEntered();
    std::thread releaser([&] { slot.release(); });
    scoped.reset();
    EXPECT_TRUE(slot.isDone);
    emitter.join();
    releaser.join();
}

TEST(ScopedConnection, EndedByItsOwnSlotItDoesNotWait) {
    Signal<void()> signal;
    std::optional<ScopedConnection> scoped(std::in_place);
    int calls = 0;
    scoped->set(signal.connect([&] {
        ++calls;
        scoped.reset();
    }),
                true);
    signal();
    signal();
    EXPECT_EQ(calls, 1);
}

}  // namespace
