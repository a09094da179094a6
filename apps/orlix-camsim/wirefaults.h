// Which packets of a frame go out, in which order and when. With one seed the same packets are hit,
// however fast machine and program are. Immutable; any thread may call.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <vector>

#include "block.h"
#include "statistics.h"
#include "wirescript.h"

namespace Orlix::Camsim {

struct WireOptions {
    double lossPercent = 0;       // of all packets, also those that are sent again
    double duplicatePercent = 0;  // of the packets of frames
    double reorderPercent = 0;    // of the packets of frames, by 1 to 4 places
    std::uint64_t seed = 1;
    Resends resends = Resends::Answer;
    std::vector<WireRule> rules;
};

// One packet on its way.
struct WireStep {
    std::uint32_t packet = 0;
    std::chrono::nanoseconds pause{0};  // before it
};

class WireFaults {
public:
    explicit WireFaults(WireOptions options) : options_(std::move(options)) {}

    [[nodiscard]] const std::vector<WireRule>& GetRules() const noexcept { return options_.rules; }
    // What becomes of the packets in `steps`, that come in their order. Frames count from 1 in each
    // acquisition.
    void Apply(std::uint64_t frame, const Block& block, std::vector<WireStep>& steps,
               Statistics& statistics) const;
    [[nodiscard]] Resends ResendsOf(std::uint64_t frame) const noexcept;
    // Whether a packet that is sent for the `attempt`-th time is lost.
    [[nodiscard]] bool Loses(std::uint64_t blockId, std::uint32_t packet,
                             std::uint64_t attempt) const noexcept;

private:
    enum class Dice : std::uint8_t { Loss, Duplicate, Reorder, Places };

    [[nodiscard]] std::uint64_t roll(Dice dice, std::uint64_t blockId, std::uint32_t packet,
                                     std::uint64_t attempt) const noexcept;
    [[nodiscard]] bool hits(double percent, Dice dice, std::uint64_t blockId, std::uint32_t packet,
                            std::uint64_t attempt = 0) const noexcept;
    void applyRule(const WireRule& rule, const Block& block, std::vector<WireStep>& steps,
                   Statistics& statistics) const;
    void applyChance(const Block& block, std::vector<WireStep>& steps,
                     Statistics& statistics) const;

    const WireOptions options_;
};

// The time in which the device neither hears nor says anything. Any thread may call.
class Silence {
public:
    using Clock = std::chrono::steady_clock;

    void BeginFor(std::chrono::nanoseconds duration) noexcept {
        const bool isForGood = duration == std::chrono::nanoseconds(0);
        end_ = isForGood ? Clock::time_point::max().time_since_epoch().count()
                         : (Clock::now() + duration).time_since_epoch().count();
    }
    void End() noexcept { end_ = 0; }
    [[nodiscard]] bool IsOn() const noexcept {
        const std::int64_t end = end_;
        return end != 0 && Clock::now().time_since_epoch().count() < end;
    }

private:
    std::atomic<std::int64_t> end_{0};
};

}  // namespace Orlix::Camsim
