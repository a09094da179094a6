// Lines of YUV pictures: as colour, or as the luma and chroma that they are. Plain functions for
// any thread; the rows belong to the calling one.
#pragma once

#include <cstdint>

#include "orlixcamera/conversion/conversionjob.h"
#include "orlixcamera/conversion/rowmemory.h"
#include "orlixcamera/conversion/sampleformats.h"

namespace Orlix {

// Whether the YUV formats convert to this destination, if RGB8Packed and Mono8 do. Of other YUV
// formats they can be made into luma and planes of chroma.
[[nodiscard]] bool CanConvertYuv(EPixelType destination) noexcept;

// Whether the rows are used for this job.
[[nodiscard]] bool ConvertYuvUsesRows(const ConversionJob& job, const SampleFormat& format);

// True for formats with a line of chroma for each two of luma.
[[nodiscard]] bool HasHalfTheLines(EPixelType pixelType) noexcept;

// A ConversionKernel for the YUV formats, with rows.
void ConvertYuv(const ConversionJob& job, const SampleFormat& format, const RowMemory& rows,
                std::uint32_t first, std::uint32_t end);

// The job of the kernel that makes the lines of the destination from `line` on of the first pixel
// rows.
[[nodiscard]] ConversionJob MakeRowJob(const ConversionJob& job, const RowMemory& rows,
                                       std::uint32_t line, std::uint32_t lines, int shiftUp);

}  // namespace Orlix
