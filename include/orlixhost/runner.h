// Runs a recipe's graph: allocate, start, watch, stop, free; counts what its open outputs give and
// has it written to a folder.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "orlixhost/api.h"

namespace Orlix::Host {

class RecipeGraph;

struct RunOptions {
    // Ends the run after that many values on the first open image output.
    std::optional<std::uint64_t> frames;
    std::optional<double> seconds;
    // Ends the run when no value has come for that many seconds.
    std::optional<double> idle;
    // Where values are written; empty: nowhere.
    std::string outFolder;
    // Whether nodes that lose their device go on when a device for them is there again.
    bool recover = false;
    // Start arguments, each a text.
    std::vector<std::pair<std::string, std::string>> arguments;
};

struct OutputReport {
    std::string node;
    std::string pin;
    std::uint64_t frames = 0;  // all values, those with an error too
    std::uint64_t errors = 0;
    double rate = 0;  // values a second from the first to the last; 0 for less than two
};

struct RunReport {
    std::vector<OutputReport> outputs;
    double seconds = 0;         // from the start to the stop
    std::uint64_t dropped = 0;  // jobs that never got all their inputs, or were lost in the stop
};

struct RunProgress {
    double seconds = 0;
    std::uint64_t frames = 0;  // of the first open image output, else of the first output
    std::uint64_t errors = 0;  // of all outputs
    double rate = 0;
    std::size_t queued = 0;  // values that wait on connections or to be written
    std::size_t capacity = 0;
};

// Both are called on the thread that runs, and may be empty.
struct RunObserver {
    std::function<void()> onStarted;
    // About five times a second.
    std::function<void(const RunProgress&)> onProgress;
};

// One run. run() is called once, by the thread that drives the graph; requestStop() is safe from
// any thread at any time, also before run(). A graph may have several runners, which run one after
// another.
class ORLIXHOST_API Runner {
public:
    // Throws RuntimeException if the options ask for what the graph does not have, or the folder
    // can not be made. The graph must be connected and outlive the runner.
    Runner(RecipeGraph& graph, RunOptions options);
    ~Runner();
    Runner(const Runner&) = delete;
    Runner& operator=(const Runner&) = delete;

    void requestStop();

    // Returns after the stop, when everything is written. Throws RuntimeException for a graph that
    // is running already, which it leaves alone, and for a failed allocation, start or write; the
    // graph is then stopped and its resources are free.
    [[nodiscard]] RunReport run(const RunObserver& observer);

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

// One line: {"outputs": {"Node.Pin": {"frames", "errors", "rate"}}, "seconds", "dropped"}
[[nodiscard]] ORLIXHOST_API std::string reportAsJson(const RunReport& report);

}  // namespace Orlix::Host
