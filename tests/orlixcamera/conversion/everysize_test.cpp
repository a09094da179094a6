// Every pair of formats in every size from 1 x 1 to 129 x 5 against the reference, on every
// instruction set of this machine. Each size meets one combination of the settings; with
// ORLIX_EXHAUSTIVE set in the environment it meets all of them, which takes a quarter of an hour.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

#include "orlixcamera/conversion/conversiontable.h"
#include "orlixcamera/conversion/guardedbuffer.h"
#include "orlixcamera/conversion/instructionsets.h"
#include "orlixcamera/conversion/kerneljob.h"
#include "orlixcamera/conversion/referenceformats.h"
#include "orlixcamera/conversion/referencepicture.h"
#include "orlixcamera/orliximage.h"
#include "orlixcamera/pixeltypemapper.h"

namespace Orlix::Test {
namespace {

constexpr std::uint32_t MaxWidth = 129;
constexpr std::uint32_t MaxHeight = 5;
// A picture of the largest size in the largest format, with padding.
constexpr std::size_t BufferSize = std::size_t{MaxWidth} * MaxHeight * 6 + 4096;

bool IsExhaustive() {
    static const bool exhaustive = std::getenv("ORLIX_EXHAUSTIVE") != nullptr;
    return exhaustive;
}

// The sanitizers slow everything down and look for other faults.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr std::uint32_t SizeStep = 13;
#else
constexpr std::uint32_t SizeStep = 1;
#endif

// All combinations of what is not the size, by number.
struct Settings {
    static constexpr std::uint32_t Count = 128;
    explicit Settings(std::uint32_t number)
        : sourceOrientation(static_cast<EImageOrientation>(number % 2)),
          outputOrientation(static_cast<EImageOrientation>(number / 2 % 2)),
          border(static_cast<BayerBorderEnums>(number / 4 % 2)),
          alignment(static_cast<OutputBitAlignmentEnums>(number / 8 % 2)),
          outputPadded(number / 16 % 2 != 0),
          sourcePadded(number / 32 % 2 != 0),
          content(number / 64 % 2 == 0 ? Content::Random : Content::Extreme) {}

    EImageOrientation sourceOrientation;
    EImageOrientation outputOrientation;
    BayerBorderEnums border;
    OutputBitAlignmentEnums alignment;
    bool outputPadded;
    bool sourcePadded;
    Content content;
};

// A padding that makes lines begin at any byte.
std::size_t PaddingOf(bool padded, std::uint32_t width, std::uint32_t height) {
    return padded ? 1 + (width * 3 + height) % 9 : 0;
}

class EverySize : public ::testing::TestWithParam<EPixelType> {
protected:
    void CheckSize(std::uint32_t width, std::uint32_t height) {
        if (!IsExhaustive()) {
            CheckSettings(width, height, Settings(number_++ * 37 % Settings::Count));
            return;
        }
        for (std::uint32_t number = 0; number < Settings::Count; ++number) {
            const Settings settings(number);
            const bool bayer = IsBayerForm(ReferenceFormatOf(GetParam()).form);
            if (bayer || settings.border == BayerBorder_CopyInner) {
                CheckSettings(width, height, settings);
            }
        }
    }

private:
    void CheckSettings(std::uint32_t width, std::uint32_t height, const Settings& settings) {
        const Picture source =
            MakePicture(GetParam(), width, height, PaddingOf(settings.sourcePadded, width, height),
                        settings.sourceOrientation, settings.content, width * 8 + height);
        std::uint8_t* const bytes = source_.Data() + BufferSize - source.bytes.size();
        std::memcpy(bytes, source.bytes.data(), source.bytes.size());
        Reference reference(source);
        for (const EPixelType outputType : OutputTypes) {
            // Where there are not more bits than before, nothing is aligned.
            const bool aligned = ReferenceFormatOf(outputType).packing.depth >
                                 ReferenceFormatOf(source.pixelType).packing.depth;
            if (IsExhaustive() && !aligned && settings.alignment != OutputBitAlignment_LsbAligned) {
                continue;
            }
            const Target target{outputType, PaddingOf(settings.outputPadded, height, width),
                                settings.outputOrientation, settings.alignment, settings.border};
            CheckTarget(source, bytes, target, reference.Convert(target));
        }
    }

    void CheckTarget(const Picture& source, const std::uint8_t* bytes, const Target& target,
                     const Picture& expected) {
        for (const std::int64_t set : sets_) {
            hwy::GetChosenTarget().Update(set);
            EXPECT_TRUE(ConvertsWhole(source, bytes, target, expected))
                << Describe(source, target) << ", instruction set " << set;
            EXPECT_TRUE(ConvertsInStrips(source, bytes, target, expected))
                << Describe(source, target) << ", in strips, instruction set " << set;
        }
        hwy::GetChosenTarget().Update(SupportedSets());
    }

    static std::string Describe(const Picture& source, const Target& target) {
        return std::string(CPixelTypeMapper::GetNameByPixelType(target.pixelType)) + ", " +
               std::to_string(source.width) + " x " + std::to_string(source.height) + ", padding " +
               std::to_string(source.paddingX) + " to " + std::to_string(target.paddingX) +
               ", orientation " + std::to_string(source.orientation) + " to " +
               std::to_string(target.orientation) + ", alignment " +
               std::to_string(target.alignment) + ", border " + std::to_string(target.border);
    }

    bool ConvertsWhole(const Picture& source, const std::uint8_t* bytes, const Target& target,
                       const Picture& expected) {
        converter_.OutputPixelFormat.SetValue(target.pixelType);
        converter_.OutputBitAlignment.SetValue(target.alignment);
        converter_.BayerBorder.SetValue(target.border);
        converter_.OutputPaddingX.SetValue(static_cast<std::int64_t>(target.paddingX));
        converter_.OutputOrientation.SetValue(target.orientation == ImageOrientation_TopDown
                                                  ? OutputOrientation_TopDown
                                                  : OutputOrientation_BottomUp);
        converter_.MaxNumThreads.SetValue(1);
        COrlixImage image;
        converter_.Convert(image, bytes, source.bytes.size(), source.pixelType, source.width,
                           source.height, source.paddingX, source.orientation);
        return image.GetImageSize() == expected.bytes.size() &&
               std::memcmp(image.GetBuffer(), expected.bytes.data(), expected.bytes.size()) == 0;
    }

    // The kernel called for two lines after the other, as if each pair were a strip, into a buffer
    // that ends at a page that can't be touched. Pictures as small as these have no strips of their
    // own; severalstrips_test.cpp has those that do, on threads.
    bool ConvertsInStrips(const Picture& source, const std::uint8_t* bytes, const Target& target,
                          const Picture& expected) {
        std::uint8_t* const output = output_.Data() + BufferSize - expected.bytes.size();
        std::memset(output, 0, expected.bytes.size());
        const ConversionJob job = MakeKernelJob(source, bytes, target, output);
        const ConversionKernel kernel = FindConversionKernel(source.pixelType, target.pixelType);
        for (std::uint32_t line = 0; line < source.height; line += 2) {
            kernel(job, line, std::min(line + 2, source.height));
        }
        return std::memcmp(output, expected.bytes.data(), expected.bytes.size()) == 0;
    }

    const std::vector<std::int64_t> sets_ = InstructionSets();
    GuardedBuffer source_{BufferSize, GuardSide::Back};
    GuardedBuffer output_{BufferSize, GuardSide::Back};
    CImageFormatConverter converter_;
    std::uint32_t number_ = static_cast<std::uint32_t>(GetParam());
};

TEST_P(EverySize, IsEqualToTheReferenceOnEveryInstructionSet) {
    auto size = static_cast<std::uint32_t>(GetParam());
    for (std::uint32_t width = 1; width <= MaxWidth; ++width) {
        for (std::uint32_t height = 1; height <= MaxHeight; ++height) {
            if (size++ % SizeStep == 0) {
                CheckSize(width, height);
            }
        }
        if (HasFailure()) {
            return;
        }
    }
}

std::string SourceName(const ::testing::TestParamInfo<EPixelType>& info) {
    return CPixelTypeMapper::GetNameByPixelType(info.param);
}

INSTANTIATE_TEST_SUITE_P(All, EverySize, ::testing::ValuesIn(SourceTypes), SourceName);

}  // namespace
}  // namespace Orlix::Test
