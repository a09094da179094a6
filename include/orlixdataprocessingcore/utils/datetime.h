// A point of the system clock, in nanoseconds: when an error arose. A value type.
#pragma once

#include <chrono>
#include <compare>

#include "gcbase/gcstring.h"
#include "orlixdataprocessingcore/api.h"

namespace Orlix::DataProcessing::Utils {

class ORLIXDATAPROCESSINGCORE_API DateTime {
public:
    using TimePoint = std::chrono::time_point<std::chrono::system_clock, std::chrono::nanoseconds>;

    // 1970-01-01, which stands for "not known".
    DateTime() = default;
    explicit DateTime(TimePoint time) : time_(time) {}

    [[nodiscard]] static DateTime now();

    [[nodiscard]] TimePoint getTimePoint() const noexcept { return time_; }
    // UTC, such as "2026-03-01T12:30:05.000000123Z".
    [[nodiscard]] GenICam::gcstring toString() const;

    friend auto operator<=>(const DateTime&, const DateTime&) = default;

private:
    TimePoint time_{};
};

}  // namespace Orlix::DataProcessing::Utils
