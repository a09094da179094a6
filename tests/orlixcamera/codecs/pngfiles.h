// Makes PNG files with libpng, in every form that it can write.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "orlixcamera/codecs/testfiles.h"

namespace Orlix::Test {

struct PngForm {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    int colorType = 0;  // 0 gray, 2 RGB, 3 palette, 4 gray with alpha, 6 RGB with alpha
    int bits = 8;
    bool isInterlaced = false;
    std::vector<std::array<unsigned char, 3>> palette{};
    Bytes paletteAlpha{};
    int transparentSample = -1;  // the gray value, or the value of all three colours
};

// `rows` are as in the file: packed bits, 16-bit samples with the high byte first.
void writePng(const std::string& path, const PngForm& form, const Bytes& rows);

// Of each chunk its name and its data.
using PngChunkList = std::vector<std::string>;

// With checksums that fit.
[[nodiscard]] Bytes joinPngChunks(const PngChunkList& chunks);
// Of chunks of less than 65536 bytes.
[[nodiscard]] PngChunkList splitPngChunks(const Bytes& bytes);

}  // namespace Orlix::Test
