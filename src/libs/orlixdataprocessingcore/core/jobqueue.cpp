#include "orlixdataprocessingcore/core/jobqueue.h"

#include <algorithm>

namespace Orlix::DataProcessing::Core {

bool JobQueue::isIdle() const {
    std::lock_guard guard(mutex_);
    return !scheduled_;
}

bool JobQueue::hasSpace(std::uint64_t limit) const {
    std::lock_guard guard(mutex_);
    return jobs_.size() < std::min<std::uint64_t>(limit, capacity);
}

void JobQueue::push(SourceJob&& job) {
    {
        std::lock_guard guard(mutex_);
        jobs_.push_back(std::move(job));
        if (scheduled_) {
            return;
        }
        scheduled_ = true;
    }
    Threading::Scheduler::instance().schedule(*this);
}

void JobQueue::finish() {
    std::unique_lock lock(mutex_);
    if (runner_ == std::this_thread::get_id()) {
        return;
    }
    idle_.wait(lock, [&] { return !scheduled_; });
}

JobQueue::Turn JobQueue::serve() noexcept {
    SourceJob job;
    {
        std::lock_guard guard(mutex_);
        if (!jobs_.empty()) {
            job = std::move(jobs_.front());
            jobs_.pop_front();
            runner_ = std::this_thread::get_id();
        }
    }
    if (job.update) {
        runJob_(std::move(job));
    }
    std::lock_guard guard(mutex_);
    runner_ = {};
    if (!jobs_.empty()) {
        return Turn::Again;
    }
    scheduled_ = false;
    idle_.notify_all();
    return Turn::Done;
}

}  // namespace Orlix::DataProcessing::Core
