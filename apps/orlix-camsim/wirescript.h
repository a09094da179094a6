// What goes wrong on the way between device and program, and when; docs/camsim.md describes the
// language, which follows that of the fault scripts. Plain values; any thread may parse.
//
//     frame 10: drop leader
//     every 7 frames: drop packets 3 to 5, ignore resends
//     after 2 s: silence for 500 ms
//     on signal: reset
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Orlix::Camsim {

enum class WireOccasion : std::uint8_t { Frame, After, Every, Signal };
enum class WireFault : std::uint8_t {
    Drop,
    Duplicate,
    Delay,
    Move,
    IgnoreResends,
    DenyResends,
    Silence,
    Reset,
};
enum class WireTarget : std::uint8_t { Leader, Packets, Trailer, All };

struct WireRule {
    WireOccasion occasion = WireOccasion::Frame;
    std::uint64_t firstFrame = 1;
    std::uint64_t lastFrame = UINT64_MAX;
    std::uint64_t frameStep = 1;
    std::chrono::nanoseconds time{0};  // of After and Every
    WireFault fault = WireFault::Drop;
    WireTarget target = WireTarget::All;
    std::uint32_t firstPacket = 0;
    std::uint32_t lastPacket = 0;
    std::uint32_t places = 0;              // of Move
    std::chrono::nanoseconds duration{0};  // of Delay, Silence and Reset; of Silence, 0 is for good

    [[nodiscard]] bool IsFor(std::uint64_t frame) const noexcept {
        return occasion == WireOccasion::Frame && frame >= firstFrame && frame <= lastFrame &&
               (frame - firstFrame) % frameStep == 0;
    }
};

// Throws InvalidArgumentException that names line, column, what was expected and what is there.
[[nodiscard]] std::vector<WireRule> ParseWireScript(std::string_view script);

}  // namespace Orlix::Camsim
