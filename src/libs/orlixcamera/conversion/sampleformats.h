// The formats that are converted by rows: what a row of the table says. Constants; any thread may
// use them.
#pragma once

#include <cstddef>
#include <cstdint>

#include "orlixcamera/conversion/rowkernels.h"
#include "orlixcamera/pixeltype.h"

namespace Orlix {

// What a line is made of. Rgb and Bgr are three samples a pixel, RgbPlanar is a plane for each;
// Uyvy, Yuyv and Semiplanar have bytes, and blue chroma before red.
enum class SampleKind : std::uint8_t { Grey, Rgb, Bgr, RgbPlanar, Bayer, Uyvy, Yuyv, Semiplanar };

[[nodiscard]] constexpr bool IsYuvKind(SampleKind kind) {
    return kind == SampleKind::Uyvy || kind == SampleKind::Yuyv || kind == SampleKind::Semiplanar;
}

// How samples lie in a line, and the functions that make bytes and words of them.
struct SamplePacking {
    std::uint32_t sampleBits;
    RowReader toBytes;
    RowReader toWords;
};

struct SampleFormat {
    EPixelType pixelType;
    SampleKind kind;
    SamplePacking packing;  // YUV formats have other functions
    // Bayer: the column and line of red in the first 2 x 2 block.
    std::uint8_t redColumn = 0;
    std::uint8_t redLine = 0;
};

// Null for a format that isn't converted by rows.
[[nodiscard]] const SampleFormat* FindSampleFormat(EPixelType pixelType) noexcept;

}  // namespace Orlix
