// The clock and the sleep of the output loop: the only way in which the loop sees time, so that a
// test can let hours pass in a moment.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>

namespace Plugin::OrlixVCellPackageBase {

// Called on the worker thread of a node, with no lock held.
class IFrameClock {
public:
    // Ticks of the wall clock.
    using Duration = std::chrono::duration<std::int64_t, std::ratio<1, 10'000'000>>;
    using TimePoint = std::chrono::time_point<std::chrono::system_clock, Duration>;

    virtual ~IFrameClock() = default;
    [[nodiscard]] virtual TimePoint now() = 0;
    // Blocks for about that long; may return early, so the caller looks at the clock again.
    virtual void sleepFor(Duration duration) = 0;
};

// One for the process.
[[nodiscard]] std::shared_ptr<IFrameClock> getSystemFrameClock();

}  // namespace Plugin::OrlixVCellPackageBase
