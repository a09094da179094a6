// The last lines of the tallest picture that there can be: counters of 32 bits end there.
#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <vector>

#include "orlixcamera/conversion/conversiontable.h"
#include "orlixcamera/conversion/instructionsets.h"
#include "orlixcamera/conversion/kerneljob.h"
#include "orlixcamera/conversion/pictures.h"
#include "orlixcamera/conversion/referencepicture.h"
#include "orlixcamera/pixeltypemapper.h"

namespace Orlix::Test {
namespace {

constexpr std::uint32_t Tallest = std::numeric_limits<std::uint32_t>::max();
constexpr std::uint32_t Width = 5;
constexpr std::uint32_t Lines = 5;

// All lines of a plane are equal, so that a picture of any height needs the memory of one.
Picture MakeEqualLines(EPixelType type) {
    Picture picture =
        MakePicture(type, Width, Lines, 0, ImageOrientation_TopDown, Content::Random, 1);
    const ImagePlanes planes = ComputePlanes(type, Width, Lines, 0);
    for (std::size_t index = 0; index < planes.count; ++index) {
        const ImagePlane& plane = planes.planes[index];
        std::uint8_t* const first = picture.bytes.data() + plane.offset;
        for (std::uint32_t line = 1; line < plane.lines; ++line) {
            std::memcpy(first + line * plane.stride, first, plane.stride);
        }
    }
    return picture;
}

// The last line of each plane.
std::vector<std::uint8_t> LastLines(const Picture& picture) {
    std::vector<std::uint8_t> bytes;
    const ImagePlanes planes = ComputePlanes(picture.pixelType, Width, Lines, 0);
    for (std::size_t index = 0; index < planes.count; ++index) {
        const ImagePlane& plane = planes.planes[index];
        const auto last =
            picture.bytes.begin() +
            static_cast<std::ptrdiff_t>(plane.offset + (plane.lines - 1) * plane.stride);
        bytes.insert(bytes.end(), last, last + static_cast<std::ptrdiff_t>(plane.stride));
    }
    return bytes;
}

// Every line at the place of the first: the last one is what stays there.
std::vector<std::uint8_t> ConvertLastLines(const Picture& source, const Target& target) {
    const ImagePlanes planes = ComputePlanes(target.pixelType, Width, 1, 0);
    std::vector<std::uint8_t> output(planes.size);
    ConversionJob job = MakeKernelJob(source, source.bytes.data(), target, output.data());
    for (std::size_t index = 0; index < 3; ++index) {
        job.destination[index] =
            output.data() + planes.planes[index < planes.count ? index : 0].offset;
    }
    job.sourceStride = {0, 0, 0};
    job.destinationStride = {0, 0, 0};
    job.height = Tallest;
    FindConversionKernel(source.pixelType, target.pixelType)(job, Tallest - Lines, Tallest);
    return output;
}

TEST(TallestPicture, EndsWithItsLastLineInEveryPairOfFormatsOnEveryInstructionSet) {
    for (const EPixelType sourceType : SourceTypes) {
        const Picture source = MakeEqualLines(sourceType);
        for (const EPixelType outputType : OutputTypes) {
            const Target target{outputType, 0, ImageOrientation_TopDown,
                                OutputBitAlignment_LsbAligned, BayerBorder_Repeat};
            const std::vector<std::uint8_t> expected =
                LastLines(ConvertByReference(source, target));
            for (const std::int64_t set : InstructionSets()) {
                const InstructionSetScope scope(set);
                EXPECT_EQ(ConvertLastLines(source, target), expected)
                    << CPixelTypeMapper::GetNameByPixelType(sourceType) << " to "
                    << CPixelTypeMapper::GetNameByPixelType(outputType) << ", instruction set "
                    << set;
            }
        }
    }
}

TEST(TallestPicture, HasALastLineInASubsampledPlane) {
    const LineSpan lines = LinesOfPlane(Tallest - Lines, Tallest, 2);
    EXPECT_EQ(lines.first, (Tallest - Lines) / 2);
    EXPECT_EQ(lines.end, std::uint64_t{Tallest} / 2 + 1);
    const LineSpan full = LinesOfPlane(Tallest - Lines, Tallest, 1);
    EXPECT_EQ(full.first, Tallest - Lines);
    EXPECT_EQ(full.end, Tallest);
}

}  // namespace
}  // namespace Orlix::Test
