// What the threads of a run tell each other: that it shall end, why, and when the last value came.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <limits>
#include <mutex>
#include <optional>
#include <string>

namespace Orlix::Host {

using RunClock = std::chrono::steady_clock;

// The end of the clock without a number of seconds, or with more than it can count.
[[nodiscard]] RunClock::time_point deadlineAfter(RunClock::time_point start,
                                                 const std::optional<double>& seconds);

// All functions are safe from any thread.
class RunState {
public:
    void requestStop() { end({}); }
    // Ends the run with an error; the first one counts.
    void fail(const std::string& message) { end(message); }
    // True if the run shall end, false at the deadline.
    [[nodiscard]] bool waitUntil(RunClock::time_point deadline);
    [[nodiscard]] std::string failure() const;

    void noteValue() noexcept { lastValue_ = RunClock::now().time_since_epoch().count(); }
    [[nodiscard]] RunClock::time_point lastValue() const noexcept {
        return RunClock::time_point(RunClock::duration(lastValue_.load()));
    }

    // Updates behind this one belong no longer to the run.
    void setLastUpdate(std::uint64_t number) noexcept { lastUpdate_ = number; }
    [[nodiscard]] bool takes(std::uint64_t update) const noexcept { return update <= lastUpdate_; }

    // How far the counted pin of a run with a limit has come. Whether later updates belong to the
    // run is open until it has passed them.
    void countFromHere() noexcept { passed_ = 0; }
    void notePassed(std::uint64_t update) noexcept {
        std::uint64_t passed = passed_;
        while (passed < update && !passed_.compare_exchange_weak(passed, update)) {
        }
    }
    [[nodiscard]] std::uint64_t passed() const noexcept { return passed_; }

private:
    void end(const std::string& failure);

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    bool ending_ = false;
    std::string failure_;
    std::atomic<RunClock::rep> lastValue_{0};
    std::atomic<std::uint64_t> lastUpdate_{std::numeric_limits<std::uint64_t>::max()};
    std::atomic<std::uint64_t> passed_{std::numeric_limits<std::uint64_t>::max()};
};

}  // namespace Orlix::Host
