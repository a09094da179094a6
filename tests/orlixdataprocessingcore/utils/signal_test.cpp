#include "orlixdataprocessingcore/utils/signal.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <future>
#include <mutex>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "gcbase/gcstring.h"
#include "orlixdataprocessingcore/expectthrow.h"
#include "orlixdataprocessingcore/threading/recursiveclock.h"
#include "orlixdataprocessingcore/utils/log.h"
#include "support/allocations.h"

namespace {

using namespace Orlix::DataProcessing::Utils;
using namespace Orlix::DataProcessing::Threading;
using GenICam::gcstring;
using GenICam::InvalidArgumentException;
using Orlix::Test::expectThrow;

constexpr const char* category = "orlix.dataprocessing.utils.SlotCombiner";

TEST(Signal, CallsItsSlotsInOrder) {
    Signal<void()> signal;
    std::string calls;
    signal.connect([&] { calls += 'a'; });
    signal.connect([&] { calls += 'b'; });
    EXPECT_EQ(signal.size(), 2U);
    EXPECT_FALSE(signal.empty());
    signal();
    EXPECT_EQ(calls, "ab");
}

TEST(Signal, PassesItsArguments) {
    Signal<void(const gcstring&, int)> signal;
    gcstring seen;
    int number = 0;
    signal.connect([&](const gcstring& text, int value) {
        seen = text;
        number = value;
    });
    signal("pin", 3);
    EXPECT_EQ(seen, "pin");
    EXPECT_EQ(number, 3);
}

TEST(Signal, RefusesANullLockable) {
    const auto thrown = expectThrow<InvalidArgumentException>(
        [] { Signal<void()> signal(nullptr); }, "No lockable passed.");
    EXPECT_EQ(thrown.sourceFile, "src/libs/orlixdataprocessingcore/utils/signal_impl.h");
}

TEST(Signal, AConnectionChecksWhatItIsGivenInOrder) {
    using Connection = Signal<void()>::Connection;
    using List = Signal<void()>::ConnectionList;
    const auto lockable = std::make_shared<RecursiveCLock>();
    const auto changed = std::make_shared<ConditionVariableAny>();
    const auto list = std::make_shared<List>();
    expectThrow<InvalidArgumentException>(
        [] { Connection connection(nullptr, nullptr, nullptr, {}, {}); }, "No lockable passed.");
    expectThrow<InvalidArgumentException>(
        [&] { Connection connection(lockable, nullptr, nullptr, {}, {}); },
        "No condition variable passed.");
    expectThrow<InvalidArgumentException>(
        [&] { Connection connection(lockable, changed, nullptr, {}, {}); },
        "No connection list passed.");
    expectThrow<InvalidArgumentException>(
        [&] { Connection connection(lockable, changed, list, {}, {}); },
        "No valid function passed.");
    expectThrow<GenICam::BadAllocException>(
        [&] {
            Connection connection(
                lockable, changed, list, [] {}, Trackables{std::weak_ptr<const void>()});
        },
        "Invalid trackable object passed.");
}

TEST(Signal, ASlotThatThrowsLogsAWarningAndTheNextStillRuns) {
    LogCapture capture;
    Signal<void()> signal;
    int calls = 0;
    signal.connect([] { throw GenICam::RuntimeException("Slot failed.", "f.cpp", 1); });
    signal.connect([] { throw std::out_of_range("far out"); });
    signal.connect([] { throw 7; });
    signal.connect([&] { ++calls; });
    signal();
    EXPECT_EQ(calls, 1);
    const auto lines = capture.getLines(category);
    ASSERT_EQ(lines.size(), 3U);
    const auto getText = [&](std::size_t i) {
        const std::string text = lines[i].text.str();
        EXPECT_EQ(text.rfind("SlotCombiner 0x", 0), 0U) << text;
        return text.substr(text.find(": "));
    };
    EXPECT_EQ(getText(0), ": Exception caught while invoking a slot. Message: Slot failed.");
    EXPECT_EQ(getText(1), ": Exception caught while invoking a slot. Message: far out");
    EXPECT_EQ(getText(2), ": Unknown exception caught while invoking a slot.");
    EXPECT_EQ(lines[0].severity, Severitiy::Warning);
}

// Keeps the results of the last emission.
struct KeepingCombiner {
    using Results = VoidCombiner::Results;
    static inline Results* last = nullptr;
    void operator()(Results& results) const { last->swap(results); }
};

TEST(Signal, TheCombinerGetsTheResultsInOrder) {
    LogCapture capture;
    KeepingCombiner::Results results;
    KeepingCombiner::last = &results;
    Signal<void(), KeepingCombiner> signal;
    signal.connect([] {});
    signal.connect([] { throw std::range_error("bad"); });
    signal();
    ASSERT_EQ(results.size(), 2U);
    EXPECT_FALSE(results[0]->hasException());
    EXPECT_TRUE(results[1]->hasException());
    EXPECT_THROW(results[1]->get(), std::range_error);
}

TEST(Signal, ASlotWithAnExpiredTrackableIsNotCalledAndIsDropped) {
    Signal<void()> signal;
    auto object = std::make_shared<int>(1);
    int calls = 0;
    const auto connection = signal.connect([&] { ++calls; }, Trackables{object});
    signal();
    EXPECT_EQ(calls, 1);
    EXPECT_FALSE(connection->hasExpiredTrackable());
    object.reset();
    EXPECT_TRUE(connection->hasExpiredTrackable());
    signal();
    EXPECT_EQ(calls, 1);
    EXPECT_TRUE(signal.empty());
}

TEST(Signal, ATrackableLivesThroughTheCall) {
    Signal<void()> signal;
    auto object = std::make_shared<int>(1);
    bool isAlive = false;
    signal.connect(
        [&] {
            const std::weak_ptr<int> seen(object);
            object.reset();
            isAlive = !seen.expired();
        },
        Trackables{object});
    signal();
    EXPECT_TRUE(isAlive);
}

TEST(Signal, ADisconnectedSlotIsNotCalled) {
    Signal<void()> signal;
    int calls = 0;
    const auto connection = signal.connect([&] { ++calls; });
    EXPECT_TRUE(connection->isConnected());
    connection->disconnect();
    connection->disconnect();
    EXPECT_FALSE(connection->isConnected());
    signal();
    EXPECT_EQ(calls, 0);
    EXPECT_TRUE(signal.empty());
}

TEST(Signal, ABlockedSlotIsNotCalledUntilUnblocked) {
    Signal<void()> signal;
    int calls = 0;
    const auto connection = signal.connect([&] { ++calls; });
    connection->setBlocked(false, false);
    EXPECT_FALSE(connection->isEnabled());
    signal();
    EXPECT_EQ(calls, 0);
    connection->setBlocked(true, false);
    EXPECT_TRUE(connection->isEnabled());
    signal();
    EXPECT_EQ(calls, 1);
}

TEST(Signal, ItsEndDisconnectsItsSlots) {
    std::optional<Signal<void()>> signal(std::in_place);
    const auto connection = signal->connect([] {});
    signal.reset();
    EXPECT_FALSE(connection->isConnected());
    EXPECT_NO_THROW(connection->disconnect());
    EXPECT_NO_THROW(connection->setBlocked(false, true));
}

TEST(Signal, ASlotMayConnectAndDisconnect) {
    Signal<void()> signal;
    std::string calls;
    std::shared_ptr<IConnection> second;
    signal.connect([&] {
        calls += 'a';
        second->disconnect();
        signal.connect([&] { calls += 'c'; });
    });
    second = signal.connect([&] { calls += 'b'; });
    signal();
    EXPECT_EQ(calls, "a") << "disconnected before its turn, connected after the start";
    EXPECT_EQ(signal.size(), 2U);
}

TEST(Signal, ASlotMayDestroyTheSignal) {
    std::optional<Signal<void()>> signal(std::in_place);
    std::string calls;
    signal->connect([&] {
        calls += 'a';
        signal.reset();
    });
    signal->connect([&] { calls += 'b'; });
    (*signal)();
    EXPECT_EQ(calls, "a");
}

TEST(Signal, SlotsRunWithoutItsLock) {
    const auto lockable = std::make_shared<RecursiveCLock>();
    Signal<void()> signal(lockable);
    bool isFree = false;
    signal.connect([&] {
        isFree = std::async(std::launch::async, [&] {
                     const bool taken = lockable->tryLock();
                     if (taken) {
                         lockable->unlock();
                     }
                     return taken;
                 }).get();
    });
    signal();
    EXPECT_TRUE(isFree);
}

TEST(Signal, WhatASlotHoldsIsDestroyedWithoutItsLock) {
    const auto lockable = std::make_shared<RecursiveCLock>();
    struct Probe {
        std::shared_ptr<RecursiveCLock> lockable;
        bool* isFree;
        ~Probe() {
            *isFree = std::async(std::launch::async, [this] {
                          const bool taken = lockable->tryLock();
                          if (taken) {
                              lockable->unlock();
                          }
                          return taken;
                      }).get();
        }
    };
    bool isFreeAtDisconnect = false;
    bool isFreeAtEnd = false;
    {
        Signal<void()> signal(lockable);
        auto first = std::make_shared<Probe>(lockable, &isFreeAtDisconnect);
        auto second = std::make_shared<Probe>(lockable, &isFreeAtEnd);
        signal.connect([held = std::move(first)] {})->disconnect();
        signal.connect([held = std::move(second)] {});
    }
    EXPECT_TRUE(isFreeAtDisconnect);
    EXPECT_TRUE(isFreeAtEnd);
}

TEST(Signal, WithoutMemoryAConnectionSaysSo) {
    Signal<void()> signal;
    const auto texts = Orlix::Test::failEachAllocation([&] { signal.connect([] {}); });
    EXPECT_EQ(texts, std::set<std::string>{"Could not allocate connection."});
    EXPECT_EQ(signal.size(), 1U);
}

// The first slot lets an allocation behind it fail, when the list has been copied.
std::string failBehindTheFirstSlot(int number, bool& hasFailed) {
    using Orlix::Test::FailingNew;
    const auto trackable = std::make_shared<int>(1);
    LogCapture capture;
    std::optional<FailingNew> failing;
    int calls = 0;
    Signal<void()> signal;
    signal.connect([&] { failing.emplace(number); });
    signal.connect([&] { ++calls; }, Trackables{trackable});
    signal.connect([&] {
        ++calls;
        hasFailed = FailingNew::hasFailed();
    });
    EXPECT_NO_THROW(signal());
    failing.reset();
    EXPECT_GE(calls, 1) << "the last slot runs at any rate";
    const auto lines = capture.getLines(category);
    const std::string text = lines.empty() ? std::string() : lines[0].text.str();
    return text.substr(std::min(text.find(": "), text.size()));
}

TEST(Signal, WithoutMemoryForAResultTheOtherSlotsStillRun) {
    const std::string prefix = ": Exception caught while invoking a slot. Message: ";
    bool hasFailed = true;
    // The result of the first slot, the list of strong references, the result of the second.
    EXPECT_EQ(failBehindTheFirstSlot(0, hasFailed), prefix + "Could not allocate slot result.");
    EXPECT_EQ(failBehindTheFirstSlot(1, hasFailed), prefix + "std::bad_alloc");
    EXPECT_EQ(failBehindTheFirstSlot(2, hasFailed), prefix + "Could not allocate slot result.");
    EXPECT_TRUE(hasFailed);
}

}  // namespace
