#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <string>
#include <string_view>

#include "orlixcamera/codecs/pngfiles.h"
#include "orlixcamera/codecs/testfiles.h"

namespace Orlix::Test {
namespace {

constexpr std::uint32_t width = 21;
constexpr std::uint32_t height = 19;
constexpr std::size_t pixels = std::size_t{width} * height;

// Every case is run without and with interlacing.
class PngDecoder : public testing::TestWithParam<bool> {
protected:
    [[nodiscard]] COrlixImage WriteAndLoad(PngForm form, const Bytes& rows) const {
        form.width = width;
        form.height = height;
        form.isInterlaced = GetParam();
        writePng(folder.File("a.png"), form, rows);
        return load(folder.File("a.png"));
    }

    TemporaryFolder folder;
};

INSTANTIATE_TEST_SUITE_P(Plain, PngDecoder, testing::Values(false));
INSTANTIATE_TEST_SUITE_P(Interlaced, PngDecoder, testing::Values(true));

// Big-endian file samples as the 16-bit samples of the machine.
Bytes toNative(const Bytes& bigEndian) {
    std::vector<std::uint16_t> samples;
    for (std::size_t i = 0; i < bigEndian.size(); i += 2) {
        samples.push_back(static_cast<std::uint16_t>(bigEndian[i] << 8U | bigEndian[i + 1]));
    }
    return nativeBytes(samples);
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

// The samples of rows that are packed from the highest bit on.
std::vector<unsigned> unpack(const Bytes& rows, unsigned bits) {
    std::vector<unsigned> samples;
    const std::size_t rowBytes = rows.size() / height;
    for (std::size_t y = 0; y < height; ++y) {
        for (std::size_t x = 0; x < width; ++x) {
            const unsigned byte = rows[y * rowBytes + x * bits / 8];
            samples.push_back((byte >> (8 - bits - x * bits % 8)) & ((1U << bits) - 1));
        }
    }
    return samples;
}

TEST_P(PngDecoder, Gray8IsMono8) {
    const Bytes rows = noise(pixels);
    expectImage(WriteAndLoad({.colorType = 0}, rows), PixelType_Mono8, width, height, rows);
}

TEST_P(PngDecoder, Gray16IsMono16InTheOrderOfTheMachine) {
    const Bytes rows = noise(pixels * 2);
    expectImage(WriteAndLoad({.colorType = 0, .bits = 16}, rows), PixelType_Mono16, width, height,
                toNative(rows));
}

TEST_P(PngDecoder, GrayOfFewBitsIsScaledToMono8) {
    for (const unsigned bits : {1U, 2U, 4U}) {
        const Bytes rows = noise(height * ((width * bits + 7) / 8));
        Bytes expected;
        for (const unsigned sample : unpack(rows, bits)) {
            expected.push_back(static_cast<unsigned char>(sample * 255 / ((1U << bits) - 1)));
        }
        expectImage(WriteAndLoad({.colorType = 0, .bits = static_cast<int>(bits)}, rows),
                    PixelType_Mono8, width, height, expected);
    }
}

TEST_P(PngDecoder, Rgb8IsRgb8Packed) {
    const Bytes rows = noise(pixels * 3);
    expectImage(WriteAndLoad({.colorType = 2}, rows), PixelType_RGB8Packed, width, height, rows);
}

TEST_P(PngDecoder, Rgb16IsRgb16Packed) {
    const Bytes rows = noise(pixels * 6);
    expectImage(WriteAndLoad({.colorType = 2, .bits = 16}, rows), PixelType_RGB16Packed, width,
                height, toNative(rows));
}

TEST_P(PngDecoder, Rgba8IsRgba8Packed) {
    const Bytes rows = noise(pixels * 4);
    expectImage(WriteAndLoad({.colorType = 6}, rows), PixelType_RGBA8Packed, width, height, rows);
}

TEST_P(PngDecoder, Rgba16KeepsItsDepthAndLosesItsAlpha) {
    const Bytes rows = noise(pixels * 8);
    expectImage(WriteAndLoad({.colorType = 6, .bits = 16}, rows), PixelType_RGB16Packed, width,
                height, toNative(keepOf(rows, 8, 6)));
}

// Interlaced, these have passes without pixels.
TEST_P(PngDecoder, EverySmallSizeIsWhole) {
    for (std::uint32_t w = 1; w <= 9; ++w) {
        for (std::uint32_t h = 1; h <= 9; ++h) {
            PngForm form{.width = w, .height = h, .colorType = 6, .bits = 16};
            form.isInterlaced = GetParam();
            const Bytes deep = noise(std::size_t{8} * w * h, w * 10 + h);
            writePng(folder.File("a.png"), form, deep);
            expectImage(load(folder.File("a.png")), PixelType_RGB16Packed, w, h,
                        toNative(keepOf(deep, 8, 6)));
            form.colorType = 2;
            form.bits = 8;
            const Bytes flat = noise(std::size_t{3} * w * h, w * 10 + h);
            writePng(folder.File("a.png"), form, flat);
            expectImage(load(folder.File("a.png")), PixelType_RGB8Packed, w, h, flat);
        }
    }
}

TEST_P(PngDecoder, GrayWithAlphaIsRgba8Packed) {
    const Bytes rows = noise(pixels * 2);
    Bytes expected;
    for (std::size_t i = 0; i < rows.size(); i += 2) {
        expected.insert(expected.end(), {rows[i], rows[i], rows[i], rows[i + 1]});
    }
    expectImage(WriteAndLoad({.colorType = 4}, rows), PixelType_RGBA8Packed, width, height,
                expected);
}

TEST_P(PngDecoder, Gray16WithAlphaKeepsItsDepthAndLosesItsAlpha) {
    const Bytes rows = noise(pixels * 4);
    expectImage(WriteAndLoad({.colorType = 4, .bits = 16}, rows), PixelType_Mono16, width, height,
                toNative(keepOf(rows, 4, 2)));
}

TEST_P(PngDecoder, PaletteIsRgb8PackedAndWithAlphaRgba8Packed) {
    for (const unsigned bits : {1U, 2U, 4U, 8U}) {
        PngForm form{.colorType = 3, .bits = static_cast<int>(bits)};
        const Bytes colors = noise(3U << bits, 7);
        for (std::size_t i = 0; i < colors.size(); i += 3) {
            form.palette.push_back({colors[i], colors[i + 1], colors[i + 2]});
        }
        const Bytes rows = noise(height * ((width * bits + 7) / 8));
        Bytes opaque;
        Bytes transparent;
        for (const unsigned index : unpack(rows, bits)) {
            const auto& color = form.palette[index];
            opaque.insert(opaque.end(), color.begin(), color.end());
            transparent.insert(transparent.end(), color.begin(), color.end());
            transparent.push_back(index == 1 ? 77 : 255);
        }
        expectImage(WriteAndLoad(form, rows), PixelType_RGB8Packed, width, height, opaque);
        form.paletteAlpha = {255, 77};
        expectImage(WriteAndLoad(form, rows), PixelType_RGBA8Packed, width, height, transparent);
    }
}

TEST_P(PngDecoder, ATransparentValueOf8BitsBecomesAlpha) {
    Bytes rows = noise(pixels);
    rows[5] = 100;
    Bytes expected;
    for (const unsigned char gray : rows) {
        const unsigned char alpha = gray == 100 ? 0 : 255;
        expected.insert(expected.end(), {gray, gray, gray, alpha});
    }
    expectImage(WriteAndLoad({.colorType = 0, .transparentSample = 100}, rows),
                PixelType_RGBA8Packed, width, height, expected);

    Bytes colors = noise(pixels * 3);
    std::fill_n(colors.begin() + 9, 3, static_cast<unsigned char>(100));
    const COrlixImage image = WriteAndLoad({.colorType = 2, .transparentSample = 100}, colors);
    EXPECT_EQ(image.GetPixelType(), PixelType_RGBA8Packed);
    EXPECT_EQ(pixelsOf(image)[15], 0);
    EXPECT_EQ(pixelsOf(image)[19], 255);
}

TEST_P(PngDecoder, ATransparentValueOf16BitsIsIgnored) {
    const Bytes rows = noise(pixels * 2);
    const int present = rows[0] << 8 | rows[1];
    expectImage(WriteAndLoad({.colorType = 0, .bits = 16, .transparentSample = present}, rows),
                PixelType_Mono16, width, height, toNative(rows));
}

TEST_P(PngDecoder, AFileThatEndsAnywhereIsTruncated) {
    writePng(folder.File("whole.png"),
             {.width = width, .height = height, .colorType = 2, .isInterlaced = GetParam()},
             noise(pixels * 3));
    const Bytes whole = readFile(folder.File("whole.png"));
    for (std::size_t size = 8; size < whole.size(); size += size < 100 ? 1 : 37) {
        const std::string path = folder.Write(
            "cut.png", Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)));
        EXPECT_EQ(loadError(path),
                  "Cannot load PNG image file '" + path + "': the file is truncated.");
    }
    const std::string path = folder.Write("cut.png", Bytes(whole.begin(), whole.end() - 1));
    EXPECT_EQ(loadError(path), "Cannot load PNG image file '" + path + "': the file is truncated.");
}

TEST_P(PngDecoder, AWrongChecksumIsAnError) {
    writePng(folder.File("a.png"),
             {.width = width, .height = height, .colorType = 2, .isInterlaced = GetParam()},
             noise(pixels * 3));
    Bytes bytes = readFile(folder.File("a.png"));
    bytes[bytes.size() / 2] ^= 1U;
    const std::string path = folder.Write("b.png", bytes);
    EXPECT_EQ(loadError(path).rfind("Cannot load PNG image file '" + path + "': ", 0), 0U);
}

// Behind the name of a chunk comes what it holds, and then the checksum.
Bytes withWrongChecksum(Bytes bytes, std::string_view name, std::size_t size) {
    const auto found = std::search(bytes.begin(), bytes.end(), name.begin(), name.end());
    EXPECT_NE(found, bytes.end());
    found[static_cast<std::ptrdiff_t>(name.size() + size)] ^= 1U;
    return bytes;
}

TEST(PngDecoderChunks, ATransparencyWithAWrongChecksumIsAnError) {
    const TemporaryFolder folder;
    writePng(folder.File("a.png"), {.width = 3, .height = 3, .transparentSample = 5}, noise(9));
    const Bytes bytes = readFile(folder.File("a.png"));
    EXPECT_EQ(load(folder.File("a.png")).GetPixelType(), PixelType_RGBA8Packed);
    const std::string path = folder.Write("b.png", withWrongChecksum(bytes, "tRNS", 2));
    EXPECT_EQ(loadError(path).rfind("Cannot load PNG image file '" + path + "': ", 0), 0U);
}

// Left out, it would change the pixels and their format in silence.
TEST(PngDecoderChunks, ATransparencyOfAWrongSizeOrInAWrongPlaceIsAnError) {
    const TemporaryFolder folder;
    const auto error = [&](PngChunkList chunks, std::ptrdiff_t place, std::size_t size) {
        chunks.insert(chunks.begin() + place, "tRNS" + std::string(size, '\1'));
        const std::string path = folder.Write("b.png", joinPngChunks(chunks));
        const std::string start = "Cannot load PNG image file '" + path + "': ";
        const std::string text = loadError(path);
        return text.starts_with(start) ? text.substr(start.size()) : text;
    };
    const std::string damaged = "the transparency is damaged.";
    for (const int bits : {8, 16}) {
        const Bytes rows = noise(static_cast<std::size_t>(9 * bits / 8));
        writePng(folder.File("a.png"), {.width = 3, .height = 3, .bits = bits}, rows);
        const PngChunkList gray = splitPngChunks(readFile(folder.File("a.png")));
        EXPECT_EQ(error(gray, 1, 2), "no exception");
        EXPECT_EQ(error(gray, 1, 0), damaged);
        EXPECT_EQ(error(gray, 1, 1), damaged);
        EXPECT_EQ(error(gray, 1, 3), damaged);
        EXPECT_EQ(error(gray, 2, 2), damaged) << "behind the pixels";
    }
    PngForm form{.width = 3, .height = 3, .colorType = 3, .palette = {{1, 2, 3}, {4, 5, 6}}};
    writePng(folder.File("a.png"), form, Bytes(9));
    PngChunkList palette = splitPngChunks(readFile(folder.File("a.png")));
    EXPECT_EQ(error(palette, 2, 2), "no exception");
    EXPECT_EQ(error(palette, 2, 0), damaged);
    EXPECT_EQ(error(palette, 2, 3), damaged);
    EXPECT_EQ(error(palette, 1, 2), damaged) << "in front of the palette";
    palette.insert(palette.begin() + 2, "tRNS\1\2");
    EXPECT_EQ(error(palette, 3, 2), damaged) << "a second one";
}

TEST(PngDecoderChunks, ATransparencyBesideSamplesOfAlphaMeansNothing) {
    const TemporaryFolder folder;
    const Bytes rows = noise(36);
    writePng(folder.File("a.png"), {.width = 3, .height = 3, .colorType = 6}, rows);
    PngChunkList chunks = splitPngChunks(readFile(folder.File("a.png")));
    chunks.insert(chunks.begin() + 1, "tRNSabcdef");
    expectImage(load(folder.Write("b.png", joinPngChunks(chunks))), PixelType_RGBA8Packed, 3, 3,
                rows);
}

TEST(PngDecoderChunks, AWrongChecksumOfATextIsAnError) {
    const TemporaryFolder folder;
    writePng(folder.File("a.png"), {.width = 3, .height = 3}, noise(9));
    PngChunkList chunks = splitPngChunks(readFile(folder.File("a.png")));
    chunks.insert(chunks.begin() + 1, "tEXtabc");
    const Bytes bytes = joinPngChunks(chunks);
    expectImage(load(folder.Write("b.png", bytes)), PixelType_Mono8, 3, 3, noise(9));
    const std::string path = folder.Write("b.png", withWrongChecksum(bytes, "tEXt", 3));
    EXPECT_EQ(loadError(path), "Cannot load PNG image file '" + path + "': a checksum is wrong.");
}

TEST(PngDecoderChunks, TextsThatUnpackToMuchAreLeftOut) {
    const TemporaryFolder folder;
    const Bytes text(std::size_t{8} << 20U, 'a');
    uLongf size = ::compressBound(text.size());
    std::string packed(size, '\0');
    ASSERT_EQ(::compress(reinterpret_cast<Bytef*>(packed.data()), &size, text.data(), text.size()),
              Z_OK);
    packed.resize(size);
    writePng(folder.File("a.png"), {.width = 3, .height = 3}, noise(9));
    const PngChunkList plain = splitPngChunks(readFile(folder.File("a.png")));
    // In front of the pixels, and behind them.
    for (const std::size_t place : {std::size_t{1}, plain.size() - 1}) {
        PngChunkList chunks = plain;
        const auto position = chunks.begin() + static_cast<std::ptrdiff_t>(place);
        chunks.insert(position, std::string("zTXta\0\0", 7) + packed);
        expectImage(load(folder.Write("b.png", joinPngChunks(chunks))), PixelType_Mono8, 3, 3,
                    noise(9));
    }
}

TEST(PngDecoderChunks, WhatHasNoPartInThePictureMayHaveAnyForm) {
    const TemporaryFolder folder;
    writePng(folder.File("a.png"), {.width = 3, .height = 3}, noise(9));
    for (const char* name : {"gAMA", "cHRM", "iCCP", "tIME", "sBIT", "iTXt", "sPLT", "quIt"}) {
        PngChunkList chunks = splitPngChunks(readFile(folder.File("a.png")));
        chunks.insert(chunks.begin() + 1, 2, std::string(name) + "?");
        chunks.insert(chunks.end() - 1, name);
        expectImage(load(folder.Write("b.png", joinPngChunks(chunks))), PixelType_Mono8, 3, 3,
                    noise(9));
    }
}

TEST(PngDecoderChunks, AColorThatThePaletteLacksIsBlack) {
    const TemporaryFolder folder;
    PngForm form{.width = 2, .height = 1, .colorType = 3, .palette = {{9, 8, 7}, {6, 5, 4}}};
    writePng(folder.File("a.png"), form, {1, 0});
    PngChunkList chunks = splitPngChunks(readFile(folder.File("a.png")));
    ASSERT_EQ(chunks[1].substr(0, 4), "PLTE");
    chunks[1].resize(4 + 3);
    expectImage(load(folder.Write("b.png", joinPngChunks(chunks))), PixelType_RGB8Packed, 2, 1,
                {0, 0, 0, 9, 8, 7});
}

TEST(PngDecoderBounds, OneLargeDataChunkIsNoProblem) {
    const TemporaryFolder folder;
    const Bytes rows = noise(std::size_t{1500} * 1500 * 3);
    writePng(folder.File("a.png"), {.width = 1500, .height = 1500, .colorType = 2}, rows);
    expectImage(load(folder.File("a.png")), PixelType_RGB8Packed, 1500, 1500, rows);
}

TEST(PngDecoderBounds, AHeaderThatLiesAboutTheSizeAllocatesNothing) {
    const TemporaryFolder folder;
    writePng(folder.File("a.png"), {.width = 3, .height = 3, .colorType = 2}, noise(27));
    Bytes bytes = readFile(folder.File("a.png"));
    bytes[17] = 0x0F;  // a high byte of the width
    bytes[21] = 0x0F;
    // The checksum of the header has to fit.
    const Bytes header(bytes.begin() + 12, bytes.begin() + 29);
    std::uint32_t crc = 0xFFFFFFFF;
    for (const unsigned char byte : header) {
        crc ^= byte;
        for (int i = 0; i < 8; ++i) {
            crc = (crc >> 1U) ^ ((crc & 1U) != 0 ? 0xEDB88320U : 0U);
        }
    }
    for (unsigned i = 0; i < 4; ++i) {
        bytes[29 + i] = static_cast<unsigned char>(~crc >> (24 - 8 * i));
    }
    const std::string path = folder.Write("b.png", bytes);
    EXPECT_EQ(loadError(path), "Cannot load PNG image file '" + path +
                                   "': the header tells a size of 983043 x 983043 pixels, "
                                   "more than a file of " +
                                   std::to_string(bytes.size()) + " bytes can hold.");
}

}  // namespace
}  // namespace Orlix::Test
