#include "orlixdataprocessingcore/core/image.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <thread>

#include "orlixcamera/bufferpool.h"
#include "orlixcamera/copycounter.h"
#include "orlixdataprocessingcore/core/bufferprovider.h"
#include "orlixdataprocessingcore/core/errors.h"
#include "orlixdataprocessingcore/core/integer.h"
#include "orlixdataprocessingcore/expectthrow.h"
#include "orlixdataprocessingcore/utils/propertyinfo.h"

namespace {

using namespace Orlix::DataProcessing::Core;
using Orlix::COrlixImage;
using Orlix::PixelCopyCounter;
using Orlix::Test::expectThrow;

// Serves buffers of the process's pool and counts them.
class CountingProvider : public IBufferProvider {
public:
    std::shared_ptr<void> getBuffer(std::size_t size) override {
        ++count;
        return Orlix::BufferPool::Instance().Allocate(size);
    }
    int count = 0;
};

COrlixImage makePicture() {
    COrlixImage image;
    image.Reset(Orlix::PixelType_Mono8, 4, 2, 2);
    std::memset(image.GetBuffer(), 7, image.GetImageSize());
    return image;
}

std::uint8_t getFirstPixel(const Image& image) {
    return *static_cast<const std::uint8_t*>(image.getDataConst());
}

class ImageTest : public testing::Test {
protected:
    std::shared_ptr<CountingProvider> provider_ = std::make_shared<CountingProvider>();
};

TEST_F(ImageTest, SharesThePixelsOfAnImageThatOwnsThem) {
    const COrlixImage picture = makePicture();
    PixelCopyCounter::Reset();
    const Image image(picture, provider_, false);
    EXPECT_EQ(image.getDataConst(), picture.GetBuffer());
    EXPECT_EQ(image.getPixelType(), Orlix::PixelType_Mono8);
    EXPECT_EQ(image.getWidth(), 4U);
    EXPECT_EQ(image.getHeight(), 2U);
    EXPECT_EQ(image.getLinePadding(), 2U);
    EXPECT_EQ(image.getImageSize(), picture.GetImageSize());
    EXPECT_EQ(provider_->count, 0);
    EXPECT_EQ(PixelCopyCounter::Read(), 0U);
}

TEST_F(ImageTest, CopiesPixelsThatWereOnlyLent) {
    std::array<std::uint8_t, 8> memory{1, 2, 3, 4, 5, 6, 7, 8};
    COrlixImage lent;
    lent.AttachUserBuffer(memory.data(), memory.size(), Orlix::PixelType_Mono8, 4, 2);
    PixelCopyCounter::Reset();
    const Image image(lent, provider_, false);
    memory.fill(0);
    EXPECT_EQ(getFirstPixel(image), 1);
    EXPECT_EQ(provider_->count, 1);
    EXPECT_EQ(PixelCopyCounter::Read(), 8U);
}

TEST_F(ImageTest, CopiesWhenToldSo) {
    const COrlixImage picture = makePicture();
    const Image image(picture, provider_, true);
    EXPECT_NE(image.getDataConst(), picture.GetBuffer());
    EXPECT_EQ(getFirstPixel(image), 7);
    EXPECT_EQ(image.getLinePadding(), 2U);
    EXPECT_EQ(provider_->count, 1);
}

TEST_F(ImageTest, WithoutAProviderCopiesComeFromTheProcessPool) {
    const Image image(makePicture(), nullptr, true);
    EXPECT_EQ(getFirstPixel(image), 7);
}

TEST_F(ImageTest, AProviderWithoutABufferFailsTheCopyAndLeavesTheImage) {
    class EmptyProvider : public IBufferProvider {
    public:
        std::shared_ptr<void> getBuffer(std::size_t) override { return nullptr; }
    };
    const auto empty = std::make_shared<EmptyProvider>();
    const COrlixImage picture = makePicture();
    const char* const text = "The buffer provider gave no buffer of 12 bytes.";
    expectThrow<GenICam::BadAllocException>([&] { const Image image(picture, empty, true); }, text);
    Image shared(picture, empty, false);
    expectThrow<GenICam::BadAllocException>([&] { static_cast<void>(shared.getData()); }, text);
    EXPECT_EQ(shared.getDataConst(), picture.GetBuffer());
    EXPECT_EQ(getFirstPixel(shared), 7);
}

TEST_F(ImageTest, EmptyAndErrorImagesHaveNoPixels) {
    const auto error = std::make_shared<InvalidValueError>("Bad.", DateTime::now());
    for (const Image& image : {Image(), Image(error), Image(COrlixImage(), provider_, true)}) {
        EXPECT_FALSE(image.isValid());
        EXPECT_EQ(image.getPixelType(), Orlix::PixelType_Undefined);
        EXPECT_EQ(image.getWidth(), 0U);
        EXPECT_EQ(image.getHeight(), 0U);
        EXPECT_EQ(image.getImageSize(), 0U);
        EXPECT_EQ(image.getLinePadding(), 0U);
        EXPECT_EQ(image.getDataConst(), nullptr);
        EXPECT_EQ(Image(image).getData(), nullptr);
    }
    EXPECT_FALSE(Image().hasError(true));
    EXPECT_EQ(Image(error).getError(true), error);
}

TEST_F(ImageTest, AnErrorDropsThePixels) {
    Image image(makePicture(), provider_, false);
    expectThrow<GenICam::InvalidArgumentException>([&] { image.setError(nullptr); },
                                                   "Invalid error pointer passed.");
    EXPECT_TRUE(image.isValid());
    image.setError(std::make_shared<DeviceError>("Gone.", DateTime::now()));
    EXPECT_FALSE(image.isValid());
    EXPECT_TRUE(image.hasError(true));
}

TEST_F(ImageTest, WritingAlonePixelsCopiesNothing) {
    Image image(makePicture(), provider_, false);
    PixelCopyCounter::Reset();
    EXPECT_EQ(image.getData(), image.getDataConst());
    EXPECT_EQ(PixelCopyCounter::Read(), 0U);
    EXPECT_EQ(provider_->count, 0);
}

TEST_F(ImageTest, WritingSharedPixelsCopiesThemOnceIntoAPooledBuffer) {
    const Image original(makePicture(), provider_, false);
    Image copy(original);
    PixelCopyCounter::Reset();
    std::memset(copy.getData(), 9, copy.getImageSize());
    std::memset(copy.getData(), 9, copy.getImageSize());
    EXPECT_EQ(getFirstPixel(original), 7);
    EXPECT_EQ(getFirstPixel(copy), 9);
    EXPECT_EQ(PixelCopyCounter::Read(), original.getImageSize());
    EXPECT_EQ(provider_->count, 1);
}

TEST_F(ImageTest, AHandleToThePictureAlsoCountsAsSharing) {
    const COrlixImage picture = makePicture();
    Image image(picture, provider_, false);
    std::memset(image.getData(), 9, image.getImageSize());
    EXPECT_EQ(*static_cast<const std::uint8_t*>(picture.GetBuffer()), 7);
}

TEST_F(ImageTest, TravelsThroughHandlesAndVariantsWithoutACopy) {
    PixelCopyCounter::Reset();
    const COrlixImage picture = makePicture();
    Variant value(Image(picture, provider_, false));
    const Variant queued(value);
    const auto taken = queued.getCOW<Image>(true);
    COWPtr<Image> held(taken);
    EXPECT_EQ(held.getConst()->getDataConst(), picture.GetBuffer());
    // Even a non-const access only copies the handle, until pixels are written.
    held->setError(std::make_shared<DeviceError>("Gone.", DateTime::now()));
    EXPECT_EQ(PixelCopyCounter::Read(), 0U);
    EXPECT_FALSE(taken->hasError(true));
}

TEST_F(ImageTest, OneWriterGetsItsOwnPixelsWhileOthersRead) {
    const COWPtr<Image> image = COWPtr<Image>::make(makePicture(), provider_, false);
    COWPtr<Image> forWriter(image);
    std::thread writer([handle = std::move(forWriter)]() mutable {
        std::memset(handle->getData(), 9, handle.getConst()->getImageSize());
    });
    std::thread reader([handle = image] { EXPECT_EQ(getFirstPixel(*handle), 7); });
    writer.join();
    reader.join();
    EXPECT_EQ(getFirstPixel(*image), 7);
}

// The reader's handle goes away on its own thread; the writer that then finds itself alone writes
// in place, behind all that was read.
TEST_F(ImageTest, AWriterThatIsLeftAloneWritesBehindAllReads) {
    for (int i = 0; i < 100; ++i) {
        COWPtr<Image> image = COWPtr<Image>::make(makePicture(), provider_, false);
        std::thread reader(
            [handle = COWPtr<Image>(image)] { EXPECT_EQ(getFirstPixel(*handle), 7); });
        std::memset(image->getData(), 9, image.getConst()->getImageSize());
        reader.join();
    }
}

TEST_F(ImageTest, HasReadOnlyPropertiesByName) {
    const Image image(makePicture(), provider_, false);
    const TypeInfo type = image.getTypeInfo(true);
    const Variant width = type.getProperty("Width").getValue(image);
    EXPECT_EQ(width.get<Integer>(true)->get(), 4);
    const Variant pixelType = type.getProperty("PixelType").getValue(image);
    EXPECT_EQ(pixelType.get<Integer>(true)->get(), Orlix::PixelType_Mono8);
    Image writable(image);
    expectThrow<GenICam::RuntimeException>(
        [&] { type.getProperty("Width").setValue(writable, "", Variant(Integer(1))); },
        "Property \"Width\" is read-only.");
}

}  // namespace
