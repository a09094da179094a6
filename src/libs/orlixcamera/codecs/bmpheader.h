// The header of a BMP file in all its historic forms, checked and brought into one form. A plain
// value.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "orlixcamera/codecs/inputfile.h"

namespace Orlix {

enum class BmpCompression { None, RunLength8, RunLength4 };

enum class BmpRowOrder { BottomUp, TopDown };

// The place of a colour in a pixel of 16 or 32 bits; without bits if the pixel lacks it.
struct BmpChannel {
    unsigned shift = 0;
    unsigned bits = 0;
};

struct BmpHeader {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    unsigned bitsPerPixel = 0;
    BmpRowOrder rowOrder = BmpRowOrder::BottomUp;
    BmpCompression compression = BmpCompression::None;
    std::uint64_t pixelOffset = 0;
    std::array<BmpChannel, 4> channels;                // blue, green, red, alpha
    std::vector<std::array<std::uint8_t, 3>> palette;  // blue, green, red

    // Bytes of a stored row, without and with the fill to four bytes.
    [[nodiscard]] std::uint64_t RowBytes() const;
    [[nodiscard]] std::uint64_t Stride() const;
};

// Throws CodecError for what is damaged or not supported.
[[nodiscard]] BmpHeader readBmpHeader(const InputFile& file);

}  // namespace Orlix
