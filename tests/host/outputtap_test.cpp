#include "host/outputtap.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <thread>
#include <vector>

#include "orlixdataprocessingcore/core/errors.h"
#include "orlixdataprocessingcore/core/graphupdate.h"
#include "orlixdataprocessingcore/core/integer.h"
#include "orlixdataprocessingcore/core/services.h"

namespace Orlix::Host {
namespace {

using namespace DataProcessing::Core;
using DataProcessing::Utils::Variant;

class Listener : public ISpaceListener {
public:
    void onSpaceAvailable() override { ++calls; }
    int calls = 0;
};

class OutputTapTest : public testing::Test {
protected:
    [[nodiscard]] static std::shared_ptr<IGraphUpdate> nextUpdate() {
        return getDefaultUpdateFactory()->createUpdate(nullptr, nullptr);
    }

    std::shared_ptr<RunState> state_ = std::make_shared<RunState>();
    OutputTap tap_{0, {"Node", "Pin", false}, 2, state_, nullptr};
    OutputTap other_{1, {"Node", "Other", false}, 0, state_, nullptr};
    Variant good_{Integer(1)};
    Variant bad_{Integer(std::static_pointer_cast<IError>(
        std::make_shared<InvalidValueError>("Bad.", DateTime::now())))};
};

TEST_F(OutputTapTest, ValueWithAnErrorCountsAsFrameAndAsError) {
    tap_.put(nextUpdate(), bad_);
    EXPECT_EQ(tap_.report().node, "Node");
    EXPECT_EQ(tap_.report().pin, "Pin");
    EXPECT_EQ(tap_.report().frames, 1U);
    EXPECT_EQ(tap_.report().errors, 1U);
    EXPECT_EQ(tap_.report().rate, 0);
}

TEST_F(OutputTapTest, LimitEndsTheRun) {
    tap_.put(nextUpdate(), good_);
    EXPECT_FALSE(state_->waitUntil(RunClock::now()));
    tap_.put(nextUpdate(), good_);
    EXPECT_TRUE(state_->waitUntil(RunClock::now()));
    EXPECT_EQ(state_->failure(), "");
}

TEST_F(OutputTapTest, UpdatesBehindTheLimitBelongNoLongerToTheRun) {
    const auto first = nextUpdate();
    const auto second = nextUpdate();
    const auto third = nextUpdate();
    tap_.put(first, good_);
    tap_.put(second, good_);
    tap_.put(third, good_);
    EXPECT_EQ(tap_.report().frames, 2U);
    other_.put(second, good_);
    other_.put(third, good_);
    EXPECT_EQ(other_.report().frames, 1U);
}

// The other pin is ahead of the counted one: whether its value belongs to the run shows later.
TEST_F(OutputTapTest, ValueAheadOfTheCountedPinWaitsForIt) {
    const auto first = nextUpdate();
    const auto second = nextUpdate();
    const auto third = nextUpdate();
    OutputTap counted{0, {"Node", "Counted", false}, 2, state_, nullptr, [&] { other_.release(); }};
    other_.put(first, good_);
    other_.put(second, bad_);
    other_.put(third, bad_);
    EXPECT_EQ(other_.report().frames, 0U);
    counted.put(first, good_);
    EXPECT_EQ(other_.report().frames, 1U);
    counted.put(second, good_);
    EXPECT_EQ(other_.report().frames, 2U);
    EXPECT_EQ(other_.report().errors, 1U);
    other_.releaseAll();
    EXPECT_EQ(other_.report().frames, 2U) << "the third is behind the end";
}

// By the times at which its values came, not by those at which they were let go.
TEST_F(OutputTapTest, RateIsThatOfTheSource) {
    other_.put(nextUpdate(), good_);
    const auto behindFirst = RunClock::now();
    for (int i = 0; i < 1000; ++i) {
        other_.put(nextUpdate(), good_);
    }
    const std::chrono::duration<double> atLeast = RunClock::now() - behindFirst;
    other_.put(nextUpdate(), good_);
    other_.releaseAll();
    EXPECT_EQ(other_.report().frames, 1002U);
    EXPECT_LE(other_.report().rate, 1001 / atLeast.count());
}

TEST_F(OutputTapTest, UpdateThatTheCountedPinLeavesOutIsPassed) {
    OutputTap counted{0, {"Node", "Counted", false}, 2, state_, nullptr, [&] { other_.release(); }};
    const auto update = nextUpdate();
    other_.put(update, good_);
    counted.skip(update);
    EXPECT_EQ(other_.report().frames, 1U);
}

TEST_F(OutputTapTest, WhatWaitsWhenARunEndsBeforeItsLimitBelongsToIt) {
    other_.put(nextUpdate(), good_);
    EXPECT_EQ(other_.report().frames, 0U);
    other_.releaseAll();
    EXPECT_EQ(other_.report().frames, 1U);
}

// Its updates can't be compared with those of the counted pin, and a camera needs its buffers.
TEST_F(OutputTapTest, ValuesOfAnotherSourceCountAtOnceUpToTheEnd) {
    OutputTap images{1, {"Other", "Image", true}, 0, state_, nullptr, {}, TapSource::Another};
    for (int i = 0; i < 100; ++i) {
        images.put(nextUpdate(), good_);
        EXPECT_TRUE(images.hasSpace());
    }
    EXPECT_EQ(images.report().frames, 100U);
    tap_.put(nextUpdate(), good_);
    tap_.put(nextUpdate(), good_);
    images.put(nextUpdate(), good_);
    EXPECT_EQ(images.report().frames, 100U);
}

TEST_F(OutputTapTest, ImagesOfTheCountedSourceHoldItBackUntilTheyArePassed) {
    OutputTap images{1, {"Node", "Image", true}, 0, state_, nullptr};
    OutputTap counted{0,       {"Node", "Counted", false}, 20, state_,
                      nullptr, [&] { images.release(); }};
    const auto listener = std::make_shared<Listener>();
    images.setSpaceListener(listener);
    std::vector<std::shared_ptr<IGraphUpdate>> updates;
    for (int i = 0; i < 9; ++i) {
        EXPECT_EQ(images.hasSpace(), i < 8);
        updates.push_back(nextUpdate());
        images.put(updates.back(), good_);
    }
    EXPECT_EQ(images.report().frames, 0U);
    counted.put(updates[0], good_);
    EXPECT_FALSE(images.hasSpace());
    EXPECT_EQ(listener->calls, 0);
    counted.skip(updates[1]);
    EXPECT_TRUE(images.hasSpace());
    EXPECT_EQ(listener->calls, 1);
    EXPECT_EQ(images.report().frames, 2U);
}

// The counted pin has passed the values and has not come to telling the tap.
TEST_F(OutputTapTest, ValueThatFindsTheOthersPassedTellsOfTheSpace) {
    OutputTap images{1, {"Node", "Image", true}, 0, state_, nullptr};
    const auto listener = std::make_shared<Listener>();
    images.setSpaceListener(listener);
    while (images.hasSpace()) {
        images.put(nextUpdate(), good_);
    }
    const auto last = nextUpdate();
    state_->notePassed(last->getSequenceNumber());
    images.put(last, good_);
    EXPECT_TRUE(images.hasSpace());
    EXPECT_EQ(listener->calls, 1);
    images.release();
    EXPECT_EQ(listener->calls, 1);
}

TEST_F(OutputTapTest, ClosedTapTakesNothingAndHoldsNobodyBack) {
    OutputTap images{1, {"Node", "Image", true}, 0, state_, nullptr};
    for (int i = 0; i < 8; ++i) {
        images.put(nextUpdate(), good_);
    }
    images.close();
    EXPECT_TRUE(images.hasSpace());
    images.put(nextUpdate(), good_);
    images.releaseAll();
    EXPECT_EQ(images.report().frames, 0U);
}

// An image may give its buffer back to a stream, whose threads put something else.
TEST_F(OutputTapTest, HeldValueEndsWithNoLockHeld) {
    std::future<OutputReport> asked;
    std::future_status status = std::future_status::deferred;
    const auto askFromAnotherThread = [&](const IError* error) {
        delete error;
        asked = std::async(std::launch::async, [&] { return other_.report(); });
        status = asked.wait_for(std::chrono::seconds(10));
    };
    other_.put(nextUpdate(),
               Variant(Integer(std::shared_ptr<IError>(
                   new InvalidValueError("Bad.", DateTime::now()), askFromAnotherThread))));
    other_.releaseAll();
    EXPECT_EQ(status, std::future_status::ready);
    EXPECT_EQ(asked.get().frames, 1U);
}

// A source may hand its updates over in another order than it has made them.
TEST_F(OutputTapTest, OlderUpdateThatComesBehindTheLimitDoesNotCount) {
    const auto first = nextUpdate();
    const auto second = nextUpdate();
    const auto third = nextUpdate();
    tap_.put(second, good_);
    tap_.put(third, good_);
    tap_.put(first, bad_);
    EXPECT_EQ(tap_.report().frames, 2U);
    EXPECT_EQ(tap_.report().errors, 0U);
    other_.put(first, good_);
    EXPECT_EQ(other_.report().frames, 1U) << "it belongs to the run all the same";
}

TEST_F(OutputTapTest, SkipIsNoValue) {
    tap_.skip(nextUpdate());
    EXPECT_EQ(tap_.report().frames, 0U);
}

TEST_F(OutputTapTest, TellsItsListenerOfSpaceAsLongAsItLives) {
    auto listener = std::make_shared<Listener>();
    tap_.setSpaceListener(listener);
    tap_.notifySpace();
    EXPECT_EQ(listener->calls, 1);
    listener.reset();
    tap_.notifySpace();
}

TEST_F(OutputTapTest, WithoutAWriterThereIsAlwaysSpace) {
    EXPECT_TRUE(tap_.hasSpace());
}

TEST(RunState, FirstFailureCounts) {
    RunState state;
    state.fail("one");
    state.fail("two");
    state.requestStop();
    EXPECT_EQ(state.failure(), "one");
    EXPECT_TRUE(state.waitUntil(RunClock::now()));
}

TEST(RunState, DeadlineEndsTheWait) {
    RunState state;
    EXPECT_FALSE(state.waitUntil(RunClock::now()));
}

TEST(RunState, RunWithoutALimitHasNoDeadline) {
    const auto start = RunClock::now();
    EXPECT_EQ(deadlineAfter(start, std::nullopt), RunClock::time_point::max());
    EXPECT_EQ(deadlineAfter(start, 1e300), RunClock::time_point::max());
    EXPECT_EQ(deadlineAfter(start, 1.5), start + std::chrono::milliseconds(1500));
    constexpr std::chrono::hours tenYears{10 * 365 * 24};
    EXPECT_EQ(deadlineAfter(start, std::chrono::duration<double>(tenYears).count()),
              start + tenYears);
}

TEST(RunState, WaitsForAStopThatHasNoDeadline) {
    RunState state;
    std::thread stopper([&] { state.requestStop(); });
    EXPECT_TRUE(state.waitUntil(RunClock::time_point::max()));
    stopper.join();
}

}  // namespace
}  // namespace Orlix::Host
