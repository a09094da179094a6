// The pool behind getDefaultThreadPool(): threads for jobs that may block. It has as many as there
// are jobs at a time; a thread that finds no job for a while ends.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <memory>
#include <mutex>

#include "orlixdataprocessingcore/threading/threadpool.h"

namespace Orlix::DataProcessing::Threading {

// All operations are safe from any thread. The end of the pool lets jobs that were taken run, on
// threads that keep its state alive, and waits for none: a job may itself hold the last pool.
class ElasticThreadPool final : public IThreadPool {
public:
    ElasticThreadPool();
    ~ElasticThreadPool() override;

    void submit(std::shared_ptr<IJob> job) override;

private:
    struct State {
        std::mutex mutex;
        std::condition_variable jobOrEnd;
        std::deque<std::shared_ptr<IJob>> jobs;
        std::size_t idleThreads = 0;
        bool ended = false;
    };

    // Takes the job out again if there is no thread for it.
    void startThreadFor(const std::shared_ptr<IJob>& job);
    static void serve(const std::shared_ptr<State>& state);
    [[nodiscard]] static std::shared_ptr<IJob> take(State& state);

    std::shared_ptr<State> state_ = std::make_shared<State>();
};

}  // namespace Orlix::DataProcessing::Threading
