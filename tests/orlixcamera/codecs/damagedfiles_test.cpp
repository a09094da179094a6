// Damaged files of every format: whatever is flipped or cut, a load gives a picture or an error
// that names the file, and takes no more memory than the file could decode to.
#include <gtest/gtest.h>

#include "orlixcamera/codecs/bmpfiles.h"
#include "orlixcamera/codecs/damagetest.h"
#include "orlixcamera/codecs/jpegfiles.h"
#include "orlixcamera/codecs/pngfiles.h"
#include "orlixcamera/codecs/testfiles.h"
#include "orlixcamera/codecs/tifffiles.h"

namespace Orlix::Test {
namespace {

constexpr std::uint32_t width = 33;
constexpr std::uint32_t height = 18;
constexpr std::size_t pixels = std::size_t{width} * height;

class DamagedFiles : public DamageTest {
protected:
    [[nodiscard]] Bytes Tiff(TiffForm form, std::size_t bytesPerPixel) const {
        form.width = width;
        form.height = height;
        writeTiff(folder.File("whole"), form, {noise(pixels * bytesPerPixel)});
        return readFile(folder.File("whole"));
    }

    [[nodiscard]] Bytes Png(PngForm form, std::size_t bytesPerPixel) const {
        form.width = width;
        form.height = height;
        writePng(folder.File("whole"), form, noise(pixels * bytesPerPixel));
        return readFile(folder.File("whole"));
    }
};

TEST_F(DamagedFiles, Png) {
    TryAllDamage(Png({.colorType = 2}, 3));
}

TEST_F(DamagedFiles, PngInterlacedWithAlphaOf16Bits) {
    TryAllDamage(Png({.colorType = 6, .bits = 16, .isInterlaced = true}, 8));
}

TEST_F(DamagedFiles, PngWithPalette) {
    PngForm form{.colorType = 3};
    form.palette.assign(256, {1, 2, 3});
    form.paletteAlpha = {1, 2, 3};
    TryAllDamage(Png(form, 1));
}

TEST_F(DamagedFiles, JpegBaseline) {
    TryAllDamage(
        makeJpeg({.width = width, .height = height, .horizontalSampling = 2, .verticalSampling = 2},
                 noise(pixels * 3)));
}

TEST_F(DamagedFiles, JpegProgressive) {
    TryAllDamage(
        makeJpeg({.width = width, .height = height, .isProgressive = true}, noise(pixels * 3)));
}

TEST_F(DamagedFiles, JpegOfInks) {
    TryAllDamage(makeJpeg({.width = width, .height = height, .colors = JpegColors::Ycck},
                          noise(pixels * 4)));
}

TEST_F(DamagedFiles, TiffUncompressed) {
    TryAllDamage(Tiff({}, 1));
}

TEST_F(DamagedFiles, TiffWithLzw) {
    TryAllDamage(
        Tiff({.photometric = PHOTOMETRIC_RGB, .samples = 3, .compression = COMPRESSION_LZW}, 3));
}

TEST_F(DamagedFiles, TiffTiledWithDeflate) {
    TryAllDamage(Tiff({.photometric = PHOTOMETRIC_RGB,
                       .samples = 4,
                       .compression = COMPRESSION_ADOBE_DEFLATE,
                       .places = TiffPlaces::Tiles},
                      4));
}

TEST_F(DamagedFiles, TiffTiledWithJpeg) {
    TryAllDamage(Tiff({.photometric = PHOTOMETRIC_YCBCR,
                       .samples = 3,
                       .compression = COMPRESSION_JPEG,
                       .places = TiffPlaces::Tiles},
                      3));
}

TEST_F(DamagedFiles, TiffOfInksWithPackBits) {
    TryAllDamage(Tiff({.photometric = PHOTOMETRIC_SEPARATED,
                       .samples = 4,
                       .bits = 16,
                       .compression = COMPRESSION_PACKBITS,
                       .mode = "wb8"},
                      8));
}

TEST_F(DamagedFiles, TiffPalette) {
    TiffForm form{.photometric = PHOTOMETRIC_PALETTE};
    form.colorMap.assign(768, 1000);
    TryAllDamage(Tiff(form, 1));
}

TEST_F(DamagedFiles, BmpOf24Bits) {
    const BmpForm form{.width = width, .height = height};
    TryAllDamage(makeBmp(form, bmpRows(form, noise(pixels * 3))));
}

TEST_F(DamagedFiles, BmpWithPaletteAndRunLengths) {
    BmpForm form{.width = 255, .height = 20, .bits = 8, .compression = 1};
    form.palette.assign(256, {1, 2, 3});
    Bytes codes;
    for (int y = 0; y < 20; ++y) {
        codes.insert(codes.end(), {255, static_cast<unsigned char>(y), 0, 0});
    }
    codes.insert(codes.end(), {0, 1});
    TryAllDamage(makeBmp(form, codes));
}

TEST_F(DamagedFiles, BmpWithMasks) {
    const BmpForm form{.width = width,
                       .height = height,
                       .bits = 32,
                       .compression = 3,
                       .headerSize = 108,
                       .masks = {0xFF, 0xFF00, 0xFF0000, 0xFF000000}};
    TryAllDamage(makeBmp(form, bmpRows(form, noise(pixels * 4))));
}

}  // namespace
}  // namespace Orlix::Test
