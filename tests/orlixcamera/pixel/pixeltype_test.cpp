#include "orlixcamera/pixeltype.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

#include "gcbase/gcexception.h"
#include "orlixcamera/pixel/pixeltable.h"

namespace Orlix::Test {
namespace {

constexpr auto Unknown = static_cast<EPixelType>(0x01083FFF);

TEST(PixelType, ValuesAreThoseOfTheNamingConvention) {
    EXPECT_EQ(PixelType_Undefined, -1);
    EXPECT_EQ(PixelType_Mono8, 0x01080001);
    EXPECT_EQ(PixelType_Mono12p, 0x010C0047);
    EXPECT_EQ(PixelType_BayerBG12Packed, 0x010C002D);
    EXPECT_EQ(PixelType_RGB8Packed, 0x02180014);
    EXPECT_EQ(PixelType_RGB16Planar, 0x02300024);
    EXPECT_EQ(PixelType_YUV444Planar, 0x82180044);
    EXPECT_EQ(PixelType_YUV422Planar, 0x82100042);
    EXPECT_EQ(PixelType_YUV420Planar, 0x820C0040);
}

TEST(PixelType, EachRowOfTheTableHasAValueAndANameOfItsOwn) {
    const auto formats = AllPixelFormats();
    for (const PixelFormat& a : formats) {
        ASSERT_NE(FindPixelFormat(a.pixelType), nullptr);
        EXPECT_EQ(FindPixelFormat(a.pixelType)->name, a.name);
        for (const PixelFormat& b : formats) {
            if (&a != &b) {
                EXPECT_NE(a.pixelType, b.pixelType);
                EXPECT_NE(a.name, b.name);
                EXPECT_NE(a.name, b.alias);
            }
        }
    }
}

// Class bits 01 say one sample a pixel, 02 several; what a row says must agree with its value.
TEST(PixelType, EachRowAgreesWithItsValue) {
    for (const PixelFormat& format : AllPixelFormats()) {
        const bool single = ((format.pixelType >> 24) & 0x7F) == 1;
        if (format.family == PixelFamily::Mono || format.family == PixelFamily::Bayer) {
            EXPECT_TRUE(single) << format.name;
        }
        if (format.family == PixelFamily::Rgb || format.family == PixelFamily::Yuv) {
            EXPECT_FALSE(single) << format.name;
        }
        EXPECT_LE(format.bitDepth, BitsPerPixel(format.pixelType)) << format.name;
        EXPECT_GT(format.bitDepth, 0U) << format.name;
    }
}

TEST(PixelType, BitsPerPixelFollowFromTheValueAlone) {
    EXPECT_EQ(BitsPerPixel(PixelType_Mono1Packed), 1U);
    EXPECT_EQ(BitsPerPixel(PixelType_Mono10p), 10U);
    EXPECT_EQ(BitsPerPixel(PixelType_Mono10Packed), 12U);
    EXPECT_EQ(BitsPerPixel(PixelType_RGB16Packed), 48U);
    EXPECT_EQ(BitsPerPixel(PixelType_YUV420Planar), 12U);
    EXPECT_EQ(BitsPerPixel(Unknown), 8U);
    EXPECT_EQ(BitsPerPixel(PixelType_Undefined), 0U);
}

TEST(PixelType, BitDepthCountsTheBitsOfASample) {
    EXPECT_EQ(BitDepth(PixelType_Mono10), 10U);
    EXPECT_EQ(BitDepth(PixelType_Mono10Packed), 10U);
    EXPECT_EQ(BitDepth(PixelType_BayerRG12p), 12U);
    EXPECT_EQ(BitDepth(PixelType_RGB12V1Packed), 12U);
    EXPECT_EQ(BitDepth(PixelType_YUV422Packed), 8U);
    EXPECT_EQ(BitDepth(Unknown), 0U);
    EXPECT_EQ(BitDepth(PixelType_Undefined), 0U);
}

TEST(PixelType, FamiliesExcludeEachOther) {
    EXPECT_TRUE(IsMono(PixelType_Mono12p));
    EXPECT_FALSE(IsMono(PixelType_BayerGR8));
    EXPECT_TRUE(IsBayer(PixelType_BayerGR8));
    EXPECT_FALSE(IsBayer(PixelType_Mono8));
    EXPECT_TRUE(IsColor(PixelType_BGRA8Packed));
    EXPECT_TRUE(IsColor(PixelType_YUV422Packed));
    EXPECT_FALSE(IsColor(PixelType_BayerGR8));
    EXPECT_FALSE(IsColor(PixelType_Coord3D_ABC8));
    EXPECT_TRUE(IsYuv(PixelType_YCbCr420_8_YY_CbCr_Semiplanar));
    EXPECT_FALSE(IsYuv(PixelType_RGB8Packed));
}

TEST(PixelType, PackedMeansThatSamplesShareBytes) {
    for (const EPixelType type :
         {PixelType_Mono1Packed, PixelType_Mono10Packed, PixelType_Mono12p, PixelType_BayerGB10p,
          PixelType_RGB12V1Packed, PixelType_RGB565p, PixelType_YCbCr422_10p}) {
        EXPECT_TRUE(IsPacked(type)) << type;
    }
    for (const EPixelType type : {PixelType_Mono8, PixelType_Mono12, PixelType_RGB8Packed,
                                  PixelType_YUV422Packed, PixelType_YUV420Planar}) {
        EXPECT_FALSE(IsPacked(type)) << type;
    }
}

TEST(PixelType, PlanarMeansMoreThanOnePlane) {
    EXPECT_TRUE(IsPlanar(PixelType_RGB8Planar));
    EXPECT_TRUE(IsPlanar(PixelType_YUV444Planar));
    EXPECT_TRUE(IsPlanar(PixelType_YCbCr422_8_YY_CbCr_Semiplanar));
    EXPECT_FALSE(IsPlanar(PixelType_RGB8Packed));
    EXPECT_FALSE(IsPlanar(PixelType_Mono8));
}

TEST(PixelType, AnUnknownTypeIsNothing) {
    for (const EPixelType type : {Unknown, PixelType_Undefined}) {
        EXPECT_FALSE(IsKnown(type));
        EXPECT_FALSE(IsMono(type));
        EXPECT_FALSE(IsBayer(type));
        EXPECT_FALSE(IsColor(type));
        EXPECT_FALSE(IsYuv(type));
        EXPECT_FALSE(IsPacked(type));
        EXPECT_FALSE(IsPlanar(type));
        EXPECT_THROW(static_cast<void>(ComputeStride(type, 1)), GenICam::InvalidArgumentException);
        EXPECT_THROW(static_cast<void>(ComputeBufferSize(type, 1, 1)),
                     GenICam::InvalidArgumentException);
    }
}

TEST(PixelType, ALineIsRoundedUpToBytesAndChromaGroups) {
    EXPECT_EQ(ComputeStride(PixelType_Mono1Packed, 9), 2U);
    EXPECT_EQ(ComputeStride(PixelType_Mono10p, 5), 7U);
    EXPECT_EQ(ComputeStride(PixelType_Mono12Packed, 3), 5U);
    EXPECT_EQ(ComputeStride(PixelType_RGB8Packed, 5, 3), 18U);
    EXPECT_EQ(ComputeStride(PixelType_YUV422Packed, 3), 8U);
    EXPECT_EQ(ComputeStride(PixelType_YUV411Packed, 5), 12U);
    EXPECT_EQ(ComputeStride(PixelType_RGB16Planar, 5), 10U);
    EXPECT_EQ(ComputeStride(PixelType_YUV420Planar, 5), 5U);
}

TEST(PixelType, ABufferHoldsAllPlanesWithThePaddingOfEachLine) {
    EXPECT_EQ(ComputeBufferSize(PixelType_Mono8, 5, 3, 2), 21U);
    EXPECT_EQ(ComputeBufferSize(PixelType_RGB8Planar, 5, 3, 2), 63U);
    EXPECT_EQ(ComputeBufferSize(PixelType_YUV422Planar, 5, 3, 1), 18U + 2 * 12);
    EXPECT_EQ(ComputeBufferSize(PixelType_YUV420Planar, 5, 3, 1), 18U + 2 * 8);
    EXPECT_EQ(ComputeBufferSize(PixelType_YCbCr422_8_YY_CbCr_Semiplanar, 5, 3), 15U + 18);
    EXPECT_EQ(ComputeBufferSize(PixelType_YCbCr420_8_YY_CbCr_Semiplanar, 5, 3), 15U + 12);
    EXPECT_EQ(ComputeBufferSize(PixelType_Mono8, 0, 3), 0U);
}

TEST(PixelType, SizesAreComputedIn64BitsAndAnOverflowThrows) {
    EXPECT_EQ(ComputeBufferSize(PixelType_RGB16Packed, 100000, 100000), 60000000000U);
    EXPECT_EQ(ComputeStride(PixelType_RGB16Packed, 0xFFFFFFFF), 25769803770U);
    EXPECT_THROW(
        static_cast<void>(ComputeBufferSize(PixelType_RGB16Packed, 0xFFFFFFFF, 0xFFFFFFFF)),
        GenICam::OutOfRangeException);
    EXPECT_THROW(static_cast<void>(
                     ComputeStride(PixelType_Mono8, 1, std::numeric_limits<std::uint64_t>::max())),
                 GenICam::OutOfRangeException);
}

}  // namespace
}  // namespace Orlix::Test
