// Makes BMP files byte by byte.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "orlixcamera/codecs/testfiles.h"

namespace Orlix::Test {

struct BmpForm {
    std::int32_t width = 0;
    std::int32_t height = 0;  // negative: the top row comes first
    std::uint16_t bits = 24;
    std::uint32_t compression = 0;
    std::uint32_t headerSize = 40;
    std::vector<std::array<unsigned char, 3>> palette{};  // blue, green, red
    std::vector<std::uint32_t> masks{};                   // red, green, blue, alpha
};

// `data` is what follows the header and the palette.
[[nodiscard]] Bytes makeBmp(const BmpForm& form, const Bytes& data);

// Rows, the top one first, in the order of the file and filled up to four bytes.
[[nodiscard]] Bytes bmpRows(const BmpForm& form, const Bytes& rows);

}  // namespace Orlix::Test
