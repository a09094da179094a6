// Compiled without the thread sanitizer, which can't look into the thread library and would take
// its hand-overs for races. Nothing but the call itself passes here.
#include "orlixdataprocessingcore/threading/workerthreads.h"

#include <oneapi/tbb/global_control.h>
#include <oneapi/tbb/task_arena.h>

namespace Orlix::DataProcessing::Threading {

// All places of the arena are for workers; the process-wide limit, which counts the main thread
// too, has to allow for them.
struct WorkerThreads::Arena {
    explicit Arena(std::size_t limit)
        : control(tbb::global_control::max_allowed_parallelism, limit + 1),
          arena(static_cast<int>(limit), 0) {}

    tbb::global_control control;
    tbb::task_arena arena;
};

WorkerThreads::WorkerThreads(std::size_t limit, Work work)
    : arena_(new Arena(limit)), work_(work) {}

void WorkerThreads::startOne() {
    arena_->arena.enqueue([work = work_] {
        // A worker that waits for a parallel loop inside the work must not begin another work.
        tbb::this_task_arena::isolate(work);
    });
}

}  // namespace Orlix::DataProcessing::Threading
