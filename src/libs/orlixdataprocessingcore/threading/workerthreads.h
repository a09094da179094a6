// The seam to the thread library: brings one of its threads to run a function. What the function
// works on is handed over elsewhere, through a queue of our own.
#pragma once

#include <cstddef>

namespace Orlix::DataProcessing::Threading {

// Never destroyed; safe from any thread.
class WorkerThreads {
public:
    using Work = void (*)();

    // So many at the same time at most.
    WorkerThreads(std::size_t limit, Work work);
    ~WorkerThreads() = delete;

    // Returns at once; work runs soon, on another thread.
    void startOne();

private:
    struct Arena;
    Arena* arena_;
    Work work_;
};

}  // namespace Orlix::DataProcessing::Threading
