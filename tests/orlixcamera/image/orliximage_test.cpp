#include "orlixcamera/orliximage.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

#include "gcbase/gcexception.h"
#include "orlixcamera/bufferpool.h"
#include "orlixcamera/copycounter.h"

namespace Orlix {
namespace {

std::string invalidArgument(const std::function<void()>& call) {
    try {
        call();
    } catch (const GenICam::InvalidArgumentException& error) {
        return error.GetDescription();
    }
    return "no exception";
}

std::vector<unsigned char> ramp(std::size_t size) {
    std::vector<unsigned char> bytes(size);
    std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(0));
    return bytes;
}

void expectEmpty(const COrlixImage& image) {
    EXPECT_FALSE(image.IsValid());
    EXPECT_EQ(image.GetPixelType(), PixelType_Undefined);
    EXPECT_EQ(image.GetWidth(), 0U);
    EXPECT_EQ(image.GetHeight(), 0U);
    EXPECT_EQ(image.GetPaddingX(), 0U);
    EXPECT_EQ(image.GetImageSize(), 0U);
    EXPECT_EQ(image.GetBuffer(), nullptr);
    EXPECT_FALSE(image.OwnsBuffer());
    std::size_t stride = 0;
    EXPECT_FALSE(image.GetStride(stride));
}

TEST(OrlixImage, ANewImageIsEmpty) {
    expectEmpty(COrlixImage());
}

TEST(OrlixImage, ResetGivesABufferOfThePoolWithTheAskedGeometry) {
    COrlixImage image;
    image.Reset(PixelType_RGB8Packed, 5, 3, 2, ImageOrientation_BottomUp);
    EXPECT_TRUE(image.IsValid());
    EXPECT_TRUE(image.OwnsBuffer());
    EXPECT_EQ(image.GetPixelType(), PixelType_RGB8Packed);
    EXPECT_EQ(image.GetWidth(), 5U);
    EXPECT_EQ(image.GetHeight(), 3U);
    EXPECT_EQ(image.GetPaddingX(), 2U);
    EXPECT_EQ(image.GetOrientation(), ImageOrientation_BottomUp);
    EXPECT_EQ(image.GetImageSize(), 51U);
    EXPECT_GE(image.GetAllocatedBufferSize(), 51U);
    std::size_t stride = 0;
    EXPECT_TRUE(image.GetStride(stride));
    EXPECT_EQ(stride, 17U);
    std::memset(image.GetBuffer(), 1, image.GetImageSize());
    image.Release();
    expectEmpty(image);
}

TEST(OrlixImage, ResetOfAnUnsharedImageTakesTheSameMemoryAgain) {
    COrlixImage image;
    image.Reset(PixelType_Mono8, 1000, 1000);
    const void* const before = image.GetBuffer();
    image.Reset(PixelType_Mono8, 1000, 999);
    EXPECT_EQ(image.GetBuffer(), before);
}

TEST(OrlixImage, ResetOfASharedImageLeavesTheOtherHandleAlone) {
    COrlixImage image;
    image.Reset(PixelType_Mono8, 4, 1);
    std::memcpy(image.GetBuffer(), "abcd", 4);
    const COrlixImage other = image;
    image.Reset(PixelType_Mono8, 4, 1);
    EXPECT_NE(image.GetBuffer(), other.GetBuffer());
    EXPECT_EQ(std::memcmp(other.GetBuffer(), "abcd", 4), 0);
}

TEST(OrlixImage, CopiesAndMovesShareTheBufferAndCopyNoPixel) {
    PixelCopyCounter::Reset();
    COrlixImage image;
    image.Reset(PixelType_Mono8, 64, 64);
    const void* const buffer = image.GetBuffer();
    EXPECT_TRUE(image.IsUnique());
    COrlixImage copy = image;
    EXPECT_FALSE(image.IsUnique());
    COrlixImage assigned;
    assigned = copy;
    const COrlixImage moved = std::move(copy);
    expectEmpty(copy);  // NOLINT(bugprone-use-after-move): a moved-from image is empty
    EXPECT_EQ(assigned.GetBuffer(), buffer);
    EXPECT_EQ(moved.GetBuffer(), buffer);
    EXPECT_EQ(PixelCopyCounter::Read(), 0U);
}

TEST(OrlixImage, MovingAnImageOntoItselfKeepsIt) {
    COrlixImage image;
    image.Reset(PixelType_Mono8, 2, 2);
    COrlixImage& same = image;
    image = std::move(same);
    EXPECT_TRUE(image.IsValid());
    EXPECT_TRUE(image.OwnsBuffer());
}

TEST(OrlixImage, CopyImageIsDeepAndCountsItsBytes) {
    const std::vector<unsigned char> pixels = ramp(6 * 4);
    COrlixImage image;
    PixelCopyCounter::Reset();
    image.CopyImage(pixels.data(), pixels.size(), PixelType_Mono16, 2, 4, 2,
                    ImageOrientation_TopDown);
    EXPECT_EQ(PixelCopyCounter::Read(), 24U);
    EXPECT_EQ(std::memcmp(image.GetBuffer(), pixels.data(), 24), 0);
    COrlixImage copy;
    copy.CopyImage(image);
    EXPECT_NE(copy.GetBuffer(), image.GetBuffer());
    EXPECT_EQ(copy.GetPaddingX(), 2U);
    EXPECT_EQ(std::memcmp(copy.GetBuffer(), pixels.data(), 24), 0);
    EXPECT_EQ(PixelCopyCounter::Reset(), 48U);
}

TEST(OrlixImage, AnImageMayBeCopiedOntoItself) {
    COrlixImage image;
    image.CopyImage("abcd", 4, PixelType_Mono8, 2, 2, 0);
    const COrlixImage shared = image;
    image.CopyImage(image);
    EXPECT_NE(image.GetBuffer(), shared.GetBuffer());
    EXPECT_EQ(std::memcmp(image.GetBuffer(), "abcd", 4), 0);
}

TEST(OrlixImage, CopyImageThrowsForInvalidGeometryAndLeavesTheImage) {
    const std::vector<unsigned char> pixels(100);
    COrlixImage image;
    image.Reset(PixelType_Mono8, 1, 1);
    const void* const before = image.GetBuffer();
    const auto copy = [&](EPixelType type, std::uint32_t width, std::uint32_t height) {
        return invalidArgument(
            [&] { image.CopyImage(pixels.data(), pixels.size(), type, width, height, 0); });
    };
    EXPECT_EQ(copy(PixelType_Mono8, 0, 10), "An image can not have a size of 0 x 10 pixels.");
    EXPECT_EQ(copy(PixelType_Mono8, 10, 0), "An image can not have a size of 10 x 0 pixels.");
    EXPECT_NE(copy(PixelType_Undefined, 10, 10), "no exception");
    EXPECT_EQ(copy(PixelType_Mono16, 10, 10),
              "The image needs a buffer of 200 bytes, but the one passed has 100 bytes.");
    EXPECT_EQ(invalidArgument([&] { image.CopyImage(nullptr, 9, PixelType_Mono8, 3, 3, 0); }),
              "An image needs a buffer, but a null pointer was passed.");
    EXPECT_EQ(invalidArgument([&] { image.CopyImage(COrlixImage()); }),
              "An empty image can not be copied.");
    EXPECT_EQ(image.GetBuffer(), before);
}

TEST(OrlixImage, AnAttachedBufferLivesUntilTheLastHandleLetsGo) {
    auto frame = std::make_shared<std::vector<unsigned char>>(ramp(12));
    const std::weak_ptr<std::vector<unsigned char>> watch = frame;
    PixelCopyCounter::Reset();
    COrlixImage image;
    image.AttachBuffer(frame, frame->data(), frame->size(), PixelType_Mono8, 4, 3);
    frame.reset();
    COrlixImage copy = image;
    image.Release();
    EXPECT_TRUE(copy.OwnsBuffer());
    EXPECT_FALSE(watch.expired());
    EXPECT_EQ(static_cast<const unsigned char*>(copy.GetBuffer())[11], 11);
    EXPECT_EQ(PixelCopyCounter::Read(), 0U);
    copy.Release();
    EXPECT_TRUE(watch.expired());
}

TEST(OrlixImage, AUserBufferIsNotOwned) {
    std::vector<unsigned char> pixels = ramp(12);
    COrlixImage image;
    image.AttachUserBuffer(pixels.data(), pixels.size(), PixelType_Mono8, 4, 3);
    EXPECT_TRUE(image.IsValid());
    EXPECT_FALSE(image.OwnsBuffer());
    EXPECT_FALSE(image.IsUnique());
    EXPECT_EQ(image.GetBuffer(), pixels.data());
}

TEST(OrlixImage, AttachThrowsForTooFewBytesAndLeavesTheImage) {
    std::vector<unsigned char> pixels(12);
    COrlixImage image;
    image.AttachUserBuffer(pixels.data(), 12, PixelType_Mono8, 4, 3);
    EXPECT_EQ(
        invalidArgument([&] { image.AttachUserBuffer(pixels.data(), 12, PixelType_Mono8, 4, 4); }),
        "The image needs a buffer of 16 bytes, but the one passed has 12 bytes.");
    EXPECT_EQ(image.GetHeight(), 3U);
}

TEST(OrlixImage, SizesAre64BitsWide) {
    // Nothing is touched here, so the address space is enough.
    COrlixImage image;
    image.AttachUserBuffer(&image, std::size_t{1} << 40U, PixelType_RGB16Packed, 100000, 100000);
    EXPECT_EQ(image.GetImageSize(), 60000000000U);
    std::size_t stride = 0;
    EXPECT_TRUE(image.GetStride(stride));
    EXPECT_EQ(stride, 600000U);
}

}  // namespace
}  // namespace Orlix
