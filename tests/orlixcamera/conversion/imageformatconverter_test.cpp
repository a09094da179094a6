#include "orlixcamera/imageformatconverter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <functional>
#include <locale>
#include <string>
#include <thread>
#include <vector>

#include "gcbase/gcexception.h"
#include "orlixcamera/bufferpool.h"
#include "orlixcamera/conversion/convertedbytes.h"
#include "orlixcamera/conversion/referencepicture.h"

namespace Orlix::Test {
namespace {

using ::testing::ElementsAre;

// The text of the exception of class E that a call throws.
template <class E>
std::string TextOf(const std::function<void()>& call) {
    try {
        call();
    } catch (const E& error) {
        return error.GetDescription();
    }
    return "no exception of the expected class";
}

TEST(ImageFormatConverter, InitialParametersLeaveThePictureAsItIs) {
    const CImageFormatConverter converter;
    EXPECT_EQ(converter.OutputPixelFormat.GetValue(), PixelType_BGRA8Packed);
    EXPECT_EQ(converter.OutputBitAlignment.GetValue(), OutputBitAlignment_LsbAligned);
    EXPECT_EQ(converter.OutputPaddingX.GetValue(), 0);
    EXPECT_EQ(converter.OutputOrientation.GetValue(), OutputOrientation_Unchanged);
    EXPECT_EQ(converter.BayerBorder.GetValue(), BayerBorder_CopyInner);
}

TEST(ImageFormatConverter, MaxNumThreadsReachesFromOneToTheThreadsOfTheMachine) {
    CImageFormatConverter converter;
    EXPECT_EQ(converter.MaxNumThreads.GetMin(), 1);
    EXPECT_EQ(converter.MaxNumThreads.GetMax(), std::max(1U, std::thread::hardware_concurrency()));
    EXPECT_EQ(converter.MaxNumThreads.GetInc(), 1);
    EXPECT_EQ(converter.MaxNumThreads.GetInfo(ParameterInfo_Name), "MaxNumThreads");
    EXPECT_EQ(converter.MaxNumThreads.GetInfo(ParameterInfo_DisplayName), "Max Num Threads");
    EXPECT_FALSE(converter.MaxNumThreads.GetInfo(ParameterInfo_ToolTip).empty());
    EXPECT_FALSE(converter.MaxNumThreads.GetInfo(ParameterInfo_Description).empty());
    EXPECT_THROW(converter.MaxNumThreads.SetValue(0), GenICam::OutOfRangeException);
}

TEST(ImageFormatConverter, OutputPixelFormatOffersElevenFormatsInOrder) {
    const CImageFormatConverter converter;
    std::vector<EPixelType> types;
    for (const auto& entry : converter.OutputPixelFormat.GetEntries()) {
        types.push_back(static_cast<EPixelType>(entry.value));
    }
    EXPECT_THAT(types, ::testing::ElementsAreArray(OutputTypes));
}

TEST(ImageFormatConverter, PaddingAndOrientationBelongToTheDestinationFormat) {
    CImageFormatConverter converter;
    converter.OutputPixelFormat.SetValue(PixelType_Mono8);
    const auto has = [&](EPixelType type, std::size_t padding, EImageOrientation orientation) {
        return converter.ImageHasDestinationFormat(type, padding, orientation);
    };
    EXPECT_TRUE(has(PixelType_Mono8, 0, ImageOrientation_TopDown));
    EXPECT_TRUE(has(PixelType_Mono8, 0, ImageOrientation_BottomUp));
    EXPECT_FALSE(has(PixelType_Mono8, 1, ImageOrientation_TopDown));
    EXPECT_FALSE(has(PixelType_Mono16, 0, ImageOrientation_TopDown));
    EXPECT_FALSE(has(PixelType_Undefined, 0, ImageOrientation_TopDown));
    converter.OutputPaddingX.SetValue(1);
    EXPECT_TRUE(has(PixelType_Mono8, 1, ImageOrientation_TopDown));
    converter.OutputOrientation.SetValue(OutputOrientation_TopDown);
    EXPECT_TRUE(has(PixelType_Mono8, 1, ImageOrientation_TopDown));
    EXPECT_FALSE(has(PixelType_Mono8, 1, ImageOrientation_BottomUp));
    converter.OutputOrientation.SetValue(OutputOrientation_BottomUp);
    EXPECT_FALSE(has(PixelType_Mono8, 1, ImageOrientation_TopDown));
}

TEST(ImageFormatConverter, TheImageTellsItsFormSizeAndOrientation) {
    CImageFormatConverter converter;
    converter.OutputPixelFormat.SetValue(PixelType_RGB8Packed);
    converter.OutputPaddingX.SetValue(2);
    converter.OutputOrientation.SetValue(OutputOrientation_BottomUp);
    COrlixImage image;
    const std::array<std::uint8_t, 4> source{1, 2, 3, 4};
    converter.Convert(image, source.data(), 4, PixelType_Mono8, 2, 2, 0, ImageOrientation_TopDown);
    EXPECT_EQ(image.GetPixelType(), PixelType_RGB8Packed);
    EXPECT_EQ(image.GetWidth(), 2U);
    EXPECT_EQ(image.GetHeight(), 2U);
    EXPECT_EQ(image.GetPaddingX(), 2U);
    EXPECT_EQ(image.GetOrientation(), ImageOrientation_BottomUp);
    EXPECT_THAT(BytesOf(image), ElementsAre(3, 3, 3, 4, 4, 4, 0, 0, 1, 1, 1, 2, 2, 2, 0, 0));
}

TEST(ImageFormatConverter, UnchangedKeepsTheOrientationOfTheSource) {
    CImageFormatConverter converter;
    converter.OutputPixelFormat.SetValue(PixelType_Mono8);
    COrlixImage image;
    const std::array<std::uint8_t, 2> source{1, 2};
    converter.Convert(image, source.data(), 2, PixelType_Mono8, 1, 2, 0, ImageOrientation_BottomUp);
    EXPECT_EQ(image.GetOrientation(), ImageOrientation_BottomUp);
    EXPECT_THAT(BytesOf(image), ElementsAre(1, 2));
}

TEST(ImageFormatConverter, FewerBitsKeepTheMostSignificantOnes) {
    CImageFormatConverter converter;
    converter.OutputPixelFormat.SetValue(PixelType_Mono8);
    for (const auto alignment : {OutputBitAlignment_LsbAligned, OutputBitAlignment_MsbAligned}) {
        converter.OutputBitAlignment.SetValue(alignment);
        EXPECT_THAT(Convert(converter, {0xFF, 0x12, 0x00, 0xFF}, PixelType_Mono16, 2, 1),
                    ElementsAre(0x12, 0xFF));
    }
}

TEST(ImageFormatConverter, MoreBitsKeepTheValueOrMoveItUp) {
    CImageFormatConverter converter;
    converter.OutputPixelFormat.SetValue(PixelType_Mono16);
    EXPECT_THAT(Convert(converter, {0x12, 0xFF}, PixelType_Mono8, 2, 1),
                ElementsAre(0x12, 0, 0xFF, 0));
    converter.OutputBitAlignment.SetValue(OutputBitAlignment_MsbAligned);
    EXPECT_THAT(Convert(converter, {0x12, 0xFF}, PixelType_Mono8, 2, 1),
                ElementsAre(0, 0x12, 0, 0xFF));
}

TEST(ImageFormatConverter, AlphaOutOfNothingIsOpaqueAndAlphaThatIsThereStays) {
    const CImageFormatConverter converter;
    EXPECT_THAT(Convert(converter, {1, 2, 3}, PixelType_RGB8Packed, 1, 1),
                ElementsAre(3, 2, 1, 255));
    EXPECT_THAT(Convert(converter, {1, 2, 3, 4}, PixelType_RGBA8Packed, 1, 1),
                ElementsAre(3, 2, 1, 4));
}

TEST(ImageFormatConverter, ABufferThatIsTooSmallIsRefusedWithBothSizes) {
    const CImageFormatConverter converter;
    COrlixImage image;
    const std::vector<std::uint8_t> source(164);
    EXPECT_EQ(TextOf<GenICam::InvalidArgumentException>([&] {
                  converter.Convert(image, source.data(), source.size(), PixelType_RGB8Packed, 10,
                                    5, 3, ImageOrientation_TopDown);
              }),
              "Can't convert an image of 10 x 5 pixels in RGB8Packed with 3 bytes of padding a "
              "line: its buffer has 164 bytes, but 165 are needed.");
}

TEST(ImageFormatConverter, ABufferThatIsLargerThanThePictureIsTaken) {
    CImageFormatConverter converter;
    converter.OutputPixelFormat.SetValue(PixelType_Mono8);
    EXPECT_THAT(Convert(converter, {1, 2, 3, 4}, PixelType_Mono8, 2, 1), ElementsAre(1, 2));
}

TEST(ImageFormatConverter, AWidthOrHeightOfZeroIsRefused) {
    const CImageFormatConverter converter;
    COrlixImage image;
    const std::uint8_t byte = 0;
    const auto convert = [&](std::uint32_t width, std::uint32_t height) {
        return TextOf<GenICam::InvalidArgumentException>([&] {
            converter.Convert(image, &byte, 1, PixelType_Mono8, width, height, 0,
                              ImageOrientation_TopDown);
        });
    };
    EXPECT_EQ(convert(0, 1),
              "Can't convert an image of 0 x 1 pixels in Mono8 with 0 bytes of padding a line: "
              "width and height must be at least 1.");
    EXPECT_EQ(convert(1, 0),
              "Can't convert an image of 1 x 0 pixels in Mono8 with 0 bytes of padding a line: "
              "width and height must be at least 1.");
}

TEST(ImageFormatConverter, AnUndefinedOrUnknownPixelTypeIsRefused) {
    const CImageFormatConverter converter;
    COrlixImage image;
    const std::uint8_t byte = 0;
    const auto convert = [&](EPixelType type) {
        return TextOf<GenICam::InvalidArgumentException>(
            [&] { converter.Convert(image, &byte, 1, type, 1, 1, 0, ImageOrientation_TopDown); });
    };
    EXPECT_EQ(convert(PixelType_Undefined),
              "Can't convert an image of 1 x 1 pixels in an undefined pixel type with 0 bytes of "
              "padding a line: a known pixel type is needed.");
    EXPECT_EQ(convert(static_cast<EPixelType>(0x01083FFF)),
              "Can't convert an image of 1 x 1 pixels in the unknown pixel type 0x1083FFF with 0 "
              "bytes of padding a line: a known pixel type is needed.");
}

// Writes 1.024 for 1024, as some languages' locales do.
class GroupingNumbers : public std::numpunct<char> {
protected:
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(ImageFormatConverter, NumbersInErrorsDoNotDependOnTheLocale) {
    const CImageFormatConverter converter;
    COrlixImage image;
    const std::uint8_t byte = 0;
    const auto unknown = static_cast<EPixelType>(0x01083FFF);
    const std::locale before = std::locale::global(std::locale(std::locale(), new GroupingNumbers));
    const std::string conversion = TextOf<GenICam::InvalidArgumentException>([&] {
        converter.Convert(image, &byte, 1, unknown, 1920, 1200, 0, ImageOrientation_TopDown);
    });
    const std::string size = TextOf<GenICam::InvalidArgumentException>(
        [&] { static_cast<void>(ComputeBufferSize(unknown, 1920, 1200)); });
    const std::string tooLarge = TextOf<GenICam::OutOfRangeException>(
        [] { static_cast<void>(ComputeBufferSize(PixelType_Mono8, 1920, 1200, SIZE_MAX - 1920)); });
    std::locale::global(before);
    EXPECT_EQ(conversion,
              "Can't convert an image of 1920 x 1200 pixels in the unknown pixel type 0x1083FFF "
              "with 0 bytes of padding a line: a known pixel type is needed.");
    EXPECT_EQ(size, "The size of an image can't be computed: the pixel type 0x1083FFF is unknown.");
    EXPECT_EQ(tooLarge,
              "An image of format Mono8 with 1920 x 1200 pixels and 18446744073709549695 bytes of "
              "padding a line is too large for 64 bits.");
}

TEST(ImageFormatConverter, ANullPointerIsRefused) {
    const CImageFormatConverter converter;
    COrlixImage image;
    EXPECT_THROW(
        converter.Convert(image, nullptr, 1, PixelType_Mono8, 1, 1, 0, ImageOrientation_TopDown),
        GenICam::InvalidArgumentException);
    EXPECT_THROW(converter.Convert(image, COrlixImage()), GenICam::InvalidArgumentException);
}

TEST(ImageFormatConverter, APairWithoutAConversionIsRefusedWithTheFormatsThatWouldDo) {
    CImageFormatConverter converter;
    COrlixImage image;
    const std::array<std::uint8_t, 16> bytes{};
    const auto convert = [&] {
        return TextOf<GenICam::InvalidArgumentException>([&] {
            converter.Convert(image, bytes.data(), bytes.size(), PixelType_Coord3D_C32f, 1, 1, 0,
                              ImageOrientation_TopDown);
        });
    };
    EXPECT_FALSE(converter.IsSupportedInputFormat(PixelType_Coord3D_C32f));
    EXPECT_TRUE(converter.IsSupportedInputFormat(PixelType_Mono16));
    EXPECT_THAT(convert(), ::testing::StartsWith(
                               "Can't convert an image from Coord3D_C32f to BGRA8Packed: the "
                               "formats that can be converted to it are Mono1Packed, "));
    converter.OutputPixelFormat.SetValue(PixelType_Mono10, false);
    EXPECT_EQ(convert(),
              "Can't convert an image from Coord3D_C32f to Mono10: it is no output format.");
}

TEST(ImageFormatConverter, ASourceWithMoreBytesThan64BitsCountIsRefused) {
    const CImageFormatConverter converter;
    COrlixImage image;
    const std::uint8_t byte = 0;
    EXPECT_EQ(TextOf<GenICam::OutOfRangeException>([&] {
                  converter.Convert(image, &byte, 1, PixelType_RGB16Packed, 0xFFFFFFFF, 0xFFFFFFFF,
                                    SIZE_MAX / 2, ImageOrientation_TopDown);
              }),
              "An image of format RGB16Packed with 4294967295 x 4294967295 pixels and "
              "9223372036854775807 bytes of padding a line is too large for 64 bits.");
}

// The source has one byte for eight pixels, and is said to be there.
TEST(ImageFormatConverter, AnOutputWithMoreBytesThan64BitsCountIsRefused) {
    CImageFormatConverter converter;
    converter.OutputPixelFormat.SetValue(PixelType_RGB16Packed);
    COrlixImage image;
    const std::uint8_t byte = 0;
    EXPECT_EQ(TextOf<GenICam::OutOfRangeException>([&] {
                  converter.Convert(image, &byte, SIZE_MAX, PixelType_Mono1Packed, 0xFFFFFFFF,
                                    0xFFFFFFFF, 0, ImageOrientation_TopDown);
              }),
              "An image of format RGB16Packed with 4294967295 x 4294967295 pixels and 0 bytes of "
              "padding a line is too large for 64 bits.");
    EXPECT_EQ(image.GetImageSize(), 0U);
}

TEST(ImageFormatConverter, AFailureLeavesTheDestinationUntouched) {
    const CImageFormatConverter converter;
    COrlixImage image;
    const std::uint8_t byte = 9;
    converter.Convert(image, &byte, 1, PixelType_Mono8, 1, 1, 0, ImageOrientation_TopDown);
    const void* const buffer = image.GetBuffer();
    EXPECT_ANY_THROW(
        converter.Convert(image, &byte, 1, PixelType_Mono16, 1, 1, 0, ImageOrientation_TopDown));
    EXPECT_EQ(image.GetBuffer(), buffer);
    EXPECT_EQ(image.GetPixelType(), PixelType_BGRA8Packed);
    EXPECT_THAT(BytesOf(image), ElementsAre(9, 9, 9, 255));
}

TEST(ImageFormatConverter, AnImageIsConvertedIntoItself) {
    const CImageFormatConverter converter;
    COrlixImage image;
    image.Reset(PixelType_Mono8, 2, 1);
    std::memcpy(image.GetBuffer(), "\x05\x06", 2);
    converter.Convert(image, image);
    EXPECT_THAT(BytesOf(image), ElementsAre(5, 5, 5, 255, 6, 6, 6, 255));
}

TEST(ImageFormatConverter, ANegativePaddingSetWithoutVerificationIsRefused) {
    CImageFormatConverter converter;
    converter.OutputPaddingX.SetValue(-1, false);
    COrlixImage image;
    const std::uint8_t byte = 0;
    EXPECT_EQ(TextOf<GenICam::OutOfRangeException>([&] {
                  converter.Convert(image, &byte, 1, PixelType_Mono8, 1, 1, 0,
                                    ImageOrientation_TopDown);
              }),
              "Can't convert an image: the parameter OutputPaddingX has the negative value -1.");
}

TEST(ImageFormatConverter, AnyNumberOfThreadsSetWithoutVerificationConverts) {
    const Picture source =
        MakePicture(PixelType_Mono8, 640, 481, 0, ImageOrientation_TopDown, Content::Random, 1);
    const Picture expected = ConvertByReference(
        source,
        {PixelType_BGRA8Packed, 0, ImageOrientation_TopDown, OutputBitAlignment_LsbAligned});
    CImageFormatConverter converter;
    for (const std::int64_t threads : {std::int64_t{0}, std::int64_t{-1}, INT64_MIN, INT64_MAX}) {
        converter.MaxNumThreads.SetValue(threads, false);
        COrlixImage image;
        converter.Convert(image, source.bytes.data(), source.bytes.size(), source.pixelType,
                          source.width, source.height, 0, ImageOrientation_TopDown);
        ASSERT_EQ(image.GetImageSize(), expected.bytes.size());
        EXPECT_EQ(std::memcmp(image.GetBuffer(), expected.bytes.data(), expected.bytes.size()), 0)
            << threads;
    }
}

TEST(ImageFormatConverter, AStreamOfPicturesTakesNoMemoryFromTheSystem) {
    const CImageFormatConverter converter;
    const std::vector<std::uint8_t> source(640 * 480);
    COrlixImage image;
    const auto convert = [&] {
        converter.Convert(image, source.data(), source.size(), PixelType_Mono8, 640, 480, 0,
                          ImageOrientation_TopDown);
    };
    convert();
    convert();
    const std::uint64_t before = BufferPool::Instance().GetStatistics().allocations;
    for (int frame = 0; frame < 10; ++frame) {
        convert();
    }
    EXPECT_EQ(BufferPool::Instance().GetStatistics().allocations, before);
}

// What a node holds a lock for must not be mixed with other work of the same pool.
TEST(ImageFormatConverter, SeveralThreadsMayConvertWithOneConverter) {
    const CImageFormatConverter converter;
    const Picture source = MakePicture(PixelType_RGB8Packed, 512, 301, 0, ImageOrientation_TopDown,
                                       Content::Random, 1);
    const Picture expected = ConvertByReference(
        source,
        {PixelType_BGRA8Packed, 0, ImageOrientation_TopDown, OutputBitAlignment_LsbAligned});
    std::vector<std::jthread> threads;
    std::array<bool, 4> equal{};
    for (bool& result : equal) {
        threads.emplace_back([&] {
            COrlixImage image;
            converter.Convert(image, source.bytes.data(), source.bytes.size(), source.pixelType,
                              source.width, source.height, 0, ImageOrientation_TopDown);
            result =
                std::memcmp(image.GetBuffer(), expected.bytes.data(), expected.bytes.size()) == 0;
        });
    }
    threads.clear();
    EXPECT_THAT(equal, ::testing::Each(true));
}

}  // namespace
}  // namespace Orlix::Test
