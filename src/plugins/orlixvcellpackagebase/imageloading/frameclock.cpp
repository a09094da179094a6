#include "imageloading/frameclock.h"

#include <algorithm>
#include <thread>

namespace Plugin::OrlixVCellPackageBase {
namespace {

class SystemFrameClock final : public IFrameClock {
public:
    TimePoint now() override {
        return std::chrono::time_point_cast<Duration>(std::chrono::system_clock::now());
    }

    void sleepFor(Duration duration) override {
        // When the wall clock is set back by years, the pieces keep the sum within the range of
        // every clock below.
        constexpr Duration longestPiece = std::chrono::days(10);
        std::this_thread::sleep_for(std::min(duration, longestPiece));
    }
};

}  // namespace

std::shared_ptr<IFrameClock> getSystemFrameClock() {
    static const auto clock = std::make_shared<SystemFrameClock>();
    return clock;
}

}  // namespace Plugin::OrlixVCellPackageBase
