#include "host/writequeue.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <atomic>
#include <cstdlib>
#include <exception>
#include <future>
#include <mutex>
#include <set>
#include <thread>

#include "orlixdataprocessingcore/core/integer.h"

namespace Orlix::Host {
namespace {

OutputValue valueOf(std::uint64_t number) {
    return {0, number, number,
            DataProcessing::Utils::Variant(DataProcessing::Core::Integer(number))};
}

TEST(WriteQueue, OneThreadWritesInTheOrderOfAddition) {
    std::vector<std::uint64_t> written;
    WriteQueue queue(
        4, 1, [&](const OutputValue& value) { written.push_back(value.number); }, [] {});
    queue.begin();
    for (std::uint64_t i = 1; i <= 100; ++i) {
        queue.add(valueOf(i));
    }
    queue.finish();
    ASSERT_EQ(written.size(), 100U);
    for (std::uint64_t i = 0; i < 100; ++i) {
        EXPECT_EQ(written[i], i + 1);
    }
}

TEST(WriteQueue, FullQueueHasNoSpaceAndTellsWhenItHasAgain) {
    std::promise<void> started;
    std::promise<void> release;
    std::promise<void> space;
    auto released = release.get_future().share();
    std::atomic<int> spaceCalls{0};
    WriteQueue queue(
        2, 1,
        [&](const OutputValue& value) {
            if (value.number == 1) {
                started.set_value();
                released.wait();
            }
        },
        [&] {
            if (spaceCalls++ == 0) {
                space.set_value();
            }
        });
    queue.begin();
    queue.add(valueOf(1));
    started.get_future().wait();
    EXPECT_TRUE(queue.hasSpace());
    queue.add(valueOf(2));
    EXPECT_TRUE(queue.hasSpace());
    queue.add(valueOf(3));
    EXPECT_FALSE(queue.hasSpace());
    EXPECT_EQ(queue.size(), 3U);
    queue.add(valueOf(4));
    EXPECT_FALSE(queue.hasSpace());
    EXPECT_EQ(spaceCalls, 0);
    release.set_value();
    space.get_future().wait();
    queue.finish();
    EXPECT_TRUE(queue.hasSpace());
    EXPECT_EQ(queue.size(), 0U);
    EXPECT_EQ(spaceCalls, 1);
}

TEST(WriteQueue, SeveralThreadsWriteEveryValueOnce) {
    std::mutex mutex;
    std::multiset<std::uint64_t> written;
    {
        WriteQueue queue(
            8, 4,
            [&](const OutputValue& value) {
                const std::lock_guard lock(mutex);
                written.insert(value.number);
            },
            [] {});
        queue.begin();
        for (std::uint64_t i = 1; i <= 1000; ++i) {
            queue.add(valueOf(i));
        }
    }
    EXPECT_EQ(written.size(), 1000U);
    EXPECT_EQ(std::set<std::uint64_t>(written.begin(), written.end()).size(), 1000U);
}

TEST(WriteQueue, ValuesWaitUntilItBeginsAndAreWrittenThen) {
    std::vector<std::uint64_t> written;
    WriteQueue queue(
        2, 1, [&](const OutputValue& value) { written.push_back(value.number); }, [] {});
    queue.add(valueOf(1));
    EXPECT_TRUE(queue.hasSpace());
    EXPECT_EQ(queue.size(), 1U);
    queue.begin();
    queue.add(valueOf(2));
    queue.finish();
    EXPECT_EQ(written, (std::vector<std::uint64_t>{1, 2}));
}

// Who adds may wait for space before the one who begins has come to it.
TEST(WriteQueue, FullQueueBeginsByItself) {
    std::promise<void> space;
    std::vector<std::uint64_t> written;
    WriteQueue queue(
        2, 1, [&](const OutputValue& value) { written.push_back(value.number); },
        [&] { space.set_value(); });
    queue.add(valueOf(1));
    queue.add(valueOf(2));
    space.get_future().wait();
    queue.finish();
    EXPECT_EQ(written, (std::vector<std::uint64_t>{1, 2}));
}

#if !defined(__SANITIZE_THREAD__) && !defined(__SANITIZE_ADDRESS__)
// Room for the stacks of a few threads only.
void failToMakeThreads() {
    const rlimit limit{rlim_t{256} << 20U, rlim_t{256} << 20U};
    ::setrlimit(RLIMIT_AS, &limit);
    try {
        const WriteQueue queue(
            2, 1000, [](const OutputValue&) {}, [] {});
    } catch (const std::exception&) {
        std::_Exit(3);
    }
    std::_Exit(4);
}

TEST(WriteQueue, WithoutThreadsItThrowsAndEndsThoseThatItHas) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(failToMakeThreads(), testing::ExitedWithCode(3), "");
}
#endif

TEST(WriteQueue, EndsWithoutAWriteIfItNeverBegins) {
    int writes = 0;
    {
        WriteQueue queue(
            2, 1, [&](const OutputValue&) { ++writes; }, [] {});
        queue.add(valueOf(1));
    }
    EXPECT_EQ(writes, 0);
}

TEST(WriteQueue, DiscardDropsWhatWaitsAndWhatStillComes) {
    std::promise<void> started;
    std::promise<void> release;
    std::vector<std::uint64_t> written;
    WriteQueue queue(
        8, 1,
        [&](const OutputValue& value) {
            started.set_value();
            release.get_future().wait();
            written.push_back(value.number);
        },
        [] {});
    queue.begin();
    queue.add(valueOf(1));
    started.get_future().wait();
    queue.add(valueOf(2));
    std::thread discarder([&] { queue.discard(); });
    while (queue.size() != 1) {  // until the one that waits is gone
        std::this_thread::yield();
    }
    queue.add(valueOf(3));
    release.set_value();
    discarder.join();
    EXPECT_EQ(written, std::vector<std::uint64_t>{1});
    EXPECT_EQ(queue.size(), 0U);
}

}  // namespace
}  // namespace Orlix::Host
