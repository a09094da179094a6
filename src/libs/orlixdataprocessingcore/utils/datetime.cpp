#include "orlixdataprocessingcore/utils/datetime.h"

#include <array>
#include <cstdio>
#include <ctime>

namespace Orlix::DataProcessing::Utils {

DateTime DateTime::now() {
    return DateTime(
        std::chrono::time_point_cast<std::chrono::nanoseconds>(std::chrono::system_clock::now()));
}

GenICam::gcstring DateTime::toString() const {
    const auto seconds = std::chrono::floor<std::chrono::seconds>(time_);
    const std::time_t time = std::chrono::system_clock::to_time_t(seconds);
    std::tm parts{};
    gmtime_r(&time, &parts);
    std::array<char, 32> date{};
    std::strftime(date.data(), date.size(), "%Y-%m-%dT%H:%M:%S", &parts);
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%s.%09lldZ", date.data(),
                  static_cast<long long>((time_ - seconds).count()));
    return GenICam::gcstring(text.data());
}

}  // namespace Orlix::DataProcessing::Utils
