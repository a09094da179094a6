// Worker threads for jobs that a node wants done at a later time on another thread.
#pragma once

#include <memory>

#include "gcbase/gcstring.h"
#include "orlixdataprocessingcore/api.h"

namespace Orlix::DataProcessing::Threading {

class ORLIXDATAPROCESSINGCORE_API IJob {
public:
    virtual ~IJob();
    // The pool has taken the job; called by submit, in the submitting thread.
    virtual void onQueued() {}
    // The job has ended, well or not; called by the pool on the job's thread.
    virtual void onFinished() {}
    virtual void execute() = 0;
    // For log lines.
    [[nodiscard]] virtual GenICam::gcstring getName() const = 0;
};

// A job may block: the pool grows, so that neither other jobs nor the graph wait for it.
class ORLIXDATAPROCESSINGCORE_API IThreadPool {
public:
    virtual ~IThreadPool();
    // Never blocks and never runs the job in the caller. An exception of the job is logged and ends
    // that job only. Throws InvalidArgumentException for a null job, and std::system_error if the
    // system gives no thread for it; the job is not taken then.
    virtual void submit(std::shared_ptr<IJob> job) = 0;
};

}  // namespace Orlix::DataProcessing::Threading
