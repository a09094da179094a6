// What is known about each pixel format beyond the bits of its value: one row a format. The rows
// are constants; any thread may read them at any time.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "orlixcamera/pixeltype.h"

namespace Orlix {

enum class PixelFamily : std::uint8_t { Mono, Bayer, Rgb, Yuv, Data };

enum class SamplePacking : std::uint8_t {
    Bytes,   // each sample begins at a byte
    Shared,  // samples share bytes
};

enum class PixelLayout : std::uint8_t {
    Whole,  // one plane, a pixel stands for itself
    Pairs,  // one plane, two neighbours share their chroma
    Quads,  // one plane, four neighbours share their chroma
    TwoPlanes,
    ThreePlanes,
    Chroma422,      // three planes, those of chroma of half the width
    Chroma420,      // three planes, those of chroma of half the width and height
    Semiplanar422,  // two planes, that of chroma with pairs at half the width
    Semiplanar420,  // two planes, that of chroma with pairs at half the width and height
};

struct PixelFormat {
    EPixelType pixelType;
    std::string_view name;
    std::string_view alias;
    std::uint32_t bitDepth;
    PixelFamily family;
    SamplePacking packing;
    PixelLayout layout;
};

[[nodiscard]] ORLIXCAMERA_API std::span<const PixelFormat> AllPixelFormats() noexcept;

// Null for an unknown format.
[[nodiscard]] ORLIXCAMERA_API const PixelFormat* FindPixelFormat(EPixelType pixelType) noexcept;

}  // namespace Orlix
