#include <gtest/gtest.h>

#include "orlixcamera/codecs/bmpfiles.h"
#include "orlixcamera/codecs/testfiles.h"
#include "orlixcamera/copycounter.h"

namespace Orlix::Test {
namespace {

constexpr std::uint32_t width = 13;
constexpr std::uint32_t height = 7;
constexpr std::size_t pixels = std::size_t{width} * height;

using Palette = std::vector<std::array<unsigned char, 3>>;

Palette colorPalette(std::size_t count) {
    const Bytes bytes = noise(count * 3, 5);
    Palette palette;
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        palette.push_back({bytes[i], bytes[i + 1], bytes[i + 2]});
    }
    return palette;
}

Palette grayPalette(std::size_t count) {
    Palette palette;
    for (std::size_t i = 0; i < count; ++i) {
        const auto gray = static_cast<unsigned char>(i * 255 / (count - 1));
        palette.push_back({gray, gray, gray});
    }
    return palette;
}

// The palette indices of packed rows.
std::vector<std::size_t> indicesOf(const Bytes& rows, unsigned bits) {
    std::vector<std::size_t> indices;
    const std::size_t rowBytes = rows.size() / height;
    for (std::size_t i = 0; i < pixels; ++i) {
        const std::size_t bit = i % width * bits;
        const unsigned byte = rows[i / width * rowBytes + bit / 8];
        indices.push_back((byte >> (8 - bits - bit % 8)) & ((1U << bits) - 1));
    }
    return indices;
}

// Every case is run with the bottom row first and with the top row first.
class BmpDecoder : public testing::TestWithParam<int> {
protected:
    [[nodiscard]] COrlixImage WriteAndLoad(BmpForm form, const Bytes& rows) const {
        form.width = width;
        form.height = GetParam() * static_cast<int>(height);
        return load(folder.Write("a.bmp", makeBmp(form, bmpRows(form, rows))));
    }

    TemporaryFolder folder;
};

INSTANTIATE_TEST_SUITE_P(BottomUp, BmpDecoder, testing::Values(1));
INSTANTIATE_TEST_SUITE_P(TopDown, BmpDecoder, testing::Values(-1));

TEST_P(BmpDecoder, APaletteOfColorsIsBgr8Packed) {
    for (const unsigned bits : {1U, 4U, 8U}) {
        BmpForm form{.bits = static_cast<std::uint16_t>(bits)};
        form.palette = colorPalette(std::size_t{1} << bits);
        const Bytes rows = noise(height * ((width * bits + 7) / 8));
        Bytes expected;
        for (const std::size_t index : indicesOf(rows, bits)) {
            const auto& color = form.palette[index];
            expected.insert(expected.end(), color.begin(), color.end());
        }
        expectImage(WriteAndLoad(form, rows), PixelType_BGR8Packed, width, height, expected);
    }
}

TEST_P(BmpDecoder, APaletteOfGraysIsMono8) {
    for (const unsigned bits : {1U, 4U, 8U}) {
        BmpForm form{.bits = static_cast<std::uint16_t>(bits)};
        form.palette = grayPalette(std::size_t{1} << bits);
        const Bytes rows = noise(height * ((width * bits + 7) / 8));
        Bytes expected;
        for (const std::size_t index : indicesOf(rows, bits)) {
            expected.push_back(form.palette[index][0]);
        }
        expectImage(WriteAndLoad(form, rows), PixelType_Mono8, width, height, expected);
    }
}

TEST_P(BmpDecoder, EverySmallWidthIsWhole) {
    for (const unsigned bits : {1U, 4U, 8U, 16U, 24U, 32U}) {
        for (std::uint32_t w = 1; w <= 33; ++w) {
            BmpForm form{.width = static_cast<std::int32_t>(w),
                         .height = GetParam() * 2,
                         .bits = static_cast<std::uint16_t>(bits)};
            if (bits <= 8) {
                form.palette.assign(std::size_t{1} << bits, {9, 9, 9});
            }
            // All samples are set, so that each pixel shows whether it has been read.
            const Bytes rows(std::size_t{2} * ((w * bits + 7) / 8), 0xFF);
            const COrlixImage image =
                load(folder.Write("a.bmp", makeBmp(form, bmpRows(form, rows))));
            const Bytes expected(std::size_t{w} * 2 * (bits <= 8 ? 1 : 3), bits <= 8 ? 9 : 255);
            EXPECT_EQ(image.GetWidth(), w);
            EXPECT_EQ(pixelsOf(image), expected) << bits << " bits, " << w;
        }
    }
}

TEST_P(BmpDecoder, ColorsThatAShortPaletteLacksAreBlack) {
    BmpForm form{.bits = 8};
    form.palette = {{10, 20, 30}};
    Bytes rows(pixels);
    rows[1] = 200;
    const Bytes loaded = pixelsOf(WriteAndLoad(form, rows));
    EXPECT_EQ(Bytes(loaded.begin(), loaded.begin() + 6), Bytes({10, 20, 30, 0, 0, 0}));
}

TEST_P(BmpDecoder, SixteenBitsAreScaledToBgr8Packed) {
    const auto scaled = [](unsigned value, unsigned largest) {
        return static_cast<unsigned char>((value * 255 + largest / 2) / largest);
    };
    const Bytes rows = noise(pixels * 2);
    Bytes by5;
    Bytes by565;
    for (std::size_t i = 0; i < rows.size(); i += 2) {
        const unsigned pixel = rows[i] | unsigned{rows[i + 1]} << 8U;
        by5.insert(by5.end(), {scaled(pixel & 31U, 31), scaled(pixel >> 5U & 31U, 31),
                               scaled(pixel >> 10U & 31U, 31)});
        by565.insert(by565.end(), {scaled(pixel & 31U, 31), scaled(pixel >> 5U & 63U, 63),
                                   scaled(pixel >> 11U & 31U, 31)});
    }
    expectImage(WriteAndLoad({.bits = 16}, rows), PixelType_BGR8Packed, width, height, by5);
    const BmpForm masked{.bits = 16, .compression = 3, .masks = {0xF800, 0x07E0, 0x001F}};
    expectImage(WriteAndLoad(masked, rows), PixelType_BGR8Packed, width, height, by565);
}

TEST_P(BmpDecoder, TwentyFourBitsAreBgr8PackedAsStored) {
    const Bytes rows = noise(pixels * 3);
    PixelCopyCounter::Reset();
    expectImage(WriteAndLoad({.bits = 24}, rows), PixelType_BGR8Packed, width, height, rows);
    EXPECT_EQ(PixelCopyCounter::Read(), 0U);
}

TEST_P(BmpDecoder, ThirtyTwoBitsWithoutAlphaAreBgr8Packed) {
    const Bytes rows = noise(pixels * 4);
    Bytes expected;
    for (std::size_t i = 0; i < rows.size(); i += 4) {
        expected.insert(expected.end(), {rows[i], rows[i + 1], rows[i + 2]});
    }
    expectImage(WriteAndLoad({.bits = 32}, rows), PixelType_BGR8Packed, width, height, expected);
}

TEST_P(BmpDecoder, ThirtyTwoBitsWithAlphaAreBgra8Packed) {
    const Bytes rows = noise(pixels * 4);
    const BmpForm form{.bits = 32,
                       .compression = 3,
                       .headerSize = 108,
                       .masks = {0xFF0000, 0xFF00, 0xFF, 0xFF000000}};
    expectImage(WriteAndLoad(form, rows), PixelType_BGRA8Packed, width, height, rows);
}

TEST_P(BmpDecoder, MasksTellTheOrderOfTheColors) {
    const Bytes rows = noise(pixels * 4);
    const BmpForm form{.bits = 32,
                       .compression = 3,
                       .headerSize = 124,
                       .masks = {0xFF, 0xFF00, 0xFF0000, 0xFF000000}};
    Bytes expected;
    for (std::size_t i = 0; i < rows.size(); i += 4) {
        expected.insert(expected.end(), {rows[i + 2], rows[i + 1], rows[i], rows[i + 3]});
    }
    expectImage(WriteAndLoad(form, rows), PixelType_BGRA8Packed, width, height, expected);
}

TEST_P(BmpDecoder, AManyRowedPictureIsReadInParts) {
    constexpr int rowCount = 1500;
    BmpForm form{.width = 3, .height = GetParam() * rowCount};
    const Bytes rows = noise(std::size_t{9} * rowCount);
    expectImage(load(folder.Write("a.bmp", makeBmp(form, bmpRows(form, rows)))),
                PixelType_BGR8Packed, 3, rowCount, rows);
}

TEST_P(BmpDecoder, AFileThatEndsAnywhereIsTruncated) {
    BmpForm form{.width = width, .height = GetParam() * static_cast<int>(height)};
    for (const unsigned bits : {8U, 24U, 32U}) {
        form.bits = static_cast<std::uint16_t>(bits);
        const Bytes whole = makeBmp(form, bmpRows(form, noise(pixels * bits / 8)));
        const std::size_t fill = (4 - width * bits / 8 % 4) % 4;
        for (std::size_t size = 2; size < whole.size() - fill; size += 5) {
            const auto end = whole.begin() + static_cast<std::ptrdiff_t>(size);
            const std::string path = folder.Write("cut.bmp", Bytes(whole.begin(), end));
            EXPECT_NE(loadError(path), "no exception") << size;
            EXPECT_EQ(loadError(path).rfind("Cannot load BMP image file '" + path + "': ", 0), 0U);
        }
        const auto end = whole.end() - static_cast<std::ptrdiff_t>(fill);
        EXPECT_EQ(load(folder.Write("a.bmp", Bytes(whole.begin(), end))).GetHeight(), height);
    }
}

TEST(BmpForms, TheOldestHeaderIsUnderstood) {
    const TemporaryFolder folder;
    BmpForm form{.width = width, .height = height, .bits = 4, .headerSize = 12};
    form.palette = colorPalette(16);
    const Bytes rows = noise(height * 7);
    Bytes expected;
    for (const std::size_t index : indicesOf(rows, 4)) {
        expected.insert(expected.end(), form.palette[index].begin(), form.palette[index].end());
    }
    expectImage(load(folder.Write("a.bmp", makeBmp(form, bmpRows(form, rows)))),
                PixelType_BGR8Packed, width, height, expected);
}

TEST(BmpForms, RunLengthsOfEightBits) {
    const TemporaryFolder folder;
    BmpForm form{.width = 4, .height = 3, .bits = 8, .compression = 1};
    form.palette = grayPalette(256);
    // Three of 7 and one of 9; three literals with a fill; then one pixel right of a skip.
    const Bytes codes = {3, 7, 1, 9, 0, 0, 0, 3, 1, 2, 3, 0, 0, 0, 0, 2, 2, 0, 1, 5, 0, 1};
    expectImage(load(folder.Write("a.bmp", makeBmp(form, codes))), PixelType_Mono8, 4, 3,
                {0, 0, 5, 0, 1, 2, 3, 0, 7, 7, 7, 9});
}

TEST(BmpForms, RunLengthsOfFourBits) {
    const TemporaryFolder folder;
    BmpForm form{.width = 5, .height = 2, .bits = 4, .compression = 2};
    form.palette = grayPalette(16);
    const Bytes codes = {5, 0x12, 0, 0, 0, 5, 0x34, 0x56, 0x70, 0, 0, 1};
    expectImage(load(folder.Write("a.bmp", makeBmp(form, codes))), PixelType_Mono8, 5, 2,
                {51, 68, 85, 102, 119, 17, 34, 17, 34, 17});
}

TEST(BmpForms, ARunOutsideItsRowIsAnError) {
    const TemporaryFolder folder;
    BmpForm form{.width = 4, .height = 1, .bits = 8, .compression = 1};
    form.palette = grayPalette(256);
    const std::vector<Bytes> allCodes = {{4, 1, 0, 0, 4, 1, 0, 1},           // below the last row
                                         {5, 1, 0, 1},                       // a run
                                         {255, 1, 0, 1},                     // a long one
                                         {0, 5, 1, 2, 3, 4, 5, 0, 0, 1},     // literals
                                         {1, 1, 0, 2, 255, 0, 1, 1, 0, 1}};  // behind a skip
    for (const Bytes& codes : allCodes) {
        const std::string path = folder.Write("a.bmp", makeBmp(form, codes));
        EXPECT_EQ(loadError(path),
                  "Cannot load BMP image file '" + path + "': the pixel data is damaged.");
    }
}

TEST(BmpForms, OnlyTheSecondPixelOfAByteOfTwoMayLieBehindTheRow) {
    const TemporaryFolder folder;
    BmpForm form{.width = 3, .height = 1, .bits = 4, .compression = 2};
    form.palette = grayPalette(16);
    const std::vector<Bytes> good = {{4, 0x12, 0, 1}, {0, 4, 0x12, 0x1F, 0, 1}};
    for (const Bytes& codes : good) {
        expectImage(load(folder.Write("a.bmp", makeBmp(form, codes))), PixelType_Mono8, 3, 1,
                    {17, 34, 17});
    }
    const std::vector<Bytes> bad = {
        {5, 0x12, 0, 1}, {0, 5, 0x12, 0x1F, 0x10, 0, 0, 1}, {3, 0x12, 2, 0x12, 0, 1}};
    for (const Bytes& codes : bad) {
        const std::string path = folder.Write("a.bmp", makeBmp(form, codes));
        EXPECT_EQ(loadError(path),
                  "Cannot load BMP image file '" + path + "': the pixel data is damaged.");
    }
}

TEST(BmpForms, WhatIsNotSupportedIsNamed) {
    const TemporaryFolder folder;
    const auto error = [&](const BmpForm& form) {
        const std::string path = folder.Write("a.bmp", makeBmp(form, Bytes(1000)));
        const std::string start = "Cannot load BMP image file '" + path + "': ";
        const std::string text = loadError(path);
        EXPECT_EQ(text.substr(0, start.size()), start);
        return text.substr(start.size());
    };
    EXPECT_EQ(error({.width = 2, .height = 2, .bits = 2}),
              "a picture of 2 bits per pixel is not supported.");
    EXPECT_EQ(error({.width = 2, .height = 2, .compression = 4}),
              "compression 4 with 24 bits per pixel is not supported.");
    EXPECT_EQ(error({.width = 2, .height = 2, .headerSize = 44}),
              "a header of 44 bytes is not supported.");
    EXPECT_EQ(error({.width = -2, .height = 2}), "the header tells a width of -2 pixels.");
    EXPECT_EQ(error({.width = 0, .height = 2}), "the header tells a size of 0 x 2 pixels.");
    EXPECT_EQ(error({.width = 2, .height = 2, .bits = 16, .compression = 3, .masks = {5, 0, 0}}),
              "a colour mask is damaged.");
    EXPECT_EQ(error({.width = 2, .height = 2, .bits = 32, .compression = 3, .masks = {0, 0, 0}}),
              "the masks of all colours are empty.");
}

TEST(BmpForms, AHeaderThatLiesAboutTheSizeAllocatesNothing) {
    const TemporaryFolder folder;
    for (const std::int32_t rows : {2147483647, -2147483647 - 1}) {
        const std::string path =
            folder.Write("a.bmp", makeBmp({.width = 2147483647, .height = rows}, Bytes(100)));
        EXPECT_EQ(loadError(path), "Cannot load BMP image file '" + path +
                                       "': the header tells a size of 2147483647 x " +
                                       std::to_string(std::abs(std::int64_t{rows})) +
                                       " pixels, more than a file of 154 bytes can hold.");
    }
}

}  // namespace
}  // namespace Orlix::Test
