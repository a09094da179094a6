// Luma, chroma and colours against well-known values and against double precision.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "orlixcamera/conversion/convertedbytes.h"
#include "orlixcamera/conversion/instructionsets.h"
#include "orlixcamera/conversion/referencepicture.h"

namespace Orlix::Test {
namespace {

using ::testing::ElementsAre;

TEST(ConvertedColours, PrimariesHaveTheirWellKnownLumaAndChroma) {
    CImageFormatConverter converter;
    converter.OutputPixelFormat.SetValue(PixelType_YUV444Planar);
    const std::vector<std::uint8_t> colours{255, 0,   0,   0,   255, 0, 0, 0,
                                            255, 255, 255, 255, 0,   0, 0};
    EXPECT_THAT(Convert(converter, colours, PixelType_RGB8Packed, 5, 1),
                ElementsAre(76, 150, 29, 255, 0, 85, 44, 255, 128, 128, 255, 21, 107, 128, 128));
}

TEST(ConvertedColours, TheLastBlockOfAnOddEdgeRepeatsItsPixel) {
    CImageFormatConverter converter;
    converter.OutputPixelFormat.SetValue(PixelType_YUV420Planar);
    // Grey but for the last pixel, which alone makes the last block.
    std::vector<std::uint8_t> picture(3 * 3 * 3, 128);
    picture[24] = 255;
    picture[25] = 0;
    picture[26] = 0;
    const std::vector<int> bytes = Convert(converter, picture, PixelType_RGB8Packed, 3, 3);
    EXPECT_EQ(bytes.size(), 9U + 4U + 4U);
    EXPECT_EQ(bytes[12], 85);
    EXPECT_EQ(bytes[16], 255);
    EXPECT_EQ(bytes[9], 128);
}

// All colours there are, in one picture, against the formulas in double precision.
class AllColours : public ::testing::Test {
protected:
    static constexpr std::uint32_t Side = 4096;

    static std::vector<std::uint8_t> MakeColours() {
        std::vector<std::uint8_t> colours(std::size_t{Side} * Side * 3);
        for (std::size_t colour = 0; colour < colours.size() / 3; ++colour) {
            colours[3 * colour] = static_cast<std::uint8_t>(colour >> 16U);
            colours[3 * colour + 1] = static_cast<std::uint8_t>(colour >> 8U);
            colours[3 * colour + 2] = static_cast<std::uint8_t>(colour);
        }
        return colours;
    }

    // Counts how often a byte is off, and fails if it ever is by more than 1.
    static std::size_t CountOff(const std::uint8_t* bytes, const std::vector<std::uint8_t>& colours,
                                double (*formula)(double r, double g, double b)) {
        std::size_t off = 0;
        int worst = 0;
        for (std::size_t colour = 0; colour < colours.size() / 3; ++colour) {
            const std::uint8_t* rgb = &colours[3 * colour];
            const double exact = std::min(255.0, std::floor(formula(rgb[0], rgb[1], rgb[2]) + 0.5));
            const int difference = std::abs(static_cast<int>(exact) - bytes[colour]);
            off += difference != 0 ? 1 : 0;
            worst = std::max(worst, difference);
        }
        EXPECT_LE(worst, 1);
        return off;
    }
};

double LumaFormula(double r, double g, double b) {
    return 0.299 * r + 0.587 * g + 0.114 * b;
}
double BlueFormula(double r, double g, double b) {
    return 128 + (b - LumaFormula(r, g, b)) / 1.772;
}
double RedFormula(double r, double g, double b) {
    return 128 + (r - LumaFormula(r, g, b)) / 1.402;
}

TEST_F(AllColours, AreOffDoublePrecisionInFewerThanOneInAThousand) {
    CImageFormatConverter converter;
    converter.OutputPixelFormat.SetValue(PixelType_YUV444Planar);
    const std::vector<std::uint8_t> colours = MakeColours();
    COrlixImage image;
    converter.Convert(image, colours.data(), colours.size(), PixelType_RGB8Packed, Side, Side, 0,
                      ImageOrientation_TopDown);
    const auto* bytes = static_cast<const std::uint8_t*>(image.GetBuffer());
    constexpr std::size_t Pixels = std::size_t{Side} * Side;
    EXPECT_LT(CountOff(bytes, colours, LumaFormula), Pixels / 1000);
    EXPECT_LT(CountOff(bytes + Pixels, colours, BlueFormula), Pixels / 1000);
    EXPECT_LT(CountOff(bytes + 2 * Pixels, colours, RedFormula), Pixels / 1000);
}

TEST_F(AllColours, HaveOneLumaInMono8AndInYuv) {
    CImageFormatConverter converter;
    const std::vector<std::uint8_t> colours = MakeColours();
    std::array<COrlixImage, 2> images;
    const std::array types{PixelType_Mono8, PixelType_YUV420Planar};
    for (std::size_t index = 0; index < types.size(); ++index) {
        converter.OutputPixelFormat.SetValue(types[index]);
        converter.Convert(images[index], colours.data(), colours.size(), PixelType_RGB8Packed, Side,
                          Side, 0, ImageOrientation_TopDown);
    }
    EXPECT_EQ(std::memcmp(images[0].GetBuffer(), images[1].GetBuffer(), images[0].GetImageSize()),
              0);
}

// All values of luma, blue and red chroma there are, against the formulas in double precision. Two
// pixels of a line share their chroma: each pair has two values of luma.
class AllYuvColours : public ::testing::Test {
protected:
    static constexpr std::uint32_t Side = 4096;

    // Packed luma and chroma; the pair is numbered by half of luma, blue and red.
    static std::vector<std::uint8_t> MakeColours() {
        std::vector<std::uint8_t> colours(std::size_t{Side} * Side * 2);
        for (std::size_t pair = 0; pair < colours.size() / 4; ++pair) {
            colours[4 * pair] = static_cast<std::uint8_t>(pair >> 8U);
            colours[4 * pair + 1] = static_cast<std::uint8_t>((pair >> 16U) * 2);
            colours[4 * pair + 2] = static_cast<std::uint8_t>(pair);
            colours[4 * pair + 3] = static_cast<std::uint8_t>((pair >> 16U) * 2 + 1);
        }
        return colours;
    }

    static double Formula(std::size_t channel, double y, double u, double v) {
        if (channel == 0) {
            return y + 1.402 * (v - 128);
        }
        if (channel == 2) {
            return y + 1.772 * (u - 128);
        }
        return y - (0.114 * 1.772 * (u - 128) + 0.299 * 1.402 * (v - 128)) / 0.587;
    }
};

TEST_F(AllYuvColours, AreOffDoublePrecisionInFewerThanOneInAThousand) {
    CImageFormatConverter converter;
    converter.OutputPixelFormat.SetValue(PixelType_RGB8Packed);
    const std::vector<std::uint8_t> colours = MakeColours();
    COrlixImage image;
    converter.Convert(image, colours.data(), colours.size(), PixelType_YUV422Packed, Side, Side, 0,
                      ImageOrientation_TopDown);
    const auto* bytes = static_cast<const std::uint8_t*>(image.GetBuffer());
    constexpr std::size_t Pixels = std::size_t{Side} * Side;
    std::array<std::size_t, 3> off{};
    int worst = 0;
    for (std::size_t pixel = 0; pixel < Pixels; ++pixel) {
        const std::uint8_t* pair = &colours[pixel / 2 * 4];
        for (std::size_t channel = 0; channel < 3; ++channel) {
            const double exact = Formula(channel, pair[1 + pixel % 2 * 2], pair[0], pair[2]) + 0.5;
            const int rounded = static_cast<int>(std::clamp(std::floor(exact), 0.0, 255.0));
            const int difference = std::abs(rounded - bytes[3 * pixel + channel]);
            off[channel] += difference != 0 ? 1 : 0;
            worst = std::max(worst, difference);
        }
    }
    EXPECT_LE(worst, 1);
    EXPECT_THAT(off, ::testing::Each(::testing::Lt(Pixels / 1000)));
    RecordProperty("off", std::to_string(off[0]) + " " + std::to_string(off[1]) + " " +
                              std::to_string(off[2]));
}

// On every instruction set: those without fused operations round twice. Blue is chosen so that each
// luma in turn is just reached (250 more) and just missed (57 more).
TEST(ConvertedColours, LumaOf16BitsIsExactAtEveryBoundary) {
    Picture source{PixelType_RGB16Packed, 65536, 2, 0, ImageOrientation_TopDown, {}};
    for (const std::uint32_t distance : {250U, 57U}) {
        for (std::uint32_t grey = 0; grey < 65536; ++grey) {
            for (const std::uint32_t value : {grey, grey, std::min(65535U, grey + distance)}) {
                source.bytes.push_back(static_cast<std::uint8_t>(value));
                source.bytes.push_back(static_cast<std::uint8_t>(value >> 8U));
            }
        }
    }
    CImageFormatConverter converter;
    converter.OutputPixelFormat.SetValue(PixelType_Mono16);
    const Picture expected = ConvertByReference(
        source, {PixelType_Mono16, 0, ImageOrientation_TopDown, OutputBitAlignment_LsbAligned});
    for (const std::int64_t set : InstructionSets()) {
        const InstructionSetScope scope(set);
        COrlixImage image;
        converter.Convert(image, source.bytes.data(), source.bytes.size(), source.pixelType,
                          source.width, source.height, 0, ImageOrientation_TopDown);
        ASSERT_EQ(image.GetImageSize(), expected.bytes.size());
        EXPECT_EQ(std::memcmp(image.GetBuffer(), expected.bytes.data(), expected.bytes.size()), 0)
            << "instruction set " << set;
    }
}

}  // namespace
}  // namespace Orlix::Test
