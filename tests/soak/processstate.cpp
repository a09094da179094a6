#include "soak/processstate.h"

#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace Soak {
namespace {

using Number = std::int64_t ProcessState::*;

std::int64_t countEntries(const char* folder) {
    const std::filesystem::directory_iterator entries(folder);
    return std::distance(begin(entries), end(entries));
}

std::int64_t readResidentKiB() {
    std::ifstream file("/proc/self/statm");
    std::int64_t total = 0;
    std::int64_t resident = 0;
    if (!(file >> total >> resident)) {
        throw std::runtime_error("/proc/self/statm can't be read");
    }
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

// The value that the share of the samples doesn't exceed.
std::int64_t quantile(const std::vector<ProcessState>& states, Number number, double share) {
    std::vector<std::int64_t> values;
    std::transform(states.begin(), states.end(), std::back_inserter(values),
                   [number](const ProcessState& state) { return state.*number; });
    std::sort(values.begin(), values.end());
    return values.at(static_cast<std::size_t>(share * static_cast<double>(values.size() - 1)));
}

}  // namespace

ProcessState readProcessState() {
    const struct mallinfo2 heap = mallinfo2();
    ProcessState state;
    state.residentKiB = readResidentKiB();
    state.heapKiB = static_cast<std::int64_t>((heap.uordblks + heap.hblkhd) / 1024);
    state.threads = countEntries("/proc/self/task");
    state.descriptors = countEntries("/proc/self/fd") - 1;  // the one that is open for counting
    return state;
}

std::vector<std::string> findGrowth(const std::string& when, const ProcessState& before,
                                    const ProcessState& now, const Margins& margins) {
    struct Row {
        const char* name;
        Number number;
        std::int64_t margin;
    };
    const Row rows[] = {
        {"KiB of resident memory", &ProcessState::residentKiB, margins.residentKiB},
        {"KiB of heap in use", &ProcessState::heapKiB, margins.heapKiB},
        {"threads", &ProcessState::threads, margins.threads},
        {"descriptors", &ProcessState::descriptors, margins.descriptors},
    };
    std::vector<std::string> found;
    for (const Row& row : rows) {
        if (now.*row.number > before.*row.number + row.margin) {
            found.push_back(when + ": " + std::to_string(now.*row.number) + " " + row.name +
                            ", before " + std::to_string(before.*row.number) + " (margin " +
                            std::to_string(row.margin) + ")");
        }
    }
    return found;
}

ProcessState levelOf(const std::vector<Sample>& samples, double from, double to) {
    std::vector<ProcessState> states;
    for (const Sample& sample : samples) {
        if (sample.seconds >= from && sample.seconds <= to) {
            states.push_back(sample.state);
        }
    }
    if (states.empty()) {
        throw std::runtime_error("there is no sample between " + std::to_string(from) + " and " +
                                 std::to_string(to) + " seconds");
    }
    constexpr double most = 0.95;
    return {quantile(states, &ProcessState::residentKiB, 0.5),
            quantile(states, &ProcessState::heapKiB, 0.5),
            quantile(states, &ProcessState::threads, most),
            quantile(states, &ProcessState::descriptors, most)};
}

}  // namespace Soak
