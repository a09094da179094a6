// Which kernel converts which format into which: the only place that knows. A new pair is a new
// row and a new kernel. The table is constant; any thread may read it.
#pragma once

#include "orlixcamera/api.h"
#include "orlixcamera/conversion/conversionjob.h"
#include "orlixcamera/pixeltype.h"

namespace Orlix {

// Null for a pair without a row.
[[nodiscard]] ORLIXCAMERA_API ConversionKernel
FindConversionKernel(EPixelType source, EPixelType destination) noexcept;

// True where the job of this kernel needs rows.
[[nodiscard]] bool NeedsRows(ConversionKernel kernel, const ConversionJob& job) noexcept;

}  // namespace Orlix
