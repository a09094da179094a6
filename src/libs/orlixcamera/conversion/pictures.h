// From what a caller says about two pictures to what a kernel is given. Plain functions for any
// thread.
#pragma once

#include <cstddef>
#include <cstdint>

#include "orlixcamera/conversion/conversionerror.h"
#include "orlixcamera/conversion/conversionjob.h"
#include "orlixcamera/imageformatconverter.h"
#include "orlixcamera/imageorientation.h"
#include "orlixcamera/pixel/planes.h"

namespace Orlix {

struct SourcePicture {
    const std::uint8_t* data = nullptr;
    ImagePlanes planes;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    EImageOrientation orientation = ImageOrientation_TopDown;
};

// Throws InvalidArgumentException if the bytes can't be a picture as described, and
// OutOfRangeException if such a picture would have more bytes than 64 bits count.
[[nodiscard]] SourcePicture CheckSource(const SourceArguments& source);

// Throws OutOfRangeException for a padding that was set without verification and is negative.
[[nodiscard]] std::size_t CheckOutputPadding(std::int64_t paddingX);

[[nodiscard]] ConversionJob MakeJob(const SourcePicture& source, std::uint8_t* destination,
                                    const ImagePlanes& output, EImageOrientation orientation);

// Fewer bits keep the most significant ones, more are filled as the alignment says.
void SetShift(ConversionJob& job, EPixelType source, EPixelType destination,
              OutputBitAlignmentEnums alignment);

// The lines of a plane that has one for each `step` lines of the picture. In 64 bits: the greatest
// height is the greatest number of 32 bits, which can't be rounded up.
struct LineSpan {
    std::uint64_t first;
    std::uint64_t end;
};
[[nodiscard]] constexpr LineSpan LinesOfPlane(std::uint64_t first, std::uint64_t end,
                                              std::uint32_t step) {
    return {first / step, (end + step - 1) / step};
}

// Writes zeros behind the pixels of the lines from `first` up to `end`, in every plane.
void ClearPadding(const ConversionJob& job, const ImagePlanes& output, std::uint32_t first,
                  std::uint32_t end);

}  // namespace Orlix
