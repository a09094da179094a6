// Pictures that are large enough for three threads, each of which converts a part of the lines:
// every pair of formats against the reference, on every instruction set of this machine.
#include <gtest/gtest.h>
#include <tbb/global_control.h>
#include <tbb/task_arena.h>

#include <string>
#include <vector>

#include "orlixcamera/conversion/convertedpicture.h"
#include "orlixcamera/conversion/instructionsets.h"
#include "orlixcamera/conversion/referenceformats.h"
#include "orlixcamera/conversion/referencepicture.h"
#include "orlixcamera/pixeltypemapper.h"

namespace Orlix::Test {
namespace {

constexpr int Threads = 3;
// A thread is worth so many bytes of the source.
constexpr std::size_t StripBytes = 65536;
constexpr std::uint32_t Width = 131;

struct StripSettings {
    EImageOrientation from, to;
    std::size_t sourcePadding, outputPadding;
    OutputBitAlignmentEnums alignment;
    BayerBorderEnums border;
    Content content;
};
constexpr EImageOrientation TopDown = ImageOrientation_TopDown;
constexpr EImageOrientation BottomUp = ImageOrientation_BottomUp;
constexpr StripSettings AllSettings[] = {
    {TopDown, BottomUp, 3, 7, OutputBitAlignment_LsbAligned, BayerBorder_CopyInner,
     Content::Random},
    {BottomUp, TopDown, 0, 1, OutputBitAlignment_MsbAligned, BayerBorder_Repeat, Content::Extreme},
    {TopDown, TopDown, 1, 64, OutputBitAlignment_LsbAligned, BayerBorder_Repeat, Content::Random},
    {BottomUp, BottomUp, 0, 0, OutputBitAlignment_MsbAligned, BayerBorder_CopyInner,
     Content::Random},
};
// The sanitizers look for other faults than wrong bytes, and take their time.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr std::size_t SettingsStep = 3;
constexpr bool BestSetOnly = true;
#else
constexpr std::size_t SettingsStep = 1;
constexpr bool BestSetOnly = false;
#endif
#if defined(__SANITIZE_THREAD__)
constexpr std::size_t SourceStep = 11;
#else
constexpr std::size_t SourceStep = 1;
#endif

// Even heights and odd ones.
std::uint32_t HeightOf(EPixelType type, std::size_t padding, std::size_t number) {
    const std::size_t twoLines = ReferencePlanesOf(type, Width, 2, padding).size;
    return static_cast<std::uint32_t>(2 * (Threads * StripBytes / twoLines + 1) + number % 2);
}

// Of the conversion itself: three threads, also on a machine with fewer processors.
class SeveralStrips : public ::testing::TestWithParam<EPixelType> {
protected:
    void Check(const Picture& source, const StripSettings& settings) {
        Reference reference(source);
        for (const EPixelType outputType : OutputTypes) {
            const Target target{outputType, settings.outputPadding, settings.to, settings.alignment,
                                settings.border};
            const Picture expected = reference.Convert(target);
            for (const std::int64_t set : sets_) {
                const InstructionSetScope scope(set);
                arena_.execute([&] {
                    EXPECT_TRUE(HasBytes(Convert(source, target, Threads), expected))
                        << CPixelTypeMapper::GetNameByPixelType(outputType) << ", " << source.height
                        << " lines, padding " << source.paddingX << " to " << target.paddingX
                        << ", instruction set " << set;
                });
            }
        }
    }

private:
    const std::vector<std::int64_t> sets_ =
        BestSetOnly ? std::vector{SupportedSets()} : InstructionSets();
    tbb::global_control control_{tbb::global_control::max_allowed_parallelism, Threads};
    tbb::task_arena arena_{Threads};
};

TEST_P(SeveralStrips, OnThreeThreadsAreEqualToTheReference) {
    for (std::size_t number = 0; number < std::size(AllSettings); number += SettingsStep) {
        const StripSettings& settings = AllSettings[number];
        const Picture source =
            MakePicture(GetParam(), Width, HeightOf(GetParam(), settings.sourcePadding, number),
                        settings.sourcePadding, settings.from, settings.content,
                        static_cast<std::uint32_t>(number));
        ASSERT_GE(source.bytes.size(), Threads * StripBytes);
        Check(source, settings);
        if (HasFailure()) {
            return;
        }
    }
}

std::vector<EPixelType> SampledSourceTypes() {
    std::vector<EPixelType> types;
    for (std::size_t index = 0; index < std::size(SourceTypes); index += SourceStep) {
        types.push_back(SourceTypes[index]);
    }
    return types;
}

std::string SourceName(const ::testing::TestParamInfo<EPixelType>& info) {
    return CPixelTypeMapper::GetNameByPixelType(info.param);
}

INSTANTIATE_TEST_SUITE_P(All, SeveralStrips, ::testing::ValuesIn(SampledSourceTypes()), SourceName);

}  // namespace
}  // namespace Orlix::Test
