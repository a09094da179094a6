// What a conversion allocates, and what happens if it can't.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <thread>

#include "gcbase/gcexception.h"
#include "orlixcamera/bufferpool.h"
#include "orlixcamera/conversion/referencepicture.h"
#include "orlixcamera/orliximage.h"
#include "orlixcamera/pixeltypemapper.h"
#include "support/allocations.h"

namespace Orlix::Test {
namespace {

struct Allocations {
    std::uint64_t news;
    std::uint64_t buffers;
};

// A sanitizer's threads are slow enough to take up their first strip when all others are warm.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool countsNews = false;
#else
constexpr bool countsNews = true;
#endif

Allocations Count() {
    return {countsNews ? countAllocations() : 0,
            BufferPool::Instance().GetStatistics().allocations};
}

void Convert(const CImageFormatConverter& converter, COrlixImage& image, const Picture& source) {
    converter.Convert(image, source.bytes.data(), source.bytes.size(), source.pixelType,
                      source.width, source.height, 0, ImageOrientation_TopDown);
}

// What the third conversion of a picture to every output format allocates.
Allocations CountOfWarmConversions(EPixelType type, std::uint32_t height, std::int64_t threads) {
    const Picture source =
        MakePicture(type, 333, height, 0, ImageOrientation_TopDown, Content::Random, 1);
    CImageFormatConverter converter;
    converter.MaxNumThreads.SetValue(threads, false);
    Allocations sum{0, 0};
    for (const EPixelType output : OutputTypes) {
        converter.OutputPixelFormat.SetValue(output);
        COrlixImage image;
        Convert(converter, image, source);
        Convert(converter, image, source);
        const Allocations before = Count();
        Convert(converter, image, source);
        const Allocations after = Count();
        sum.news += after.news - before.news;
        sum.buffers += after.buffers - before.buffers;
    }
    return sum;
}

TEST(ConversionMemory, AWarmConversionAllocatesNothing) {
    for (const EPixelType type : SourceTypes) {
        const Allocations made = CountOfWarmConversions(type, 7, 1);
        EXPECT_EQ(made.news, 0U) << CPixelTypeMapper::GetNameByPixelType(type);
        EXPECT_EQ(made.buffers, 0U) << CPixelTypeMapper::GetNameByPixelType(type);
    }
}

TEST(ConversionMemory, AWarmConversionOnSeveralThreadsAllocatesNothing) {
    for (const EPixelType type :
         {PixelType_BayerRG12p, PixelType_Mono8, PixelType_YUV422Packed, PixelType_RGB16Planar}) {
        const Allocations made = CountOfWarmConversions(type, 901, 3);
        EXPECT_EQ(made.news, 0U) << CPixelTypeMapper::GetNameByPixelType(type);
        EXPECT_EQ(made.buffers, 0U) << CPixelTypeMapper::GetNameByPixelType(type);
    }
}

// A thread that hasn't converted yet has no rows.
TEST(ConversionMemory, RowsThatCantBeAllocatedAreAnErrorBeforeAnyStripBegins) {
    const Picture source = MakePicture(PixelType_BayerRG12p, 640, 901, 0, ImageOrientation_TopDown,
                                       Content::Random, 1);
    CImageFormatConverter converter;
    converter.MaxNumThreads.SetValue(3, false);
    COrlixImage image;
    std::string text = "no exception";
    std::jthread([&] {
        const FailingAlignedNew scope;
        try {
            Convert(converter, image, source);
        } catch (const GenICam::BadAllocException& error) {
            text = error.GetDescription();
        }
    }).join();
    EXPECT_EQ(text.substr(0, 24), "Can't convert an image: ");
    EXPECT_NE(text.find(" bytes for its rows could not be allocated."), std::string::npos) << text;
    EXPECT_EQ(image.GetImageSize(), 0U);
}

// A line of a hundred million pixels would need gigabytes of rows.
TEST(ConversionMemory, WhatIsReadToItsPlaceNeedsNoRows) {
    struct Pair {
        EPixelType source, destination;
    };
    for (const Pair& pair :
         {Pair{PixelType_Mono1Packed, PixelType_Mono8}, Pair{PixelType_Mono12p, PixelType_Mono16},
          Pair{PixelType_RGB12V1Packed, PixelType_RGB8Packed},
          Pair{PixelType_RGB10Packed, PixelType_RGB16Packed},
          Pair{PixelType_BGR10Packed, PixelType_BGR8Packed},
          Pair{PixelType_RGB8Planar, PixelType_RGB8Packed},
          Pair{PixelType_RGB16Planar, PixelType_RGB16Packed},
          Pair{PixelType_YUV422Packed, PixelType_BGRA8Packed},
          Pair{PixelType_YUV422_YUYV_Packed, PixelType_Mono8},
          Pair{PixelType_YCbCr422_8_YY_CbCr_Semiplanar, PixelType_RGB8Planar},
          Pair{PixelType_YCbCr420_8_YY_CbCr_Semiplanar, PixelType_YUV422Planar}}) {
        const Picture source =
            MakePicture(pair.source, 641, 901, 0, ImageOrientation_TopDown, Content::Random, 1);
        const Picture expected = ConvertByReference(
            source, {pair.destination, 0, ImageOrientation_TopDown, OutputBitAlignment_LsbAligned});
        CImageFormatConverter converter;
        converter.OutputPixelFormat.SetValue(pair.destination);
        converter.MaxNumThreads.SetValue(1);
        COrlixImage image;
        std::jthread([&] {
            const FailingAlignedNew scope;
            EXPECT_NO_THROW(Convert(converter, image, source));
        }).join();
        ASSERT_EQ(image.GetImageSize(), expected.bytes.size());
        EXPECT_EQ(std::memcmp(image.GetBuffer(), expected.bytes.data(), expected.bytes.size()), 0)
            << CPixelTypeMapper::GetNameByPixelType(pair.source);
    }
}

}  // namespace
}  // namespace Orlix::Test
