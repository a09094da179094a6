// The pixel formats that the emulated sensor can be asked for, and what they ask of its region. Any
// thread may call.
#pragma once

#include <cstdint>

#include "orlixcamera/pixeltype.h"

namespace Orlix::Emulated {

// So that the largest region is one that each format can have.
inline constexpr std::uint32_t largestSizeStep = 8;

// Of a value as a register holds it.
[[nodiscard]] bool IsSensorFormat(double pixelFormat);

// Lines have whole bytes and whole groups of pixels that share chroma; a Bayer pattern begins with
// the same colour wherever the region lies.
[[nodiscard]] std::uint32_t WidthStepOf(EPixelType pixelType);
[[nodiscard]] std::uint32_t HeightStepOf(EPixelType pixelType);

}  // namespace Orlix::Emulated
