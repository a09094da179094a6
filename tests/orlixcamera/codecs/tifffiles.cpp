#include "orlixcamera/codecs/tifffiles.h"

#include <algorithm>
#include <cstring>

namespace Orlix::Test {

namespace {

constexpr std::uint32_t tileSize = 16;

void setColorTags(TIFF* tiff, const TiffForm& form) {
    const bool isGray = form.photometric == PHOTOMETRIC_MINISBLACK ||
                        form.photometric == PHOTOMETRIC_MINISWHITE ||
                        form.photometric == PHOTOMETRIC_PALETTE;
    const unsigned colors = isGray ? 1 : form.photometric == PHOTOMETRIC_SEPARATED ? 4 : 3;
    if (form.samples > colors) {
        const std::vector<std::uint16_t> kinds(form.samples - colors, form.extraSample);
        TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, static_cast<int>(kinds.size()), kinds.data());
    }
    if (!form.colorMap.empty()) {
        const std::uint16_t* map = form.colorMap.data();
        const std::size_t count = form.colorMap.size() / 3;
        TIFFSetField(tiff, TIFFTAG_COLORMAP, map, map + count, map + 2 * count);
    }
    if (form.photometric == PHOTOMETRIC_YCBCR) {
        const bool isJpeg = form.compression == COMPRESSION_JPEG;
        TIFFSetField(tiff, TIFFTAG_YCBCRSUBSAMPLING, isJpeg ? 2 : 1, isJpeg ? 2 : 1);
        if (isJpeg) {
            TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
        }
    }
}

void setTags(TIFF* tiff, const TiffForm& form) {
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, form.width);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, form.height);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, form.bits);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, form.samples);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, form.compression);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, form.photometric);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, form.planarConfig);
    TIFFSetField(tiff, TIFFTAG_ORIENTATION, form.orientation);
    TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, form.sampleFormat);
    setColorTags(tiff, form);
    if (form.compression == COMPRESSION_JPEG) {
        TIFFSetField(tiff, TIFFTAG_JPEGQUALITY, 100);
    }
    if (form.places == TiffPlaces::Tiles) {
        TIFFSetField(tiff, TIFFTAG_TILEWIDTH, tileSize);
        TIFFSetField(tiff, TIFFTAG_TILELENGTH, tileSize);
    } else {
        TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, form.rowsPerStrip);
    }
}

// Fills the tile by repeating the last row and the last bytes of the picture.
Bytes cutTile(const TiffForm& form, const Bytes& plane, std::uint32_t left, std::uint32_t top) {
    const std::size_t rowBytes = tiffRowBytes(form);
    const std::size_t pixelBytes = rowBytes / form.width;
    Bytes tile(tileSize * tileSize * pixelBytes);
    for (std::uint32_t y = 0; y < tileSize; ++y) {
        const std::size_t row = std::min(top + y, form.height - 1) * rowBytes;
        for (std::uint32_t x = 0; x < tileSize; ++x) {
            const std::size_t column = std::min(left + x, form.width - 1) * pixelBytes;
            std::memcpy(tile.data() + (y * tileSize + x) * pixelBytes, plane.data() + row + column,
                        pixelBytes);
        }
    }
    return tile;
}

void writeTiles(TIFF* tiff, const TiffForm& form, const Bytes& plane, std::uint16_t number) {
    for (std::uint32_t y = 0; y < form.height; y += tileSize) {
        for (std::uint32_t x = 0; x < form.width; x += tileSize) {
            Bytes tile = cutTile(form, plane, x, y);
            TIFFWriteEncodedTile(tiff, TIFFComputeTile(tiff, x, y, 0, number), tile.data(),
                                 static_cast<tmsize_t>(tile.size()));
        }
    }
}

void writeStrips(TIFF* tiff, const TiffForm& form, const Bytes& plane, std::uint16_t number) {
    const std::size_t rowBytes = tiffRowBytes(form);
    for (std::uint32_t y = 0; y < form.height; y += form.rowsPerStrip) {
        const std::size_t rows = std::min(form.rowsPerStrip, form.height - y);
        Bytes strip(plane.begin() + static_cast<std::ptrdiff_t>(y * rowBytes),
                    plane.begin() + static_cast<std::ptrdiff_t>((y + rows) * rowBytes));
        TIFFWriteEncodedStrip(tiff, TIFFComputeStrip(tiff, y, number), strip.data(),
                              static_cast<tmsize_t>(strip.size()));
    }
}

}  // namespace

std::size_t tiffRowBytes(const TiffForm& form) {
    const std::size_t samples = form.planarConfig == PLANARCONFIG_CONTIG ? form.samples : 1;
    return (samples * form.bits * form.width + 7) / 8;
}

void writeTiff(const std::string& path, const TiffForm& form, const std::vector<Bytes>& planes) {
    TIFFSetWarningHandler(nullptr);
    TIFF* tiff = TIFFOpen(path.c_str(), form.mode);
    setTags(tiff, form);
    for (std::size_t i = 0; i < planes.size(); ++i) {
        const auto number = static_cast<std::uint16_t>(i);
        if (form.places == TiffPlaces::Tiles) {
            writeTiles(tiff, form, planes[i], number);
        } else {
            writeStrips(tiff, form, planes[i], number);
        }
    }
    TIFFClose(tiff);
}

}  // namespace Orlix::Test
