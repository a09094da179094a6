#include "orlixcamera/bufferpool.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <thread>
#include <vector>

#include "gcbase/gcexception.h"

namespace Orlix {
namespace {

// The pool is the process's own, so each test starts from an empty one and puts the limit back.
class BufferPoolTest : public testing::Test {
protected:
    BufferPoolTest() { pool.Trim(); }
    ~BufferPoolTest() override {
        pool.SetRetentionLimit(limit);
        pool.Trim();
    }

    BufferPool& pool = BufferPool::Instance();
    const std::size_t limit = pool.GetRetentionLimit();
    const BufferPoolStatistics before = pool.GetStatistics();
};

TEST_F(BufferPoolTest, EveryBufferIsAlignedAndWritableToItsLastByte) {
    for (const std::size_t size : {0UL, 1UL, 63UL, 1024UL, 1025UL, 4097UL, 1048575UL, 1048577UL}) {
        const std::shared_ptr<void> buffer = pool.Allocate(size);
        ASSERT_NE(buffer, nullptr) << size;
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(buffer.get()) % BufferPool::Alignment, 0U);
        std::memset(buffer.get(), 0x5A, size);
    }
}

TEST_F(BufferPoolTest, MemoryReturnsWhenTheLastHolderLetsGo) {
    std::shared_ptr<void> first = pool.Allocate(100000);
    const void* const address = first.get();
    std::shared_ptr<void> second = first;
    first.reset();
    EXPECT_EQ(pool.GetStatistics().retainedBytes, 0U);
    second.reset();
    EXPECT_GE(pool.GetStatistics().retainedBytes, 100000U);
    const std::shared_ptr<void> again = pool.Allocate(100000);
    EXPECT_EQ(again.get(), address);
    EXPECT_EQ(pool.GetStatistics().allocations, before.allocations + 1);
    EXPECT_EQ(pool.GetStatistics().reuses, before.reuses + 1);
}

TEST_F(BufferPoolTest, SizesOfOneClassShareMemoryAndOthersDoNot) {
    pool.Allocate(100000).reset();
    pool.Allocate(99999).reset();
    EXPECT_EQ(pool.GetStatistics().reuses, before.reuses + 1);
    pool.Allocate(200000).reset();
    EXPECT_EQ(pool.GetStatistics().allocations, before.allocations + 2);
}

TEST_F(BufferPoolTest, NoMoreThanAnEighthIsWasted) {
    for (std::size_t size = 1025; size < (1U << 22U); size = size * 17 / 16 + 1) {
        const std::size_t used = pool.GetStatistics().usedBytes;
        const std::shared_ptr<void> buffer = pool.Allocate(size);
        const std::size_t capacity = pool.GetStatistics().usedBytes - used;
        EXPECT_GE(capacity, size);
        EXPECT_LE(capacity, size + size / 8 + 1);
    }
}

TEST_F(BufferPoolTest, RetentionIsBoundedAndTheLongestUnusedGoesFirst) {
    pool.SetRetentionLimit(1U << 20U);
    std::shared_ptr<void> old = pool.Allocate(512U << 10U);
    std::shared_ptr<void> young = pool.Allocate(256U << 10U);
    std::shared_ptr<void> youngest = pool.Allocate(320U << 10U);
    old.reset();
    young.reset();
    EXPECT_EQ(pool.GetStatistics().evictions, before.evictions);
    youngest.reset();
    EXPECT_EQ(pool.GetStatistics().evictions, before.evictions + 1);
    EXPECT_EQ(pool.GetStatistics().retainedBytes, (256U + 320U) << 10U);
}

TEST_F(BufferPoolTest, ABufferAboveTheLimitIsNotRetained) {
    pool.SetRetentionLimit(1000);
    pool.Allocate(1U << 20U).reset();
    EXPECT_EQ(pool.GetStatistics().retainedBytes, 0U);
}

TEST_F(BufferPoolTest, BuffersInUseSurviveATrim) {
    const std::shared_ptr<void> held = pool.Allocate(5000);
    std::memset(held.get(), 7, 5000);
    pool.Allocate(5000).reset();
    pool.Trim();
    EXPECT_EQ(pool.GetStatistics().retainedBytes, 0U);
    EXPECT_EQ(static_cast<const unsigned char*>(held.get())[4999], 7);
}

TEST_F(BufferPoolTest, AnImpossibleSizeIsABadAllocException) {
    for (const std::size_t size :
         {std::numeric_limits<std::size_t>::max(), std::numeric_limits<std::size_t>::max() / 5}) {
        try {
            static_cast<void>(pool.Allocate(size));
            FAIL() << "no exception";
        } catch (const GenICam::BadAllocException& error) {
            EXPECT_EQ(std::string(error.GetDescription()),
                      "Cannot allocate an image buffer of " + std::to_string(size) + " bytes.");
        }
    }
}

TEST_F(BufferPoolTest, BuffersMayBeLetGoOnOtherThreads) {
    constexpr int rounds = 2000;
    const auto work = [this](unsigned seed) {
        std::vector<std::shared_ptr<void>> held(8);
        for (unsigned i = 0; i < rounds; ++i) {
            const std::size_t size = 1000U * (1U + (seed + i) % 7U);
            held[i % held.size()] = pool.Allocate(size);
            std::memset(held[i % held.size()].get(), static_cast<int>(i & 0x7FU), size);
        }
    };
    std::shared_ptr<void> shared = pool.Allocate(3000);
    std::thread first([&work, copy = shared] { work(1); });
    std::thread second([&work, copy = shared] { work(2); });
    shared.reset();
    first.join();
    second.join();
    EXPECT_EQ(pool.GetStatistics().usedBytes, before.usedBytes);
}

}  // namespace
}  // namespace Orlix
