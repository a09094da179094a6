// A clock for the output loop that stands still until the loop sleeps, so that no test waits for
// time to pass. All members may be called from any thread.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <limits>
#include <memory>
#include <mutex>
#include <vector>

#include "imageloading/frameclock.h"

namespace Plugin::OrlixVCellPackageBase {

// A sleep takes a permit, waiting for one if need be, and moves the clock. The thread that reads
// the clock is the worker; its end is noticed as well.
class FakeFrameClock final : public IFrameClock {
public:
    static constexpr std::uint64_t noLimit = std::numeric_limits<std::uint64_t>::max();

    explicit FakeFrameClock(std::uint64_t permits = noLimit) : state_(std::make_shared<State>()) {
        state_->permits = permits;
    }

    TimePoint now() override {
        watchThisThread();
        const std::lock_guard guard(state_->mutex);
        ++state_->reads;
        state_->changed.notify_all();
        return state_->now;
    }

    void sleepFor(Duration duration) override {
        std::unique_lock lock(state_->mutex);
        state_->sleeps.push_back(duration);
        state_->changed.notify_all();
        state_->changed.wait(lock, [this] { return state_->permits > 0; });
        if (state_->permits != noLimit) {
            --state_->permits;
        }
        state_->now += duration;
    }

    // Time that passes while the loop is at work.
    void advance(Duration duration) {
        const std::lock_guard guard(state_->mutex);
        state_->now += duration;
    }

    void permit(std::uint64_t sleeps) {
        const std::lock_guard guard(state_->mutex);
        state_->permits = sleeps == noLimit ? noLimit : state_->permits + sleeps;
        state_->changed.notify_all();
    }

    // Includes the one that waits for a permit.
    void waitForSleeps(std::size_t count) {
        std::unique_lock lock(state_->mutex);
        state_->changed.wait(lock, [&] { return state_->sleeps.size() >= count; });
    }

    void waitForReads(std::uint64_t count) {
        std::unique_lock lock(state_->mutex);
        state_->changed.wait(lock, [&] { return state_->reads >= count; });
    }

    // Once for each worker.
    void waitForWorkerEnd() {
        std::unique_lock lock(state_->mutex);
        state_->changed.wait(lock, [this] { return state_->workerEnded; });
        state_->workerEnded = false;
    }

    [[nodiscard]] bool hasWorkerEnded() const {
        const std::lock_guard guard(state_->mutex);
        return state_->workerEnded;
    }

    [[nodiscard]] std::vector<Duration> sleeps() const {
        const std::lock_guard guard(state_->mutex);
        return state_->sleeps;
    }

private:
    struct State {
        std::mutex mutex;
        std::condition_variable changed;
        TimePoint now{};
        std::uint64_t reads = 0;
        std::uint64_t permits = noLimit;
        std::vector<Duration> sleeps;
        bool workerEnded = false;
    };

    // Lives in the worker and is destroyed at its end.
    struct EndNotice {
        std::shared_ptr<State> state;
        ~EndNotice() {
            if (state != nullptr) {
                const std::lock_guard guard(state->mutex);
                state->workerEnded = true;
                state->changed.notify_all();
            }
        }
    };

    void watchThisThread() {
        thread_local EndNotice notice;
        if (notice.state == nullptr) {
            notice.state = state_;
        }
    }

    std::shared_ptr<State> state_;
};

}  // namespace Plugin::OrlixVCellPackageBase
