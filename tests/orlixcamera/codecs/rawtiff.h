// Makes TIFF files byte by byte, with directories that no writer would make, too.
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "orlixcamera/codecs/testfiles.h"

namespace Orlix::Test {

enum class DirectoryPlace { BehindData, InFrontOfData };

// A tag and its values.
using TiffField = std::pair<std::uint16_t, std::vector<std::uint32_t>>;

struct RawTiff {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t bits = 8;
    std::uint32_t compression = 1;
    std::uint32_t photometric = 1;
    std::vector<TiffField> more{};  // replace those that follow from the rest
    std::vector<Bytes> pieces{};    // strips, or tiles if there is a tag for their width
    DirectoryPlace directory = DirectoryPlace::BehindData;
};

// In the order of bytes of small machines, with gray samples.
[[nodiscard]] Bytes makeTiff(const RawTiff& form);

}  // namespace Orlix::Test
