// TIFF directories that no honest writer makes: tag, type, count and value of every entry.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

#include "orlixcamera/codecs/damagetest.h"
#include "orlixcamera/codecs/testfiles.h"
#include "orlixcamera/codecs/tifffiles.h"

namespace Orlix::Test {
namespace {

constexpr std::uint32_t width = 33;
constexpr std::uint32_t height = 18;
constexpr std::size_t pixels = std::size_t{width} * height;

constexpr std::size_t entrySize = 12;
// What codecs that can write a whole row with a bit may decode to.
constexpr std::size_t rowRatio = 65536;

// Values that readers treat in different ways.
struct Choice {
    std::uint32_t tag;
    std::vector<std::uint32_t> values;
};

const std::vector<std::uint32_t> lengths = {1, 2, 15, 16, 17, 32, 48, 1000, 4096};

const std::vector<Choice> choices = {
    {TIFFTAG_IMAGEWIDTH, lengths},
    {TIFFTAG_IMAGELENGTH, lengths},
    {TIFFTAG_ROWSPERSTRIP, lengths},
    {TIFFTAG_TILEWIDTH, lengths},
    {TIFFTAG_TILELENGTH, lengths},
    {TIFFTAG_BITSPERSAMPLE, {1, 2, 4, 8, 12, 16, 32}},
    {TIFFTAG_COMPRESSION, {1, 2, 3, 4, 5, 6, 7, 8, 32771, 32773, 32946, 50000}},
    {TIFFTAG_PHOTOMETRIC, {0, 1, 2, 3, 4, 5, 6, 8, 9, 10, 32844}},
    {TIFFTAG_SAMPLESPERPIXEL, {1, 2, 3, 4, 5, 6, 8, 200}},
    {TIFFTAG_PLANARCONFIG, {1, 2}},
    {TIFFTAG_SAMPLEFORMAT, {1, 4}},
};

const std::vector<std::uint32_t> codes = {
    COMPRESSION_CCITTRLE,  COMPRESSION_CCITTFAX3, COMPRESSION_CCITTFAX4,     COMPRESSION_LZW,
    COMPRESSION_OJPEG,     COMPRESSION_JPEG,      COMPRESSION_ADOBE_DEFLATE, COMPRESSION_NEXT,
    COMPRESSION_CCITTRLEW, COMPRESSION_PACKBITS,  COMPRESSION_THUNDERSCAN,   COMPRESSION_PIXARLOG,
    COMPRESSION_DEFLATE,   COMPRESSION_SGILOG,    COMPRESSION_LZMA,          COMPRESSION_ZSTD,
    COMPRESSION_WEBP,      PHOTOMETRIC_LOGL,      PHOTOMETRIC_LOGLUV,        PHOTOMETRIC_CFA};

const std::vector<std::uint32_t> tags = {
    TIFFTAG_PREDICTOR,  TIFFTAG_EXTRASAMPLES, TIFFTAG_YCBCRSUBSAMPLING, TIFFTAG_COLORMAP,
    TIFFTAG_JPEGTABLES, TIFFTAG_TILEWIDTH,    TIFFTAG_TILELENGTH,       TIFFTAG_STRIPOFFSETS,
    TIFFTAG_SUBIFD,     TIFFTAG_ORIENTATION,  TIFFTAG_FILLORDER,        TIFFTAG_GROUP3OPTIONS,
    TIFFTAG_IMAGEDEPTH, TIFFTAG_TILEDEPTH,    TIFFTAG_SMINSAMPLEVALUE,  TIFFTAG_TRANSFERFUNCTION,
    TIFFTAG_INKSET};

class HostileTiff : public HostileTest {
protected:
    void TryForm(TiffForm form, std::size_t bytesPerPixel) {
        form.width = width;
        form.height = height;
        form.mode = "wl";
        std::vector<Bytes> planes(1, noise(pixels * bytesPerPixel));
        if (form.planarConfig == PLANARCONFIG_SEPARATE) {
            planes.assign(form.samples, noise(pixels * bytesPerPixel / form.samples));
        }
        writeTiff(folder.File("whole"), form, planes);
        const Bytes whole = readFile(folder.File("whole"));
        TryToLoad(whole, rowRatio);
        EXPECT_EQ(failedCount, 0U);
        const std::size_t directory = getLittle(whole, 4, 4);
        const std::size_t count = getLittle(whole, directory, 2);
        TryEntries(whole, directory + 2, count);
        TryManyAtOnce(whole, directory + 2, count);
    }

private:
    void TryEntries(const Bytes& whole, std::size_t first, std::size_t count) {
        for (std::size_t entry = first; entry < first + count * entrySize; entry += entrySize) {
            for (std::uint32_t type = 0; type < 20; ++type) {
                Change(whole, entry + 2, type, 2);
            }
            for (const std::uint32_t value : boundaryValues) {
                Change(whole, entry + 4, value, 4);
                Change(whole, entry + 8, value, 4);
                Change(whole, entry + 8, static_cast<std::uint32_t>(whole.size()) - value, 4);
            }
            for (const std::uint32_t code : codes) {
                Change(whole, entry + 8, code, 4);
            }
            for (const std::uint32_t tag : tags) {
                Change(whole, entry, tag, 2);
            }
        }
    }

    void Change(const Bytes& whole, std::size_t place, std::uint32_t value, std::size_t size) {
        Bytes bytes = whole;
        putLittle(bytes, place, value, size);
        TryToLoad(bytes, rowRatio);
    }

    // Forms that are only reached by several fields that go together.
    void TryManyAtOnce(const Bytes& whole, std::size_t first, std::size_t count) {
        std::mt19937 generator(1);
        for (int round = 0; round < 1500; ++round) {
            Bytes bytes = whole;
            for (std::size_t i = 0; i < count; ++i) {
                const std::size_t entry = first + i * entrySize;
                for (const Choice& choice : choices) {
                    if (getLittle(whole, entry, 2) == choice.tag && generator() % 3 == 0) {
                        putLittle(bytes, entry + 4, 1, 4);
                        putLittle(bytes, entry + 8,
                                  choice.values[generator() % choice.values.size()], 4);
                    }
                }
            }
            TryToLoad(bytes, rowRatio);
        }
    }
};

TEST_F(HostileTiff, Gray) {
    TryForm({}, 1);
}

TEST_F(HostileTiff, GrayWithSamplesBeside) {
    TryForm({.samples = 4}, 4);
}

TEST_F(HostileTiff, PlanarLzwOf16Bits) {
    TryForm({.photometric = PHOTOMETRIC_RGB,
             .samples = 4,
             .bits = 16,
             .compression = COMPRESSION_LZW,
             .planarConfig = PLANARCONFIG_SEPARATE},
            8);
}

TEST_F(HostileTiff, TilesWithDeflate) {
    TryForm({.photometric = PHOTOMETRIC_RGB,
             .samples = 3,
             .compression = COMPRESSION_ADOBE_DEFLATE,
             .places = TiffPlaces::Tiles},
            3);
}

TEST_F(HostileTiff, PlanarTilesOfInks) {
    TryForm({.photometric = PHOTOMETRIC_SEPARATED,
             .samples = 4,
             .compression = COMPRESSION_PACKBITS,
             .planarConfig = PLANARCONFIG_SEPARATE,
             .places = TiffPlaces::Tiles},
            4);
}

TEST_F(HostileTiff, JpegStrips) {
    TryForm({.photometric = PHOTOMETRIC_YCBCR,
             .samples = 3,
             .compression = COMPRESSION_JPEG,
             .rowsPerStrip = 16},
            3);
}

TEST_F(HostileTiff, Palette) {
    TiffForm form{.photometric = PHOTOMETRIC_PALETTE, .compression = COMPRESSION_LZW};
    form.colorMap.assign(768, 1000);
    TryForm(form, 1);
}

TEST_F(HostileTiff, LabColors) {
    TryForm({.photometric = PHOTOMETRIC_CIELAB, .samples = 3}, 3);
}

TEST_F(HostileTiff, TilesOfBrightnessAndDifferences) {
    TryForm({.photometric = PHOTOMETRIC_YCBCR, .samples = 3, .places = TiffPlaces::Tiles}, 3);
}

}  // namespace
}  // namespace Orlix::Test
