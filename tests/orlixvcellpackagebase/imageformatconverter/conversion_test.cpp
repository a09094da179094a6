// Jobs of ImageFormatConverter, driven as a graph drives them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "imageformatconverter/imageformatconverter.h"
#include "orlixcamera/copycounter.h"
#include "orlixcamera/orliximage.h"
#include "orlixdataprocessingcore/core/errors.h"
#include "orlixdataprocessingcore/core/handle.h"
#include "orlixdataprocessingcore/core/nodearguments.h"
#include "orlixdataprocessingcore/core/services.h"
#include "support/countingprovider.h"
#include "support/recordingsink.h"
#include "support/testpool.h"
#include "support/texts.h"

namespace Plugin::OrlixVCellPackageBase {
namespace {

namespace Core = Orlix::DataProcessing::Core;
namespace Utils = Orlix::DataProcessing::Utils;
using testing::ElementsAre;
using testing::IsEmpty;

Core::Image makeImage(Orlix::EPixelType type, std::size_t padding = 0) {
    Orlix::COrlixImage image;
    image.Reset(type, 4, 2, padding);
    std::memset(image.GetBuffer(), 100, image.GetImageSize());
    return {image, nullptr, false};
}

class Conversion : public testing::Test {
protected:
    Conversion() {
        node.setOutputPixelFormat(Orlix::PixelType_Mono8);
        input = node.configureInputType("Image", Utils::TypeInfo::getTypeInfo<Core::Image>(true));
        output = node.attachOutputSink("Image", sink);
        node.start(Core::NodeArgumentCollection());
    }
    ~Conversion() override { node.stop(); }

    // One job; returns the image that came out.
    Utils::COWPtr<Core::Image> run(const Utils::Variant& value) {
        const auto result = node.startExecution(
            [&](std::shared_ptr<Core::IGraphUpdate>& update, Core::PinValues& values) {
                update = Core::getDefaultUpdateFactory()->createUpdate(&node, nullptr);
                values["Image"] = value;
                return true;
            });
        EXPECT_EQ(result, Core::StartExecutionResult::Executed);
        return sink->values().back().getCOW<Core::Image>(true);
    }

    const std::shared_ptr<CountingProvider> provider = std::make_shared<CountingProvider>();
    const std::shared_ptr<TestPool> pool =
        std::make_shared<TestPool>(Core::getDefaultUpdateFactory(), provider);
    ImageFormatConverter node{pool};
    const std::shared_ptr<RecordingSink> sink = std::make_shared<RecordingSink>();
    std::shared_ptr<Core::IHandle> input;
    std::shared_ptr<Core::IHandle> output;
};

TEST_F(Conversion, ImageThatHasTheFormIsForwardedItself) {
    const auto image = Utils::COWPtr<Core::Image>::make(makeImage(Orlix::PixelType_Mono8));
    const auto copiesBefore = Orlix::PixelCopyCounter::Read();
    const auto result = run(image);
    EXPECT_EQ(result.getConst(), image.getConst());
    EXPECT_EQ(Orlix::PixelCopyCounter::Read(), copiesBefore);
}

TEST_F(Conversion, OtherPixelFormatIsConverted) {
    const auto result = run(Utils::Variant(makeImage(Orlix::PixelType_RGB8Packed)));
    EXPECT_EQ(result.getConst()->getPixelType(), Orlix::PixelType_Mono8);
    EXPECT_EQ(result.getConst()->getWidth(), 4U);
    EXPECT_EQ(result.getConst()->getHeight(), 2U);
    EXPECT_EQ(static_cast<const unsigned char*>(result.getConst()->getDataConst())[0], 100);
}

TEST_F(Conversion, OtherLinePaddingIsConvertedAlsoInTheSamePixelFormat) {
    const auto image = Utils::COWPtr<Core::Image>::make(makeImage(Orlix::PixelType_Mono8, 3));
    const auto result = run(image);
    EXPECT_NE(result.getConst(), image.getConst());
    EXPECT_EQ(result.getConst()->getLinePadding(), 0U);
    node.setOutputPaddingX(3);
    EXPECT_EQ(run(image).getConst(), image.getConst());
}

TEST_F(Conversion, OrientationThatTurnsTheImageOverIsAConversion) {
    const auto image = Utils::COWPtr<Core::Image>::make(makeImage(Orlix::PixelType_Mono8));
    node.setOutputOrientationEnums(Orlix::OutputOrientation_BottomUp);
    EXPECT_NE(run(image).getConst(), image.getConst());
    node.setOutputOrientationEnums(Orlix::OutputOrientation_TopDown);
    EXPECT_EQ(run(image).getConst(), image.getConst());
}

TEST_F(Conversion, InputErrorTravelsOnOneLevelDeeper) {
    const auto cause =
        std::make_shared<Core::InvalidValueError>("It broke.", Utils::DateTime::now());
    const Utils::LogCapture capture;
    const auto result = run(Utils::Variant(Core::Image(cause)));
    ASSERT_TRUE(result.getConst()->hasError(true));
    const auto error = result.getConst()->getError(true);
    EXPECT_EQ(error->getDescription(), "Input image is invalid.");
    EXPECT_EQ(error->getName(), "InvalidValueError");
    EXPECT_THAT(error->getParentErrors(), ElementsAre(cause));
    EXPECT_THAT(getLines(capture, "orlix.dataprocessing.vcell.ImageFormatConverter"),
                ElementsAre("4 ImageFormatConverter " + toText(&node) +
                            ": Input image has an error. Description: \"It broke.\""));
    EXPECT_FALSE(node.hasError());
}

TEST_F(Conversion, ChangeOfTheFormatTakesEffectAtTheNextJob) {
    const Utils::Variant image(makeImage(Orlix::PixelType_Mono8));
    EXPECT_EQ(run(image).getConst()->getPixelType(), Orlix::PixelType_Mono8);
    node.setOutputPixelFormat(Orlix::PixelType_BGRA8Packed);
    EXPECT_EQ(run(image).getConst()->getPixelType(), Orlix::PixelType_BGRA8Packed);
}

TEST_F(Conversion, ImageThatCanNotBeConvertedFailsItsJobOnly) {
    const auto failed = run(Utils::Variant(Core::Image()));
    EXPECT_TRUE(failed.getConst()->hasError(true));
    EXPECT_TRUE(node.hasError());
    const auto good = run(Utils::Variant(makeImage(Orlix::PixelType_Mono8)));
    EXPECT_FALSE(good.getConst()->hasError(true));
    EXPECT_FALSE(node.hasError());
}

TEST_F(Conversion, ConvertedImageIsNotCopied) {
    const Utils::Variant image(makeImage(Orlix::PixelType_RGB8Packed));
    const auto copiesBefore = Orlix::PixelCopyCounter::Read();
    static_cast<void>(run(image));
    EXPECT_EQ(Orlix::PixelCopyCounter::Read(), copiesBefore);
}

// The first pixel keeps its own red; a copy of the inner one would have the mean of four, 20.
TEST_F(Conversion, BayerPicturesAreInterpolatedUpToTheirEdges) {
    Orlix::COrlixImage image;
    image.Reset(Orlix::PixelType_BayerRG8, 4, 4);
    auto* const samples = static_cast<std::uint8_t*>(image.GetBuffer());
    const std::array<std::uint8_t, 16> pattern = {10, 0, 10, 0, 0, 50, 0, 50,
                                                  30, 0, 30, 0, 0, 90, 0, 90};
    std::copy(pattern.begin(), pattern.end(), samples);
    node.setOutputPixelFormat(Orlix::PixelType_RGB8Packed);
    const auto result = run(Utils::Variant(Core::Image(image, nullptr, false)));
    ASSERT_EQ(result.getConst()->getPixelType(), Orlix::PixelType_RGB8Packed);
    const auto* const rgb = static_cast<const std::uint8_t*>(result.getConst()->getDataConst());
    EXPECT_EQ(std::vector<int>(rgb, rgb + 3), (std::vector<int>{10, 0, 50}));
}

TEST_F(Conversion, WithoutAnInputThereIsNothingToAccess) {
    EXPECT_EQ(getFailure<GenICam::RuntimeException>([this] { node.execute(); }),
              "Cannot access nullptr object.");
    EXPECT_THAT(sink->values(), IsEmpty());
}

TEST_F(Conversion, EachConversionFetchesTheProviderAndItsPixelsLieThere) {
    const Utils::Variant rgb(makeImage(Orlix::PixelType_RGB8Packed));
    for (int conversions = 1; conversions <= 3; ++conversions) {
        const auto result = run(rgb);
        EXPECT_EQ(pool->bufferProviderFetches(), conversions);
        EXPECT_TRUE(provider->owns(result.getConst()->getDataConst()));
    }
    EXPECT_THAT(provider->sizes(), ElementsAre(8U, 8U, 8U));
}

TEST_F(Conversion, WhatIsNotConvertedFetchesNoProvider) {
    static_cast<void>(run(Utils::Variant(makeImage(Orlix::PixelType_Mono8))));
    const auto cause = std::make_shared<Core::InvalidValueError>("", Utils::DateTime::now());
    static_cast<void>(run(Utils::Variant(Core::Image(cause))));
    EXPECT_EQ(pool->bufferProviderFetches(), 0);
    EXPECT_THAT(provider->sizes(), IsEmpty());
}

TEST_F(Conversion, SettersAndJobsOnTwoThreadsDoNotMeet) {
    const Utils::Variant image(makeImage(Orlix::PixelType_RGB8Packed));
    std::thread setter([this] {
        for (int i = 0; i < 200; ++i) {
            node.setOutputPaddingX(i % 5);
            node.setOutputPixelFormat(i % 2 == 0 ? Orlix::PixelType_Mono8
                                                 : Orlix::PixelType_BGR8Packed);
        }
    });
    for (int i = 0; i < 200; ++i) {
        EXPECT_FALSE(run(image).getConst()->hasError(true));
    }
    setter.join();
}

}  // namespace
}  // namespace Plugin::OrlixVCellPackageBase
