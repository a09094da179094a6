#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>

#include "orlixcamera/codecs/testfiles.h"
#include "orlixcamera/codecs/tifffiles.h"

namespace Orlix::Test {
namespace {

constexpr std::uint32_t width = 37;
constexpr std::uint32_t height = 21;
constexpr std::size_t pixels = std::size_t{width} * height;

using Numbers = std::vector<std::uint16_t>;

Bytes slopes(std::size_t channels) {
    Bytes bytes;
    for (std::size_t y = 0; y < height; ++y) {
        for (std::size_t x = 0; x < width; ++x) {
            for (std::size_t i = 0; i < channels; ++i) {
                bytes.push_back(static_cast<unsigned char>(40 + 3 * x + 4 * y + 5 * i));
            }
        }
    }
    return bytes;
}

// One plane for each sample of the pixels.
std::vector<Bytes> planesOf(const Bytes& bytes, std::size_t samples, std::size_t sampleBytes) {
    std::vector<Bytes> planes(samples);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        planes[i / sampleBytes % samples].push_back(bytes[i]);
    }
    return planes;
}

// Keeps the first bytes of each group.
Bytes keepOf(const Bytes& bytes, std::size_t group, std::size_t kept) {
    Bytes result;
    for (std::size_t i = 0; i < bytes.size(); i += group) {
        result.insert(result.end(), bytes.begin() + static_cast<std::ptrdiff_t>(i),
                      bytes.begin() + static_cast<std::ptrdiff_t>(i + kept));
    }
    return result;
}

Bytes inverted(Bytes bytes) {
    std::transform(bytes.begin(), bytes.end(), bytes.begin(),
                   [](unsigned char byte) { return static_cast<unsigned char>(~byte); });
    return bytes;
}

class TiffDecoderTest : public testing::Test {
protected:
    [[nodiscard]] COrlixImage WriteAndLoad(TiffForm form, const Bytes& rows) const {
        form.width = width;
        form.height = height;
        const bool isPlanar = form.planarConfig == PLANARCONFIG_SEPARATE;
        writeTiff(
            folder.File("a.tif"), form,
            isPlanar ? planesOf(rows, form.samples, form.bits / 8U) : std::vector<Bytes>{rows});
        return load(folder.File("a.tif"));
    }

    TemporaryFolder folder;
};

// Every lossless way to lay out and compress the samples.
using Layout = std::tuple<std::uint16_t, TiffPlaces, std::uint16_t, const char*>;

class TiffDecoder : public TiffDecoderTest, public testing::WithParamInterface<Layout> {
protected:
    [[nodiscard]] COrlixImage Run(std::uint16_t photometric, std::uint16_t samples,
                                  std::uint16_t bits, const Bytes& rows,
                                  std::uint16_t extraSample = EXTRASAMPLE_UNASSALPHA) const {
        TiffForm form{.photometric = photometric,
                      .samples = samples,
                      .bits = bits,
                      .extraSample = extraSample};
        std::tie(form.compression, form.places, form.planarConfig, form.mode) = GetParam();
        return WriteAndLoad(form, rows);
    }
};

INSTANTIATE_TEST_SUITE_P(
    Layouts, TiffDecoder,
    testing::Combine(testing::Values(COMPRESSION_NONE, COMPRESSION_LZW, COMPRESSION_ADOBE_DEFLATE,
                                     COMPRESSION_PACKBITS),
                     testing::Values(TiffPlaces::Strips, TiffPlaces::Tiles),
                     testing::Values(PLANARCONFIG_CONTIG, PLANARCONFIG_SEPARATE),
                     testing::Values("wl", "wb", "w8")));

TEST_P(TiffDecoder, GrayIsMono8OrMono16) {
    const Bytes rows8 = noise(pixels);
    expectImage(Run(PHOTOMETRIC_MINISBLACK, 1, 8, rows8), PixelType_Mono8, width, height, rows8);
    const Bytes rows16 = noise(pixels * 2);
    expectImage(Run(PHOTOMETRIC_MINISBLACK, 1, 16, rows16), PixelType_Mono16, width, height,
                rows16);
}

TEST_P(TiffDecoder, GrayThatCountsFromWhiteIsInverted) {
    const Bytes rows8 = noise(pixels);
    expectImage(Run(PHOTOMETRIC_MINISWHITE, 1, 8, rows8), PixelType_Mono8, width, height,
                inverted(rows8));
    const Bytes rows16 = noise(pixels * 2);
    expectImage(Run(PHOTOMETRIC_MINISWHITE, 1, 16, rows16), PixelType_Mono16, width, height,
                inverted(rows16));
}

TEST_P(TiffDecoder, GrayWithAlphaIsRgba8PackedOrMono16) {
    const Bytes rows8 = noise(pixels * 2);
    Bytes expected;
    for (std::size_t i = 0; i < rows8.size(); i += 2) {
        expected.insert(expected.end(), {rows8[i], rows8[i], rows8[i], rows8[i + 1]});
    }
    expectImage(Run(PHOTOMETRIC_MINISBLACK, 2, 8, rows8), PixelType_RGBA8Packed, width, height,
                expected);
    const Bytes rows16 = noise(pixels * 4);
    expectImage(Run(PHOTOMETRIC_MINISBLACK, 2, 16, rows16), PixelType_Mono16, width, height,
                keepOf(rows16, 4, 2));
}

TEST_P(TiffDecoder, RgbIsRgb8PackedOrRgb16Packed) {
    const Bytes rows8 = noise(pixels * 3);
    expectImage(Run(PHOTOMETRIC_RGB, 3, 8, rows8), PixelType_RGB8Packed, width, height, rows8);
    const Bytes rows16 = noise(pixels * 6);
    expectImage(Run(PHOTOMETRIC_RGB, 3, 16, rows16), PixelType_RGB16Packed, width, height, rows16);
}

TEST_P(TiffDecoder, RgbWithAlphaIsRgba8PackedOrRgb16Packed) {
    const Bytes rows8 = noise(pixels * 4);
    expectImage(Run(PHOTOMETRIC_RGB, 4, 8, rows8), PixelType_RGBA8Packed, width, height, rows8);
    const Bytes rows16 = noise(pixels * 8);
    expectImage(Run(PHOTOMETRIC_RGB, 4, 16, rows16), PixelType_RGB16Packed, width, height,
                keepOf(rows16, 8, 6));
}

// Pictures of as many bytes per pixel as what they become are among them.
TEST_P(TiffDecoder, FurtherSamplesBesideGrayAndAlphaAreLeftOut) {
    for (const std::uint16_t samples : Numbers{3, 4, 5}) {
        const Bytes rows8 = noise(pixels * samples);
        Bytes expected;
        for (std::size_t i = 0; i < rows8.size(); i += samples) {
            expected.insert(expected.end(), {rows8[i], rows8[i], rows8[i], rows8[i + 1]});
        }
        expectImage(Run(PHOTOMETRIC_MINISBLACK, samples, 8, rows8), PixelType_RGBA8Packed, width,
                    height, expected);
        const Bytes rows16 = noise(pixels * 2 * samples);
        expectImage(Run(PHOTOMETRIC_MINISBLACK, samples, 16, rows16), PixelType_Mono16, width,
                    height, keepOf(rows16, std::size_t{2} * samples, 2));
    }
}

TEST_P(TiffDecoder, SamplesOfNoMeaningBesideGrayAreLeftOut) {
    for (const std::uint16_t samples : Numbers{2, 4}) {
        for (const std::uint16_t bits : Numbers{8, 16}) {
            const std::size_t sampleBytes = bits / 8U;
            const Bytes rows = noise(pixels * samples * sampleBytes);
            expectImage(Run(PHOTOMETRIC_MINISBLACK, samples, bits, rows, EXTRASAMPLE_UNSPECIFIED),
                        bits == 8 ? PixelType_Mono8 : PixelType_Mono16, width, height,
                        keepOf(rows, samples * sampleBytes, sampleBytes));
        }
    }
}

TEST_P(TiffDecoder, FurtherSamplesBesideRgbAndAlphaAreLeftOut) {
    for (const std::uint16_t samples : Numbers{5, 6}) {
        const Bytes rows8 = noise(pixels * samples);
        expectImage(Run(PHOTOMETRIC_RGB, samples, 8, rows8), PixelType_RGBA8Packed, width, height,
                    keepOf(rows8, samples, 4));
        const Bytes rows16 = noise(pixels * 2 * samples);
        expectImage(Run(PHOTOMETRIC_RGB, samples, 16, rows16), PixelType_RGB16Packed, width, height,
                    keepOf(rows16, std::size_t{2} * samples, 6));
    }
}

TEST_P(TiffDecoder, CmykIsLight) {
    const Bytes rows8 = noise(pixels * 4);
    Bytes expected;
    for (std::size_t i = 0; i < rows8.size(); i += 4) {
        for (std::size_t c = 0; c < 3; ++c) {
            const int product = (255 - rows8[i + c]) * (255 - rows8[i + 3]);
            expected.push_back(static_cast<unsigned char>((product + 127) / 255));
        }
    }
    expectImage(Run(PHOTOMETRIC_SEPARATED, 4, 8, rows8), PixelType_RGB8Packed, width, height,
                expected);
    const std::vector<std::uint16_t> inks(pixels * 4, 0x8000);
    expectImage(Run(PHOTOMETRIC_SEPARATED, 4, 16, nativeBytes(inks)), PixelType_RGB16Packed, width,
                height, nativeBytes(std::vector<std::uint16_t>(pixels * 3, 0x3FFF)));
}

TEST_F(TiffDecoderTest, SizesAroundThoseOfTilesAndStripsAreWhole) {
    for (const TiffPlaces places : {TiffPlaces::Strips, TiffPlaces::Tiles}) {
        for (const std::uint16_t planar : Numbers{PLANARCONFIG_CONTIG, PLANARCONFIG_SEPARATE}) {
            for (const std::uint32_t w : {1U, 15U, 16U, 17U, 32U}) {
                for (const std::uint32_t h : {1U, 4U, 5U, 6U, 15U, 16U, 17U, 32U}) {
                    const TiffForm form{.width = w,
                                        .height = h,
                                        .photometric = PHOTOMETRIC_RGB,
                                        .samples = 3,
                                        .compression = COMPRESSION_LZW,
                                        .planarConfig = planar,
                                        .places = places};
                    const Bytes rows = noise(std::size_t{3} * w * h, w * 100 + h);
                    const bool isPlanar = planar == PLANARCONFIG_SEPARATE;
                    writeTiff(folder.File("a.tif"), form,
                              isPlanar ? planesOf(rows, 3, 1) : std::vector<Bytes>{rows});
                    expectImage(load(folder.File("a.tif")), PixelType_RGB8Packed, w, h, rows);
                }
            }
        }
    }
}

TEST_F(TiffDecoderTest, GrayOfFewBitsIsScaledToMono8) {
    for (const unsigned bits : {1U, 2U, 4U}) {
        for (const std::uint16_t compression :
             Numbers{COMPRESSION_NONE, COMPRESSION_LZW, COMPRESSION_ADOBE_DEFLATE}) {
            const TiffForm form{.width = width,
                                .photometric = PHOTOMETRIC_MINISBLACK,
                                .bits = static_cast<std::uint16_t>(bits),
                                .compression = compression};
            const std::size_t rowBytes = tiffRowBytes(form);
            const Bytes rows = noise(height * rowBytes);
            Bytes expected;
            for (std::size_t i = 0; i < pixels; ++i) {
                const std::size_t bit = i % width * bits;
                const unsigned byte = rows[i / width * rowBytes + bit / 8];
                const unsigned sample = (byte >> (8 - bits - bit % 8)) & ((1U << bits) - 1);
                expected.push_back(static_cast<unsigned char>(sample * 255 / ((1U << bits) - 1)));
            }
            expectImage(WriteAndLoad(form, rows), PixelType_Mono8, width, height, expected);
        }
    }
}

TEST_F(TiffDecoderTest, FaxOfBlackAndWhiteIsMono8) {
    for (const std::uint16_t compression :
         Numbers{COMPRESSION_CCITTRLE, COMPRESSION_CCITTFAX3, COMPRESSION_CCITTFAX4}) {
        TiffForm form{.width = width,
                      .photometric = PHOTOMETRIC_MINISWHITE,
                      .bits = 1,
                      .compression = compression};
        Bytes rows(height * tiffRowBytes(form), 0);
        rows[0] = 0xF0;
        Bytes expected(pixels, 255);
        std::fill_n(expected.begin(), 4, static_cast<unsigned char>(0));
        expectImage(WriteAndLoad(form, rows), PixelType_Mono8, width, height, expected);
        rows = noise(rows.size());
        for (std::size_t i = 0; i < pixels; ++i) {
            const unsigned byte = rows[i / width * tiffRowBytes(form) + i % width / 8];
            expected[i] = (byte >> (7 - i % width % 8) & 1U) != 0 ? 0 : 255;
        }
        expectImage(WriteAndLoad(form, rows), PixelType_Mono8, width, height, expected);
    }
}

TEST_F(TiffDecoderTest, FaxOfRowsAtEvenBytesIsRefused) {
    TiffForm form{.width = width,
                  .height = height,
                  .photometric = PHOTOMETRIC_MINISWHITE,
                  .bits = 1,
                  .compression = COMPRESSION_CCITTRLEW};
    writeTiff(folder.File("a.tif"), form, {Bytes(height * tiffRowBytes(form), 0x5A)});
    EXPECT_EQ(loadError(folder.File("a.tif")), "Cannot load TIFF image file '" +
                                                   folder.File("a.tif") +
                                                   "': compression 32771 is not supported.");
}

TEST_F(TiffDecoderTest, TheRarerLosslessCodesAreUnderstood) {
    for (const std::uint16_t compression : Numbers{COMPRESSION_DEFLATE, COMPRESSION_ZSTD}) {
        const Bytes rows = noise(pixels * 3);
        expectImage(
            WriteAndLoad({.photometric = PHOTOMETRIC_RGB, .samples = 3, .compression = compression},
                         rows),
            PixelType_RGB8Packed, width, height, rows);
    }
}

TEST_F(TiffDecoderTest, PaletteIsRgb8Packed) {
    for (const std::uint16_t compression :
         Numbers{COMPRESSION_NONE, COMPRESSION_LZW, COMPRESSION_ADOBE_DEFLATE}) {
        for (const TiffPlaces places : {TiffPlaces::Strips, TiffPlaces::Tiles}) {
            TiffForm form{
                .photometric = PHOTOMETRIC_PALETTE, .compression = compression, .places = places};
            const Bytes colors = noise(768, 3);
            for (const unsigned char color : colors) {
                form.colorMap.push_back(static_cast<std::uint16_t>(color * 257));
            }
            const Bytes rows = noise(pixels);
            Bytes expected;
            for (const std::size_t index : rows) {
                expected.insert(expected.end(),
                                {colors[index], colors[256 + index], colors[512 + index]});
            }
            expectImage(WriteAndLoad(form, rows), PixelType_RGB8Packed, width, height, expected);
        }
    }
}

// Pixels of one value and two that stand for no colour. The white that L*a*b* begins from is not
// that of a screen.
TEST_F(TiffDecoderTest, ColorsOfBrightnessAndDifferencesAreRgb8Packed) {
    for (const TiffPlaces places : {TiffPlaces::Strips, TiffPlaces::Tiles}) {
        Bytes yuv;
        Bytes lab;
        Bytes grays;
        Bytes blackAndWarmWhite;
        for (std::size_t i = 0; i < pixels; ++i) {
            const auto gray = static_cast<unsigned char>(i * 7);
            const auto end = static_cast<unsigned char>(i % 3 == 0 ? 255 : 0);
            yuv.insert(yuv.end(), {gray, 128, 128});
            grays.insert(grays.end(), 3, gray);
            lab.insert(lab.end(), {end, 0, 0});
            const Bytes color = end == 0 ? Bytes{0, 0, 0} : Bytes{255, 255, 222};
            blackAndWarmWhite.insert(blackAndWarmWhite.end(), color.begin(), color.end());
        }
        TiffForm form{.photometric = PHOTOMETRIC_YCBCR, .samples = 3, .places = places};
        const COrlixImage image = WriteAndLoad(form, yuv);
        EXPECT_EQ(image.GetPixelType(), PixelType_RGB8Packed);
        expectNear(pixelsOf(image), grays, 1);
        form.photometric = PHOTOMETRIC_CIELAB;
        const COrlixImage ends = WriteAndLoad(form, lab);
        EXPECT_EQ(ends.GetPixelType(), PixelType_RGB8Packed);
        expectNear(pixelsOf(ends), blackAndWarmWhite, 3);
    }
}

TEST_F(TiffDecoderTest, APaletteOfEightBitColorsIsUnderstood) {
    TiffForm form{.photometric = PHOTOMETRIC_PALETTE, .bits = 4};
    form.colorMap.assign(48, 200);
    form.width = width;
    const COrlixImage image = WriteAndLoad(form, Bytes(height * tiffRowBytes(form)));
    EXPECT_EQ(pixelsOf(image), Bytes(pixels * 3, 200));
}

TEST_F(TiffDecoderTest, JpegInStripsAndTiles) {
    for (const TiffPlaces places : {TiffPlaces::Strips, TiffPlaces::Tiles}) {
        TiffForm form{.compression = COMPRESSION_JPEG, .places = places, .rowsPerStrip = 16};
        const COrlixImage gray = WriteAndLoad(form, slopes(1));
        EXPECT_EQ(gray.GetPixelType(), PixelType_Mono8);
        expectNear(pixelsOf(gray), slopes(1), 2);
        form.samples = 3;
        form.photometric = PHOTOMETRIC_YCBCR;
        const COrlixImage color = WriteAndLoad(form, slopes(3));
        EXPECT_EQ(color.GetPixelType(), PixelType_RGB8Packed);
        expectNear(pixelsOf(color), slopes(3), 6);
        form.photometric = PHOTOMETRIC_RGB;
        form.planarConfig = PLANARCONFIG_SEPARATE;
        const COrlixImage planar = WriteAndLoad(form, slopes(3));
        EXPECT_EQ(planar.GetPixelType(), PixelType_RGB8Packed);
        expectNear(pixelsOf(planar), slopes(3), 2);
    }
}

TEST_F(TiffDecoderTest, APictureStoredBottomUpIsTurned) {
    const Bytes rows = noise(pixels * 3);
    Bytes expected;
    for (std::size_t y = height; y-- > 0;) {
        const auto row = rows.begin() + static_cast<std::ptrdiff_t>(y * width * 3);
        expected.insert(expected.end(), row, row + width * 3);
    }
    expectImage(
        WriteAndLoad(
            {.photometric = PHOTOMETRIC_RGB, .samples = 3, .orientation = ORIENTATION_BOTLEFT},
            rows),
        PixelType_RGB8Packed, width, height, expected);
}

TEST_F(TiffDecoderTest, SamplesThatAreNoUnsignedIntegersAreRefused) {
    TiffForm form{.width = width, .height = height, .sampleFormat = SAMPLEFORMAT_INT};
    writeTiff(folder.File("a.tif"), form, {Bytes(pixels)});
    EXPECT_EQ(loadError(folder.File("a.tif")),
              "Cannot load TIFF image file '" + folder.File("a.tif") +
                  "': samples that are not unsigned integers are not supported.");
}

TEST_F(TiffDecoderTest, AnUnknownDepthIsRefused) {
    TiffForm form{.width = width, .height = height, .bits = 32};
    writeTiff(folder.File("a.tif"), form, {Bytes(pixels * 4)});
    EXPECT_EQ(loadError(folder.File("a.tif")),
              "Cannot load TIFF image file '" + folder.File("a.tif") +
                  "': a picture of 1 samples of 32 bits per pixel is not supported.");
}

TEST_F(TiffDecoderTest, AFileThatEndsAnywhereIsAnErrorThatNamesTheFile) {
    for (const std::uint16_t compression :
         Numbers{COMPRESSION_NONE, COMPRESSION_LZW, COMPRESSION_ADOBE_DEFLATE, COMPRESSION_JPEG}) {
        TiffForm form{.width = width, .height = height, .compression = compression};
        form.rowsPerStrip = 8;
        writeTiff(folder.File("a.tif"), form, {slopes(1)});
        const Bytes whole = readFile(folder.File("a.tif"));
        for (std::size_t size = 8; size < whole.size(); size += 7) {
            const auto end = whole.begin() + static_cast<std::ptrdiff_t>(size);
            const std::string path = folder.Write("cut.tif", Bytes(whole.begin(), end));
            EXPECT_EQ(loadError(path).rfind("Cannot load TIFF image file '" + path + "': ", 0), 0U)
                << compression << " " << size << " " << loadError(path);
        }
    }
}

TEST_F(TiffDecoderTest, AHeaderThatLiesAboutTheSizeAllocatesNothing) {
    TiffForm form{.width = width, .height = height, .compression = COMPRESSION_LZW, .mode = "wl"};
    form.rowsPerStrip = height;
    writeTiff(folder.File("a.tif"), form, {Bytes(pixels)});
    Bytes bytes = readFile(folder.File("a.tif"));
    // The entries of width and height: tag, type, count, value.
    for (std::size_t i = 0; i + 12 <= bytes.size(); ++i) {
        const bool isSize = (bytes[i] == 0x00 || bytes[i] == 0x01) && bytes[i + 1] == 0x01;
        if (isSize && bytes[i + 2] == 3 && bytes[i + 3] == 0 && bytes[i + 4] == 1) {
            bytes[i + 8] = bytes[i + 9] = 0xFF;
        }
    }
    const std::string path = folder.Write("b.tif", bytes);
    EXPECT_EQ(loadError(path),
              "Cannot load TIFF image file '" + path +
                  "': the header tells a size of 65535 x 65535 pixels, more than a file of " +
                  std::to_string(bytes.size()) + " bytes can hold.");
}

}  // namespace
}  // namespace Orlix::Test
