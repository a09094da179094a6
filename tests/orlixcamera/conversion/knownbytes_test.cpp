// Lines written down byte by byte, and the samples that they are: each packing, pattern and order
// for itself, on every instruction set of this machine.
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "orlixcamera/conversion/convertedbytes.h"
#include "orlixcamera/conversion/instructionsets.h"
#include "orlixcamera/pixeltypemapper.h"

namespace Orlix::Test {
namespace {

struct KnownPicture {
    EPixelType type;
    std::uint32_t width, height;
    std::vector<std::uint8_t> bytes;
    std::vector<int> samples;  // of the destination, in their order
};

// The samples of a converted picture: bytes, or words of two bytes.
std::vector<int> SamplesOf(const KnownPicture& picture, EPixelType outputType) {
    CImageFormatConverter converter;
    converter.OutputPixelFormat.SetValue(outputType);
    converter.BayerBorder.SetValue(BayerBorder_Repeat);
    const std::vector<int> bytes =
        Convert(converter, picture.bytes, picture.type, picture.width, picture.height);
    const bool words = outputType == PixelType_Mono16 || outputType == PixelType_RGB16Packed;
    if (!words) {
        return bytes;
    }
    std::vector<int> samples;
    for (std::size_t index = 0; index + 1 < bytes.size(); index += 2) {
        samples.push_back(bytes[index] + 256 * bytes[index + 1]);
    }
    return samples;
}

void Check(const KnownPicture& picture, EPixelType outputType) {
    for (const std::int64_t set : InstructionSets()) {
        const InstructionSetScope scope(set);
        EXPECT_EQ(SamplesOf(picture, outputType), picture.samples)
            << CPixelTypeMapper::GetNameByPixelType(picture.type) << " to "
            << CPixelTypeMapper::GetNameByPixelType(outputType) << ", instruction set " << set;
    }
}

TEST(KnownBytes, GreySamplesAreWhereTheirPackingPutsThem) {
    const KnownPicture pictures[] = {
        {PixelType_Mono1Packed, 10, 1, {0xB1, 0x02}, {1, 0, 0, 0, 1, 1, 0, 1, 0, 1}},
        {PixelType_Mono2Packed, 5, 1, {0xE4, 0x02}, {0, 1, 2, 3, 2}},
        {PixelType_Mono4Packed, 3, 1, {0x21, 0x43}, {1, 2, 3}},
        {PixelType_Mono8, 2, 1, {0x05, 0xFA}, {0x05, 0xFA}},
        {PixelType_Mono10, 2, 1, {0x34, 0x02, 0xFF, 0xFF}, {0x234, 0x3FF}},
        {PixelType_Mono10Packed, 3, 1, {0xAB, 0x21, 0xCD, 0x80, 0x33}, {0x2AD, 0x336, 0x203}},
        {PixelType_Mono10p, 4, 1, {0x01, 0xF8, 0x5F, 0x95, 0xAA}, {0x001, 0x3FE, 0x155, 0x2AA}},
        {PixelType_Mono12, 2, 1, {0x34, 0x02, 0xFF, 0xFF}, {0x234, 0xFFF}},
        {PixelType_Mono12Packed, 3, 1, {0xAB, 0x21, 0xCD, 0x80, 0x33}, {0xAB1, 0xCD2, 0x803}},
        {PixelType_Mono12p, 3, 1, {0xAB, 0x21, 0xCD, 0x80, 0x33}, {0x1AB, 0xCD2, 0x380}},
        {PixelType_Mono16, 2, 1, {0x34, 0x02, 0xFF, 0xFE}, {0x0234, 0xFEFF}},
    };
    for (const KnownPicture& picture : pictures) {
        Check(picture, PixelType_Mono16);
    }
}

TEST(KnownBytes, GreySamplesKeepTheirUpperBitsInBytes) {
    const KnownPicture pictures[] = {
        {PixelType_Mono1Packed, 10, 1, {0xB1, 0x02}, {1, 0, 0, 0, 1, 1, 0, 1, 0, 1}},
        {PixelType_Mono2Packed, 5, 1, {0xE4, 0x02}, {0, 1, 2, 3, 2}},
        {PixelType_Mono4Packed, 3, 1, {0x21, 0x43}, {1, 2, 3}},
        {PixelType_Mono10, 2, 1, {0x34, 0x02, 0xFF, 0xFF}, {0x8D, 0xFF}},
        {PixelType_Mono10Packed, 3, 1, {0xAB, 0x21, 0xCD, 0x80, 0x33}, {0xAB, 0xCD, 0x80}},
        {PixelType_Mono10p, 4, 1, {0x01, 0xF8, 0x5F, 0x95, 0xAA}, {0x00, 0xFF, 0x55, 0xAA}},
        {PixelType_Mono12, 2, 1, {0x34, 0x02, 0xFF, 0xFF}, {0x23, 0xFF}},
        {PixelType_Mono12Packed, 3, 1, {0xAB, 0x21, 0xCD, 0x80, 0x33}, {0xAB, 0xCD, 0x80}},
        {PixelType_Mono12p, 3, 1, {0xAB, 0x21, 0xCD, 0x80, 0x33}, {0x1A, 0xCD, 0x38}},
        {PixelType_Mono16, 2, 1, {0x34, 0x02, 0xFF, 0xFE}, {0x02, 0xFE}},
    };
    for (const KnownPicture& picture : pictures) {
        Check(picture, PixelType_Mono8);
    }
}

// The samples 100 and 200 in the first line, 300 and 400 in the second.
struct KnownBayer {
    std::array<EPixelType, 4> types;  // RG, GR, GB, BG
    std::vector<std::uint8_t> bytes;
};

#define ORLIX_BAYER_TYPES(depth)                                                      \
    {                                                                                 \
        PixelType_BayerRG##depth, PixelType_BayerGR##depth, PixelType_BayerGB##depth, \
            PixelType_BayerBG##depth                                                  \
    }

TEST(KnownBytes, BayerSamplesAreWhereTheirPackingAndPatternPutThem) {
    const KnownBayer pictures[] = {
        {ORLIX_BAYER_TYPES(10), {0x64, 0x00, 0xC8, 0x00, 0x2C, 0x01, 0x90, 0x01}},
        {ORLIX_BAYER_TYPES(12), {0x64, 0x00, 0xC8, 0x00, 0x2C, 0x01, 0x90, 0x01}},
        {ORLIX_BAYER_TYPES(16), {0x64, 0x00, 0xC8, 0x00, 0x2C, 0x01, 0x90, 0x01}},
        {ORLIX_BAYER_TYPES(10p), {0x64, 0x20, 0x03, 0x2C, 0x41, 0x06}},
        {ORLIX_BAYER_TYPES(12p), {0x64, 0x80, 0x0C, 0x2C, 0x01, 0x19}},
        {ORLIX_BAYER_TYPES(12Packed), {0x06, 0x84, 0x0C, 0x12, 0x0C, 0x19}},
    };
    // A pixel that isn't green has the mean of its four green neighbours, and the others one
    // neighbour of each colour on both sides.
    const std::array<std::vector<int>, 4> colours{{
        {100, 250, 400, 100, 200, 400, 100, 300, 400, 100, 250, 400},
        {200, 100, 300, 200, 250, 300, 200, 250, 300, 200, 400, 300},
        {300, 100, 200, 300, 250, 200, 300, 250, 200, 300, 400, 200},
        {400, 250, 100, 400, 200, 100, 400, 300, 100, 400, 250, 100},
    }};
    for (const KnownBayer& picture : pictures) {
        for (std::size_t pattern = 0; pattern < 4; ++pattern) {
            Check({picture.types[pattern], 2, 2, picture.bytes, colours[pattern]},
                  PixelType_RGB16Packed);
        }
    }
}

TEST(KnownBytes, BayerBytesAreWhereTheirPatternPutsThem) {
    const std::vector<std::uint8_t> bytes{10, 20, 30, 40};
    Check({PixelType_BayerRG8, 2, 2, bytes, {10, 25, 40, 10, 20, 40, 10, 30, 40, 10, 25, 40}},
          PixelType_RGB8Packed);
    Check({PixelType_BayerGR8, 2, 2, bytes, {20, 10, 30, 20, 25, 30, 20, 25, 30, 20, 40, 30}},
          PixelType_RGB8Packed);
    Check({PixelType_BayerGB8, 2, 2, bytes, {30, 10, 20, 30, 25, 20, 30, 25, 20, 30, 40, 20}},
          PixelType_RGB8Packed);
    Check({PixelType_BayerBG8, 2, 2, bytes, {40, 25, 10, 40, 20, 10, 40, 30, 10, 40, 25, 10}},
          PixelType_RGB8Packed);
}

TEST(KnownBytes, ColoursAreWhereTheirOrderAndPackingPutThem) {
    // Bits above the depth don't count.
    const std::vector<std::uint8_t> words{0x01, 0xF2, 0xFF, 0xFF, 0x02, 0x01};
    const KnownPicture pictures[] = {
        {PixelType_RGB8Packed, 2, 1, {1, 2, 3, 4, 5, 6}, {1, 2, 3, 4, 5, 6}},
        {PixelType_BGR8Packed, 2, 1, {1, 2, 3, 4, 5, 6}, {3, 2, 1, 6, 5, 4}},
        {PixelType_RGBA8Packed, 2, 1, {1, 2, 3, 9, 4, 5, 6, 8}, {1, 2, 3, 4, 5, 6}},
        {PixelType_BGRA8Packed, 2, 1, {1, 2, 3, 9, 4, 5, 6, 8}, {3, 2, 1, 6, 5, 4}},
        {PixelType_RGB10Packed, 1, 1, words, {0x201, 0x3FF, 0x102}},
        {PixelType_BGR10Packed, 1, 1, words, {0x102, 0x3FF, 0x201}},
        {PixelType_RGB12Packed, 1, 1, words, {0x201, 0xFFF, 0x102}},
        {PixelType_BGR12Packed, 1, 1, words, {0x102, 0xFFF, 0x201}},
        {PixelType_RGB16Packed, 1, 1, words, {0xF201, 0xFFFF, 0x102}},
        {PixelType_RGB12V1Packed,
         2,
         1,
         {0xAB, 0x21, 0xCD, 0x12, 0x43, 0x56, 0x78, 0xBA, 0x9F},
         {0xAB1, 0xCD2, 0x123, 0x564, 0x78A, 0x9FB}},
        {PixelType_RGB8Planar, 2, 1, {1, 2, 3, 4, 5, 6}, {1, 3, 5, 2, 4, 6}},
        {PixelType_RGB16Planar, 1, 1, words, {0xF201, 0xFFFF, 0x102}},
    };
    for (const KnownPicture& picture : pictures) {
        Check(picture, PixelType_RGB16Packed);
    }
}

TEST(KnownBytes, LumaAndChromaAreWhereTheirOrderPutsThem) {
    const KnownPicture pictures[] = {
        {PixelType_YUV422Packed, 2, 1, {10, 20, 30, 40}, {20, 40, 10, 10, 30, 30}},
        {PixelType_YUV422_YUYV_Packed, 2, 1, {10, 20, 30, 40}, {10, 30, 20, 20, 40, 40}},
        {PixelType_YCbCr422_8_YY_CbCr_Semiplanar,
         2,
         2,
         {1, 2, 3, 4, 10, 30, 50, 70},
         {1, 2, 3, 4, 10, 10, 50, 50, 30, 30, 70, 70}},
        {PixelType_YCbCr420_8_YY_CbCr_Semiplanar,
         2,
         2,
         {1, 2, 3, 4, 10, 30},
         {1, 2, 3, 4, 10, 10, 10, 10, 30, 30, 30, 30}},
    };
    for (const KnownPicture& picture : pictures) {
        Check(picture, PixelType_YUV444Planar);
    }
}

// Luma 100 with red chroma of 100 above the middle, and with blue chroma of 100 below it.
TEST(KnownBytes, LumaAndChromaMakeTheirColour) {
    const std::vector<int> red{240, 29, 100, 240, 29, 100};
    const std::vector<int> noBlue{100, 134, 0, 100, 134, 0};
    Check({PixelType_YUV422Packed, 2, 1, {128, 100, 228, 100}, red}, PixelType_RGB8Packed);
    Check({PixelType_YUV422_YUYV_Packed, 2, 1, {100, 128, 100, 228}, red}, PixelType_RGB8Packed);
    Check({PixelType_YCbCr422_8_YY_CbCr_Semiplanar, 2, 1, {100, 100, 128, 228}, red},
          PixelType_RGB8Packed);
    Check({PixelType_YCbCr420_8_YY_CbCr_Semiplanar, 2, 1, {100, 100, 128, 228}, red},
          PixelType_RGB8Packed);
    Check({PixelType_YUV422Packed, 2, 1, {28, 100, 128, 100}, noBlue}, PixelType_RGB8Packed);
    Check({PixelType_YUV422_YUYV_Packed, 2, 1, {100, 28, 100, 128}, noBlue}, PixelType_RGB8Packed);
    Check({PixelType_YCbCr422_8_YY_CbCr_Semiplanar, 2, 1, {100, 100, 28, 128}, noBlue},
          PixelType_RGB8Packed);
    Check({PixelType_YCbCr420_8_YY_CbCr_Semiplanar, 2, 1, {100, 100, 28, 128}, noBlue},
          PixelType_RGB8Packed);
}

}  // namespace
}  // namespace Orlix::Test
