#include "providerimage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "gcbase/gcexception.h"
#include "orlixcamera/imageformatconverter.h"
#include "support/countingprovider.h"
#include "support/temporaryfolder.h"
#include "support/texts.h"

namespace Plugin::OrlixVCellPackageBase {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const auto counting = [] { return std::make_shared<CountingProvider>(); };

TEST(ProviderImage, EveryNewBufferIsTheProviders) {
    const auto provider = counting();
    const TemporaryFolder folder;
    folder.addImage("a.png", 7);
    ProviderImage image(provider);
    image.Reset(Orlix::PixelType_Mono8, 5, 3, 1);
    EXPECT_TRUE(provider->owns(image.GetBuffer()));
    std::memset(image.GetBuffer(), 0, image.GetImageSize());
    ProviderImage copy(provider);
    copy.CopyImage(image);
    EXPECT_TRUE(provider->owns(copy.GetBuffer()));
    EXPECT_NE(copy.GetBuffer(), image.GetBuffer());
    image.Load((folder / "a.png").c_str());
    EXPECT_EQ(image.GetWidth(), 7U);
    EXPECT_TRUE(provider->owns(image.GetBuffer()));
    Orlix::CImageFormatConverter().Convert(image, copy);
    EXPECT_EQ(image.GetPixelType(), Orlix::PixelType_BGRA8Packed);
    EXPECT_TRUE(provider->owns(image.GetBuffer()));
    EXPECT_EQ(provider->sizes().size(), 4U);
}

TEST(ProviderImage, WithoutAProviderThePoolServes) {
    ProviderImage image(nullptr);
    image.Reset(Orlix::PixelType_Mono8, 5, 3);
    EXPECT_TRUE(image.OwnsBuffer());
    std::memset(image.GetBuffer(), 0, image.GetImageSize());
}

// The base class's part holds the buffer, so that a sliced copy is as good.
TEST(ProviderImage, PixelsOutliveImageAndProvider) {
    Orlix::COrlixImage kept;
    {
        ProviderImage image(counting());
        image.Reset(Orlix::PixelType_Mono8, 5, 3);
        std::memset(image.GetBuffer(), 42, image.GetImageSize());
        kept = image;
    }
    EXPECT_EQ(static_cast<const unsigned char*>(kept.GetBuffer())[14], 42);
}

class EmptyProvider final : public Orlix::DataProcessing::Core::IBufferProvider {
public:
    std::shared_ptr<void> getBuffer(std::size_t /*size*/) override { return nullptr; }
};

TEST(ProviderImage, AProviderWithoutMemoryIsAnErrorAndTheImageStaysWhatItWas) {
    const TemporaryFolder folder;
    folder.addImage("a.png", 7);
    Orlix::COrlixImage source;
    source.Reset(Orlix::PixelType_Mono8, 5, 3);
    std::memset(source.GetBuffer(), 0, source.GetImageSize());
    ProviderImage image(std::make_shared<EmptyProvider>());
    unsigned char pixels[6] = {};
    image.AttachUserBuffer(pixels, sizeof pixels, Orlix::PixelType_Mono8, 3, 2);
    EXPECT_EQ(getFailure<GenICam::BadAllocException>(
                  [&] { Orlix::CImageFormatConverter().Convert(image, source); }),
              "The buffer provider gave no buffer of 60 bytes.");
    EXPECT_THAT(
        getFailure<GenICam::RuntimeException>([&] { image.Load((folder / "a.png").c_str()); }),
        HasSubstr("': The buffer provider gave no buffer of "));
    EXPECT_EQ(getFailure<GenICam::BadAllocException>([&] { image.CopyImage(source); }),
              "The buffer provider gave no buffer of 15 bytes.");
    EXPECT_EQ(image.GetBuffer(), pixels);
    EXPECT_EQ(image.GetWidth(), 3U);
}

TEST(ProviderImage, AFileThatCanNotBeDecodedAsksForNoMemory) {
    const auto provider = counting();
    const TemporaryFolder folder;
    folder.addFile("a.png");
    ProviderImage image(provider);
    EXPECT_THROW(image.Load((folder / "a.png").c_str()), GenICam::RuntimeException);
    EXPECT_THAT(provider->sizes(), IsEmpty());
}

}  // namespace
}  // namespace Plugin::OrlixVCellPackageBase
