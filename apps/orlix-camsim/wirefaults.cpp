#include "wirefaults.h"

#include <algorithm>

namespace Orlix::Camsim {
namespace {

// A number that looks random, of any number.
std::uint64_t scramble(std::uint64_t value) {
    value += 0x9E3779B97F4A7C15;
    value = (value ^ value >> 30) * 0xBF58476D1CE4E5B9;
    value = (value ^ value >> 27) * 0x94D049BB133111EB;
    return value ^ value >> 31;
}

bool isTarget(const WireRule& rule, const Block& block, std::uint32_t packet) {
    switch (rule.target) {
        case WireTarget::Leader:
            return packet == 0;
        case WireTarget::Trailer:
            return packet > block.PayloadPackets();
        case WireTarget::Packets:
            return packet >= rule.firstPacket && packet <= rule.lastPacket &&
                   packet <= block.PayloadPackets();
        default:
            return true;
    }
}

// Later by that many places, or to the end.
void moveBack(std::vector<WireStep>& steps, std::size_t from, std::size_t places) {
    const std::size_t end = std::min(from + places + 1, steps.size());
    const auto begin = steps.begin() + static_cast<std::ptrdiff_t>(from);
    std::rotate(begin, begin + 1, steps.begin() + static_cast<std::ptrdiff_t>(end));
}

template <typename Test>
void removeIf(std::vector<WireStep>& steps, Statistics& statistics, const Test& test) {
    const auto end = std::remove_if(steps.begin(), steps.end(),
                                    [&](const WireStep& step) { return test(step.packet); });
    statistics.droppedPackets += static_cast<std::uint64_t>(steps.end() - end);
    steps.erase(end, steps.end());
}

template <typename Test>
void duplicateIf(std::vector<WireStep>& steps, Statistics& statistics, const Test& test) {
    for (std::size_t index = 0; index < steps.size(); ++index) {
        if (test(steps[index].packet)) {
            const WireStep again{steps[index].packet, {}};
            ++index;
            steps.insert(steps.begin() + static_cast<std::ptrdiff_t>(index), again);
            ++statistics.duplicatedPackets;
        }
    }
}

// From the end on, so that no packet is moved twice. `placesOf` answers 0 for those that stay.
template <typename PlacesOf>
void moveIf(std::vector<WireStep>& steps, Statistics& statistics, const PlacesOf& placesOf) {
    for (std::size_t index = steps.size(); index-- > 0;) {
        const std::size_t places = placesOf(steps[index].packet);
        if (places > 0 && index + 1 < steps.size()) {
            moveBack(steps, index, places);
            ++statistics.movedPackets;
        }
    }
}

}  // namespace

void WireFaults::Apply(std::uint64_t frame, const Block& block, std::vector<WireStep>& steps,
                       Statistics& statistics) const {
    for (const WireRule& rule : options_.rules) {
        if (rule.IsFor(frame)) {
            applyRule(rule, block, steps, statistics);
        }
    }
    applyChance(block, steps, statistics);
}

void WireFaults::applyRule(const WireRule& rule, const Block& block, std::vector<WireStep>& steps,
                           Statistics& statistics) const {
    const auto isHit = [&](std::uint32_t packet) { return isTarget(rule, block, packet); };
    switch (rule.fault) {
        case WireFault::Drop:
            removeIf(steps, statistics, isHit);
            break;
        case WireFault::Duplicate:
            duplicateIf(steps, statistics, isHit);
            break;
        case WireFault::Move:
            moveIf(steps, statistics,
                   [&](std::uint32_t packet) { return isHit(packet) ? rule.places : 0; });
            break;
        case WireFault::Delay:
            for (WireStep& step : steps) {
                step.pause += isHit(step.packet) ? rule.duration : std::chrono::nanoseconds(0);
            }
            break;
        default:
            break;
    }
}

void WireFaults::applyChance(const Block& block, std::vector<WireStep>& steps,
                             Statistics& statistics) const {
    constexpr std::uint64_t mostPlaces = 4;
    if (options_.lossPercent > 0) {
        removeIf(steps, statistics,
                 [&](std::uint32_t packet) { return Loses(block.id, packet, 0); });
    }
    if (options_.duplicatePercent > 0) {
        duplicateIf(steps, statistics, [&](std::uint32_t packet) {
            return hits(options_.duplicatePercent, Dice::Duplicate, block.id, packet);
        });
    }
    if (options_.reorderPercent > 0) {
        moveIf(steps, statistics, [&](std::uint32_t packet) -> std::size_t {
            return hits(options_.reorderPercent, Dice::Reorder, block.id, packet)
                       ? 1 + roll(Dice::Places, block.id, packet, 0) % mostPlaces
                       : 0;
        });
    }
}

// The last rule of a frame counts.
Resends WireFaults::ResendsOf(std::uint64_t frame) const noexcept {
    Resends resends = options_.resends;
    for (const WireRule& rule : options_.rules) {
        if (rule.IsFor(frame) && rule.fault == WireFault::IgnoreResends) {
            resends = Resends::Ignore;
        } else if (rule.IsFor(frame) && rule.fault == WireFault::DenyResends) {
            resends = Resends::Deny;
        }
    }
    return resends;
}

bool WireFaults::Loses(std::uint64_t blockId, std::uint32_t packet,
                       std::uint64_t attempt) const noexcept {
    return hits(options_.lossPercent, Dice::Loss, blockId, packet, attempt);
}

std::uint64_t WireFaults::roll(Dice dice, std::uint64_t blockId, std::uint32_t packet,
                               std::uint64_t attempt) const noexcept {
    constexpr unsigned diceShift = 60;
    const std::uint64_t block = scramble(options_.seed ^ scramble(blockId));
    return scramble(block ^ packet ^ attempt << 32 ^ static_cast<std::uint64_t>(dice) << diceShift);
}

bool WireFaults::hits(double percent, Dice dice, std::uint64_t blockId, std::uint32_t packet,
                      std::uint64_t attempt) const noexcept {
    constexpr double full = 100;
    constexpr double range = 18446744073709551616.0;
    return percent > 0 &&
           static_cast<double>(roll(dice, blockId, packet, attempt)) / range * full < percent;
}

}  // namespace Orlix::Camsim
