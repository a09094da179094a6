// The formats whose samples are read one by one: what a row of the table says, and the function
// that reads a line. Constants and pure functions; any thread may use them.
#pragma once

#include <cstddef>
#include <cstdint>

#include "orlixcamera/pixeltype.h"

namespace Orlix {

enum class SampleKind : std::uint8_t { Grey, Rgb, Bgr, RgbPlanar, Bayer, Yuv };

// Reads `count` samples from the beginning of a line, each at its own bit depth.
using SampleReader = void (*)(const std::uint8_t* line, std::size_t count, std::uint16_t* samples);

struct SampleFormat {
    EPixelType pixelType;
    SampleKind kind;
    SampleReader read;
    // Bayer: where the red pixel is in the first 2 x 2 block. YUV: where luma (x) and blue chroma
    // (y) are in a group of four bytes; semiplanar formats don't need it.
    std::uint8_t x = 0;
    std::uint8_t y = 0;
};

// Null for a format that isn't read by samples.
[[nodiscard]] const SampleFormat* FindSampleFormat(EPixelType pixelType) noexcept;

}  // namespace Orlix
