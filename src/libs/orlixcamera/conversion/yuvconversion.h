// Lines of YUV pictures: as colour, or as the luma and chroma that they are. Plain functions for
// any thread; the rows belong to the calling one.
#pragma once

#include <cstdint>

#include "orlixcamera/conversion/conversionjob.h"
#include "orlixcamera/conversion/rowmemory.h"
#include "orlixcamera/conversion/sampleformats.h"

namespace Orlix {

// A ConversionKernel for the YUV formats, with rows.
void ConvertYuv(const ConversionJob& job, const SampleFormat& format, const RowMemory& rows,
                std::uint32_t first, std::uint32_t end);

// The job of the kernel that makes the lines of the destination from `line` on of the first pixel
// rows.
[[nodiscard]] ConversionJob MakeRowJob(const ConversionJob& job, const RowMemory& rows,
                                       std::uint32_t line, std::uint32_t lines, int shiftUp);

}  // namespace Orlix
