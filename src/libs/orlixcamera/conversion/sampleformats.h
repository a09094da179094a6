// The formats that are converted by rows: what a row of the table says. Constants; any thread may
// use them.
#pragma once

#include <cstddef>
#include <cstdint>

#include "orlixcamera/conversion/rowkernels.h"
#include "orlixcamera/pixeltype.h"

namespace Orlix {

enum class SampleKind : std::uint8_t { Grey, Rgb, Bgr, RgbPlanar, Bayer, Uyvy, Yuyv, Semiplanar };

struct SampleFormat {
    EPixelType pixelType;
    SampleKind kind;
    // How the samples of a line become bytes and words; YUV formats have other functions.
    RowReader toBytes;
    RowReader toWords;
    // Bayer: the column and line of red in the first 2 x 2 block.
    std::uint8_t redColumn = 0;
    std::uint8_t redLine = 0;
};

// Null for a format that isn't converted by rows.
[[nodiscard]] const SampleFormat* FindSampleFormat(EPixelType pixelType) noexcept;

}  // namespace Orlix
