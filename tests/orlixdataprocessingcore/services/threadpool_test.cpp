// The pool for jobs that may block.
#include "orlixdataprocessingcore/threading/threadpool.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <functional>
#include <latch>
#include <memory>
#include <stdexcept>
#include <system_error>
#include <thread>

#include "gcbase/gcexception.h"
#include "orlixdataprocessingcore/core/services.h"
#include "orlixdataprocessingcore/utils/log.h"

namespace Orlix::DataProcessing::Threading {
namespace {

class TestJob : public IJob {
public:
    explicit TestJob(std::function<void()> work) : work_(std::move(work)) {}
    void onQueued() override { queuedIn = std::this_thread::get_id(); }
    void onFinished() override { finished.count_down(); }
    void execute() override { work_(); }
    [[nodiscard]] GenICam::gcstring getName() const override { return "test job"; }

    std::thread::id queuedIn;
    std::latch finished{1};

private:
    std::function<void()> work_;
};

// While it lives the system has no room for the stack of another thread.
class NoNewThreads {
public:
    NoNewThreads() {
        pthread_getattr_default_np(&before_);
        pthread_attr_t attributes;
        pthread_attr_init(&attributes);
        pthread_attr_setstacksize(&attributes, std::size_t{1} << 47U);
        EXPECT_EQ(pthread_setattr_default_np(&attributes), 0);
        pthread_attr_destroy(&attributes);
    }
    ~NoNewThreads() {
        pthread_setattr_default_np(&before_);
        pthread_attr_destroy(&before_);
    }
    NoNewThreads(const NoNewThreads&) = delete;
    NoNewThreads& operator=(const NoNewThreads&) = delete;

private:
    pthread_attr_t before_{};
};

class ThreadPoolTest : public testing::Test {
protected:
    std::shared_ptr<TestJob> submit(std::function<void()> work) {
        auto job = std::make_shared<TestJob>(std::move(work));
        pool->submit(job);
        return job;
    }

    std::shared_ptr<IThreadPool> pool = Core::getDefaultThreadPool();
};

TEST_F(ThreadPoolTest, RunsAJobOnAThreadOfItsOwn) {
    std::thread::id ranIn;
    const auto job = submit([&] { ranIn = std::this_thread::get_id(); });
    job->finished.wait();
    EXPECT_EQ(job->queuedIn, std::this_thread::get_id());
    EXPECT_NE(ranIn, std::this_thread::get_id());
}

TEST_F(ThreadPoolTest, AJobThatBlocksTakesNoThreadFromOthers) {
    constexpr int blocked = 20;
    std::latch allBlock(blocked);
    std::latch mayEnd(1);
    std::vector<std::shared_ptr<TestJob>> jobs;
    for (int index = 0; index < blocked; ++index) {
        jobs.push_back(submit([&] {
            allBlock.count_down();
            mayEnd.wait();
        }));
    }
    allBlock.wait();
    submit([] {})->finished.wait();
    mayEnd.count_down();
    for (const auto& job : jobs) {
        job->finished.wait();
    }
}

TEST_F(ThreadPoolTest, AJobMaySubmitAndAwaitAnother) {
    const auto outer = submit([this] { submit([] {})->finished.wait(); });
    outer->finished.wait();
}

TEST_F(ThreadPoolTest, AnExceptionEndsThatJobOnlyAndIsLoggedWithItsName) {
    const Utils::LogCapture log;
    submit([] { throw std::runtime_error("broken"); })->finished.wait();
    submit([] {
        throw GenICam::RuntimeException("broken too", __FILE__, __LINE__);
    })->finished.wait();
    submit([] { throw 5; })->finished.wait();
    submit([] {})->finished.wait();
    const auto lines = log.getLines("orlix.dataprocessing.threading.Pool");
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[0].text,
              "ThreadPool: Exception caught while executing job \"test job\". Message: broken");
    EXPECT_EQ(lines[1].text,
              "ThreadPool: Exception caught while executing job \"test job\". Message: broken too");
    EXPECT_EQ(lines[2].text,
              "ThreadPool: Unknown exception caught while executing job \"test job\".");
}

TEST_F(ThreadPoolTest, AJobThatFailsAndHasNoNameEither) {
    class Nameless final : public TestJob {
    public:
        using TestJob::TestJob;
        [[nodiscard]] GenICam::gcstring getName() const override { throw 5; }
    };
    const Utils::LogCapture log;
    const auto job = std::make_shared<Nameless>([] { throw 5; });
    pool->submit(job);
    job->finished.wait();
    submit([] {})->finished.wait();
    const auto lines = log.getLines("orlix.dataprocessing.threading.Pool");
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].text, "ThreadPool: Unknown exception caught while executing job \"?\".");
}

TEST_F(ThreadPoolTest, RefusesANullJob) {
    EXPECT_THROW(pool->submit(nullptr), GenICam::InvalidArgumentException);
}

TEST_F(ThreadPoolTest, AJobForWhichThereIsNoThreadIsNotTaken) {
    std::latch mayEnd(1);
    std::vector<std::shared_ptr<TestJob>> taken;
    std::shared_ptr<TestJob> refused;
    {
        const NoNewThreads limit;
        // The threads that wait for a job take one each.
        const auto submitUntilRefused = [&] {
            for (;;) {
                refused = std::make_shared<TestJob>([&] { mayEnd.wait(); });
                pool->submit(refused);
                taken.push_back(refused);
            }
        };
        EXPECT_THROW(submitUntilRefused(), std::system_error);
    }
    EXPECT_EQ(refused.use_count(), 1);
    mayEnd.count_down();
    for (const auto& job : taken) {
        job->finished.wait();
    }
    submit([] {})->finished.wait();
}

TEST_F(ThreadPoolTest, TakesJobsFromManyThreads) {
    constexpr int jobsPerThread = 200;
    std::latch done(4 * jobsPerThread);
    const auto submitMany = [&] {
        for (int index = 0; index < jobsPerThread; ++index) {
            pool->submit(std::make_shared<TestJob>([&] { done.count_down(); }));
        }
    };
    std::vector<std::thread> threads;
    for (int index = 0; index < 4; ++index) {
        threads.emplace_back(submitMany);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    done.wait();
}

}  // namespace
}  // namespace Orlix::DataProcessing::Threading
