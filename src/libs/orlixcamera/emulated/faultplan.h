// The fault script that a camera goes by, and which of its rules have had their one time. Belongs
// to one camera, which lets one thread at a time in.
#pragma once

#include <chrono>
#include <cstdint>
#include <string_view>
#include <vector>

#include "orlixcamera/emulated/faultscript.h"

namespace Orlix::Emulated {

// All that goes wrong with one frame.
struct FrameFaults {
    std::uint64_t missingPackets = 0;
    std::uint64_t resentPackets = 0;
    std::int64_t sizeChange = 0;
    bool badTrailer = false;
    bool lostEnd = false;
    bool cutChunk = false;
    bool unknownChunk = false;
    std::chrono::nanoseconds late{0};
    std::uint64_t events = 0;
    bool unplug = false;
    std::chrono::nanoseconds unplugged{0};
};

class FaultPlan {
public:
    // Takes over the rules that are for this camera.
    void Load(const std::vector<FaultRule>& rules, std::uint32_t camera);

    [[nodiscard]] FrameFaults TakeFrame(std::uint64_t frameId);
    // The rules that count now; of Read and Write those for this register.
    [[nodiscard]] std::vector<FaultRule> Take(Occasion occasion,
                                              std::string_view registerName = {});
    // A rule of the clock, by its index; null if it has had its time.
    [[nodiscard]] const FaultRule* TakeRule(std::size_t index);

    [[nodiscard]] const std::vector<FaultRule>& GetRules() const noexcept { return rules_; }
    [[nodiscard]] bool HasUnknownChunk() const noexcept { return hasUnknownChunk_; }

private:
    std::vector<FaultRule> rules_;
    std::vector<bool> done_;
    bool hasUnknownChunk_ = false;
    bool hasAccess_ = false;
};

}  // namespace Orlix::Emulated
