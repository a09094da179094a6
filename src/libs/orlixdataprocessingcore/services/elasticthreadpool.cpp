#include "orlixdataprocessingcore/services/elasticthreadpool.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <string>
#include <thread>

#include "gcbase/gcexception.h"
#include "orlixdataprocessingcore/utils/failure.h"

namespace Orlix::DataProcessing::Threading {

namespace {

// How long a thread waits for a further job before it ends.
constexpr std::chrono::seconds idleTime{10};

Utils::CatId logCategory() {
    static const Utils::CatId category = Utils::getCatId("orlix.dataprocessing.threading.Pool");
    return category;
}

std::string nameOf(IJob& job) {
    try {
        return job.getName().str();
    } catch (...) {
        return "?";
    }
}

template <typename Call>
void runGuarded(IJob& job, const Call& call) {
    try {
        call();
    } catch (...) {
        const std::string doing = "executing job \"" + nameOf(job) + "\"";
        Utils::logCaught({"ThreadPool", nullptr, logCategory()}, doing.c_str());
    }
}

}  // namespace

IJob::~IJob() = default;
IThreadPool::~IThreadPool() = default;

ElasticThreadPool::ElasticThreadPool() = default;

ElasticThreadPool::~ElasticThreadPool() {
    {
        std::lock_guard guard(state_->mutex);
        state_->ended = true;
    }
    state_->jobOrEnd.notify_all();
}

void ElasticThreadPool::submit(std::shared_ptr<IJob> job) {
    if (!job) {
        throw GenICam::InvalidArgumentException("No job passed.", __FILE__, __LINE__);
    }
    job->onQueued();
    bool needsThread = false;
    {
        std::lock_guard guard(state_->mutex);
        state_->jobs.push_back(job);
        needsThread = state_->jobs.size() > state_->idleThreads;
    }
    if (needsThread) {
        startThreadFor(job);
    } else {
        state_->jobOrEnd.notify_one();
    }
}

void ElasticThreadPool::startThreadFor(const std::shared_ptr<IJob>& job) {
    try {
        // Detached: the thread shares the state, and nobody has to wait for a job that blocks.
        std::thread(&ElasticThreadPool::serve, state_).detach();
    } catch (...) {
        std::lock_guard guard(state_->mutex);
        // From the end: the same job may have been submitted before.
        auto& jobs = state_->jobs;
        const auto found = std::find(jobs.rbegin(), jobs.rend(), job);
        if (found != jobs.rend()) {
            jobs.erase(std::next(found).base());
            throw;
        }
        // Another thread has got to it meanwhile.
    }
}

void ElasticThreadPool::serve(const std::shared_ptr<State>& state) {
    while (const std::shared_ptr<IJob> job = take(*state)) {
        runGuarded(*job, [&] { job->execute(); });
        runGuarded(*job, [&] { job->onFinished(); });
    }
}

std::shared_ptr<IJob> ElasticThreadPool::take(State& state) {
    std::unique_lock lock(state.mutex);
    ++state.idleThreads;
    const auto ready = [&] { return !state.jobs.empty() || state.ended; };
    state.jobOrEnd.wait_for(lock, idleTime, ready);
    --state.idleThreads;
    if (state.jobs.empty()) {
        return nullptr;
    }
    std::shared_ptr<IJob> job = std::move(state.jobs.front());
    state.jobs.pop_front();
    return job;
}

}  // namespace Orlix::DataProcessing::Threading
