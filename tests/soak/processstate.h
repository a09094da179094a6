// What a process takes of the machine, and whether that grows.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Soak {

struct ProcessState {
    std::int64_t residentKiB = 0;
    std::int64_t heapKiB = 0;  // in use, of all arenas and mappings
    std::int64_t threads = 0;
    std::int64_t descriptors = 0;
};

// Of this process. Throws std::runtime_error where the system doesn't tell.
[[nodiscard]] ProcessState readProcessState();

struct Sample {
    double seconds = 0;
    ProcessState state;
};

// How far each number may be beyond that of before.
struct Margins {
    std::int64_t residentKiB = 0;
    std::int64_t heapKiB = 0;
    std::int64_t threads = 0;
    std::int64_t descriptors = 0;
};

// A line for each number of `now` that is beyond the one of `before` by more than its margin.
[[nodiscard]] std::vector<std::string> findGrowth(const std::string& when,
                                                  const ProcessState& before,
                                                  const ProcessState& now, const Margins& margins);

// The usual level from one time to another, which single peaks don't move: the medians of memory,
// and the most threads and descriptors that all but a few samples have.
[[nodiscard]] ProcessState levelOf(const std::vector<Sample>& samples, double from, double to);

}  // namespace Soak
