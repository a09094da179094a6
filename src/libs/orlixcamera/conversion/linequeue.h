// Shares the lines of one picture between the threads that convert it. Any of them may take; a
// queue serves one conversion.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstdint>

namespace Orlix {

struct LineRange {
    std::uint32_t first = 0;
    std::uint32_t end = 0;

    [[nodiscard]] bool IsEmpty() const { return first == end; }
};

// The ranges get shorter towards the end of the picture, so that threads which began late, or lost
// their processor for a while, end together, and there are few seams.
class LineQueue {
public:
    // No range but the last is shorter than `least` lines.
    LineQueue(std::uint32_t height, std::uint32_t threads, std::uint32_t least)
        : height_(height), parts_(2 * threads), least_(least) {}

    // The next lines, empty when there are none left. Each range begins at an even line, so that no
    // block of two lines is parted.
    [[nodiscard]] LineRange Take() {
        std::uint32_t first = next_.load(std::memory_order_relaxed);
        LineRange range;
        do {
            const std::uint32_t left = height_ - first;
            const std::uint32_t lines = std::min(std::max({left / parts_, least_, 1U}), left);
            range = {first, first + lines + (lines < left ? lines % 2 : 0)};
        } while (!next_.compare_exchange_weak(first, range.end, std::memory_order_relaxed));
        return range;
    }

private:
    std::uint32_t height_;
    std::uint32_t parts_;
    std::uint32_t least_;
    std::atomic<std::uint32_t> next_{0};
};

}  // namespace Orlix
