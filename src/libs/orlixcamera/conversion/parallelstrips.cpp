// The only file that knows the thread library. It is built without the thread sanitizer, which
// doesn't see how that library hands its tasks over.
#include "orlixcamera/conversion/parallelstrips.h"

#include <tbb/blocked_range.h>
#include <tbb/parallel_for.h>
#include <tbb/partitioner.h>
#include <tbb/task_arena.h>

namespace Orlix {

void CallStrips(std::size_t count, StripFunction run, void* context) {
    using Range = tbb::blocked_range<std::size_t>;
    tbb::this_task_arena::isolate([=] {
        tbb::parallel_for(
            Range(0, count, 1),
            [=](const Range& range) {
                for (std::size_t strip = range.begin(); strip < range.end(); ++strip) {
                    run(context, strip);
                }
            },
            tbb::simple_partitioner());
    });
}

}  // namespace Orlix
