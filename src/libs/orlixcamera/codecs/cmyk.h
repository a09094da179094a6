// From printing inks to light, as the codecs that meet them need it. Pure functions.
#pragma once

#include <cstdint>

namespace Orlix {

// The product of two fractions of the largest value, rounded.
template <typename Sample>
[[nodiscard]] inline Sample multiplyFractions(Sample a, Sample b) {
    constexpr std::uint64_t largest = static_cast<Sample>(~Sample{0});
    return static_cast<Sample>((std::uint64_t{a} * b + largest / 2) / largest);
}

}  // namespace Orlix
