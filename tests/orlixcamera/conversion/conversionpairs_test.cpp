// Every pair of formats against the reference, on every instruction set of this machine.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <tuple>
#include <utility>
#include <vector>

#include "orlixcamera/conversion/conversiontable.h"
#include "orlixcamera/conversion/convertedpicture.h"
#include "orlixcamera/conversion/guardedbuffer.h"
#include "orlixcamera/conversion/instructionsets.h"
#include "orlixcamera/conversion/kerneljob.h"
#include "orlixcamera/conversion/referencepicture.h"
#include "orlixcamera/orliximage.h"
#include "orlixcamera/pixeltypemapper.h"

namespace Orlix::Test {
namespace {

constexpr std::uint32_t Widths[] = {1,  2,  3,  4,  5,  6,  7,  8,  9,  15, 16, 17,
                                    19, 31, 32, 33, 34, 47, 48, 63, 64, 65, 66, 67};
constexpr std::uint32_t Heights[] = {1, 2, 3, 4, 5};
// The sanitizers look for other faults than wrong bytes, and take their time: a part of the sizes
// shows those, and threads have nothing to do with the format.
#if defined(__SANITIZE_ADDRESS__)
constexpr std::uint32_t SizeStep = 7;
constexpr std::size_t SourceStep = 1;
#elif defined(__SANITIZE_THREAD__)
constexpr std::uint32_t SizeStep = 7;
constexpr std::size_t SourceStep = 11;
#else
constexpr std::uint32_t SizeStep = 1;
constexpr std::size_t SourceStep = 1;
#endif
constexpr std::size_t Paddings[] = {0, 1, 3, 7, 64};

// Walks through the settings in steps of different lengths, so that they meet in many combinations.
struct Variation {
    explicit Variation(std::uint32_t number)
        : sourcePadding(Paddings[number % 5]),
          outputPadding(Paddings[number / 2 % 5]),
          sourceOrientation(static_cast<EImageOrientation>(number / 3 % 2)),
          outputOrientation(static_cast<EImageOrientation>(number / 7 % 2)),
          alignment(static_cast<OutputBitAlignmentEnums>(number % 2)),
          content(number / 5 % 3 == 0 ? Content::Extreme : Content::Random),
          border(static_cast<BayerBorderEnums>(number / 2 % 2)) {}

    std::size_t sourcePadding;
    std::size_t outputPadding;
    EImageOrientation sourceOrientation;
    EImageOrientation outputOrientation;
    OutputBitAlignmentEnums alignment;
    Content content;
    BayerBorderEnums border;
};

class ConversionPairs : public ::testing::TestWithParam<std::tuple<EPixelType, EPixelType>> {
protected:
    // True while there is nothing to complain about.
    bool Check(std::uint32_t width, std::uint32_t height, const Variation& variation) {
        const auto [sourceType, outputType] = GetParam();
        const Picture source =
            MakePicture(sourceType, width, height, variation.sourcePadding,
                        variation.sourceOrientation, variation.content, width * 8 + height);
        const Target target{outputType, variation.outputPadding, variation.outputOrientation,
                            variation.alignment, variation.border};
        const Picture expected = ConvertByReference(source, target);
        for (const std::int64_t set : sets_) {
            const InstructionSetScope scope(set);
            const COrlixImage image = Convert(source, target, 1);
            EXPECT_TRUE(HasBytes(image, expected))
                << width << " x " << height << ", instruction set " << set << ", padding "
                << variation.sourcePadding << " to " << variation.outputPadding << ", orientation "
                << variation.sourceOrientation << " to " << variation.outputOrientation
                << ", alignment " << variation.alignment;
        }
        return !HasFailure();
    }

private:
    const std::vector<std::int64_t> sets_ = InstructionSets();
};

TEST_P(ConversionPairs, SmallPicturesAreEqualToTheReferenceOnEveryInstructionSet) {
    std::uint32_t number = 0;
    std::uint32_t size = static_cast<std::uint32_t>(std::get<0>(GetParam()));
    for (const std::uint32_t width : Widths) {
        for (const std::uint32_t height : Heights) {
            if (size++ % SizeStep != 0) {
                continue;
            }
            // Every other pair of sizes: the sample must stay a matter of seconds.
            if ((width + height) % 2 == 0 && height < 4) {
                continue;
            }
            if (!Check(width, height, Variation(number++))) {
                return;
            }
        }
    }
}

// The ends of a long line are made apart from what is between them.
TEST_P(ConversionPairs, LongLinesAreEqualToTheReference) {
    std::uint32_t number = 0;
    for (const std::uint32_t width : {255U, 256U, 257U, 320U, 391U}) {
        const std::uint32_t height = 1 + number % 5;
        if (!Check(width, height, Variation(number)) ||
            !Check(width, 6 - height, Variation(number + 5))) {
            return;
        }
        number += SizeStep;
    }
}

// A demosaiced picture of that size is made in pieces of its lines.
TEST(LargeBayerPicture, IsEqualToTheReference) {
    for (const auto& [sourceType, outputType] :
         {std::pair{PixelType_BayerGB8, PixelType_BGR8Packed},
          std::pair{PixelType_BayerRG12p, PixelType_RGB16Planar}}) {
        const Picture source =
            MakePicture(sourceType, 4099, 1601, 1, ImageOrientation_TopDown, Content::Random, 1);
        const Target target{outputType, 3, ImageOrientation_BottomUp, OutputBitAlignment_MsbAligned,
                            BayerBorder_CopyInner};
        EXPECT_TRUE(HasBytes(Convert(source, target, 2), ConvertByReference(source, target)));
    }
}

// The kernel itself, on buffers that begin and end at pages that can't be touched. Past the caches
// it writes the same bytes.
TEST_P(ConversionPairs, NoByteBeforeOrBehindThePicturesIsTouched) {
    const auto [sourceType, outputType] = GetParam();
    const ConversionKernel kernel = FindConversionKernel(sourceType, outputType);
    ASSERT_NE(kernel, nullptr);
    for (const GuardSide side : {GuardSide::Front, GuardSide::Back}) {
        for (const std::uint32_t width : {1U, 3U, 16U, 31U, 33U, 64U, 67U, 130U, 300U, 320U}) {
            const ImagePlanes from = ComputePlanes(sourceType, width, 3, 0);
            const ImagePlanes to = ComputePlanes(outputType, width, 3, 0);
            GuardedBuffer source(from.size, side);
            GuardedBuffer output(to.size, side);
            const Picture noise = MakePicture(sourceType, width, 3, 0, ImageOrientation_TopDown,
                                              Content::Random, width);
            std::memcpy(source.Data(), noise.bytes.data(), from.size);
            ConversionJob job = MakeKernelJob(noise, source.Data(),
                                              {outputType, 0, ImageOrientation_TopDown,
                                               OutputBitAlignment_LsbAligned, BayerBorder_Repeat},
                                              output.Data());
            for (const std::int64_t set : InstructionSets()) {
                const InstructionSetScope scope(set);
                job.streams = false;
                kernel(job, 0, 3);
                const std::vector<std::uint8_t> cached(output.Data(), output.Data() + to.size);
                std::memset(output.Data(), 0, to.size);
                job.streams = true;
                kernel(job, 0, 3);
                EXPECT_EQ(std::memcmp(output.Data(), cached.data(), to.size), 0)
                    << width << " wide, instruction set " << set;
            }
        }
    }
}

std::string PairName(const ::testing::TestParamInfo<std::tuple<EPixelType, EPixelType>>& info) {
    return std::string(CPixelTypeMapper::GetNameByPixelType(std::get<0>(info.param))) + "To" +
           CPixelTypeMapper::GetNameByPixelType(std::get<1>(info.param));
}

std::vector<EPixelType> SampledSourceTypes() {
    std::vector<EPixelType> types;
    for (std::size_t index = 0; index < std::size(SourceTypes); index += SourceStep) {
        types.push_back(SourceTypes[index]);
    }
    return types;
}

INSTANTIATE_TEST_SUITE_P(All, ConversionPairs,
                         ::testing::Combine(::testing::ValuesIn(SampledSourceTypes()),
                                            ::testing::ValuesIn(OutputTypes)),
                         PairName);

}  // namespace
}  // namespace Orlix::Test
