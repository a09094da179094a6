// Makes TIFF files with libtiff: strips or tiles, samples side by side or in planes, with any
// compression that it can write.
#pragma once

#include <tiffio.h>

#include <cstdint>
#include <string>
#include <vector>

#include "orlixcamera/codecs/testfiles.h"

namespace Orlix::Test {

enum class TiffPlaces { Strips, Tiles };

struct TiffForm {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint16_t photometric = PHOTOMETRIC_MINISBLACK;
    std::uint16_t samples = 1;
    std::uint16_t bits = 8;
    std::uint16_t compression = COMPRESSION_NONE;
    std::uint16_t planarConfig = PLANARCONFIG_CONTIG;
    TiffPlaces places = TiffPlaces::Strips;
    std::uint16_t orientation = ORIENTATION_TOPLEFT;
    std::uint16_t sampleFormat = SAMPLEFORMAT_UINT;
    std::uint16_t extraSample = EXTRASAMPLE_UNASSALPHA;
    std::uint32_t rowsPerStrip = 5;
    std::vector<std::uint16_t> colorMap{};  // all reds, then all greens, then all blues
    const char* mode = "w";                 // with b or l for the byte order, 8 for long offsets
};

// `planes` holds the rows of each plane without fill, 16-bit samples in the order of the machine.
// Side by side the samples are one plane.
void writeTiff(const std::string& path, const TiffForm& form, const std::vector<Bytes>& planes);

// How many bytes a row of a plane takes.
[[nodiscard]] std::size_t tiffRowBytes(const TiffForm& form);

}  // namespace Orlix::Test
