// Jobs of a source that are made on a worker: those with a function, and those that came behind
// one and must not overtake it.
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

#include "orlixdataprocessingcore/core/inode.h"
#include "orlixdataprocessingcore/threading/scheduler.h"

namespace Orlix::DataProcessing::Core {

struct SourceJob {
    std::shared_ptr<IGraphUpdate> update;
    PinValues values;
    JobFunction function;  // may be empty
};

// Owned by the node; safe from any thread. One job at a time, in the order of their arrival. The
// owner calls finish() before it ends.
class JobQueue final : public Threading::IReadyItem {
public:
    // Jobs that may wait before a source is held back.
    static constexpr std::size_t capacity = 16;

    // runJob is called on workers with no lock held and must not throw.
    explicit JobQueue(std::function<void(SourceJob&&)> runJob) : runJob_(std::move(runJob)) {}

    [[nodiscard]] bool isIdle() const;
    [[nodiscard]] bool hasSpace(std::uint64_t limit) const;
    void push(SourceJob&& job);
    // Returns when all jobs have been run, or at once on the thread that runs one.
    void finish();

    [[nodiscard]] Turn serve() noexcept override;

private:
    std::function<void(SourceJob&&)> runJob_;
    mutable std::mutex mutex_;
    std::condition_variable idle_;
    std::deque<SourceJob> jobs_;
    bool scheduled_ = false;
    std::thread::id runner_;
};

}  // namespace Orlix::DataProcessing::Core
