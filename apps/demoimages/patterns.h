// Pictures that are computed: every one looks different and shows at a glance whether it was read,
// converted and written the right way round.
#pragma once

#include <cstdint>

#include "orlixcamera/orliximage.h"
#include "orlixcamera/pixeltype.h"

namespace Orlix::App {

enum class Pattern { Ramp, Bars, Rings, Waves, Wheel };

// Mono8, Mono16, RGB8Packed, BGR8Packed, RGBA8Packed or RGB16Packed.
[[nodiscard]] COrlixImage makePicture(Pattern pattern, EPixelType pixelType, std::uint32_t width,
                                      std::uint32_t height);

}  // namespace Orlix::App
