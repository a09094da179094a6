// The numbers of skipped updates that wait one behind another, in a few bytes each or in all.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>

namespace Orlix::DataProcessing::Core {

// Numbers are one counter of the process: where other sources send too, those of one source have
// gaps, mostly the same ones again and again. So what is kept is how far it is from one number to
// the next, and how often in a row. The order may be any.
//
// Bounded: when so many gaps differ that there is no place left, the numbers before the last one
// are forgotten. To a join, an update that is forgotten is one that never came here, and which
// others have gone past: it is dropped and counted, also where the input could do without a value.
//
// Not safe by itself: the join's lock guards it.
class SkipRun {
public:
    static constexpr std::size_t maxStretches = 4096;

    explicit SkipRun(std::uint64_t number) : first_(number), last_(number), greatest_(number) {}

    [[nodiscard]] std::uint64_t front() const noexcept { return first_; }
    // Of all that were ever appended.
    [[nodiscard]] std::uint64_t greatest() const noexcept { return greatest_; }
    // Whether front() is the only number left.
    [[nodiscard]] bool isLast() const noexcept { return stretches_.empty(); }

    void append(std::uint64_t number) {
        const std::uint64_t step = number - last_;
        last_ = number;
        greatest_ = std::max(greatest_, number);
        if (!stretches_.empty() && stretches_.back().step == step) {
            ++stretches_.back().count;
            return;
        }
        if (stretches_.size() == maxStretches) {
            forgetBeforeLast();
        }
        stretches_.push_back({step, 1});
    }

    // Not when the first is the last.
    void popFront() noexcept {
        Stretch& stretch = stretches_.front();
        first_ += stretch.step;
        if (--stretch.count == 0) {
            stretches_.pop_front();
        }
    }

private:
    // So many numbers, each so far behind the one before; backwards by overflow.
    struct Stretch {
        std::uint64_t step;
        std::uint64_t count;
    };

    void forgetBeforeLast() noexcept {
        const Stretch last = stretches_.back();
        stretches_.pop_back();
        Stretch& before = stretches_.back();
        before = {before.step * before.count + last.step * last.count, 1};
    }

    std::uint64_t first_;
    std::uint64_t last_;
    std::uint64_t greatest_;
    std::deque<Stretch> stretches_;
};

}  // namespace Orlix::DataProcessing::Core
