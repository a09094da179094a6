// The kernel of every format that has no kernel of its own: its lines become rows of one of the
// simple forms, or colour at once, and the kernel of that form does the rest.
#pragma once

#include <cstddef>

#include "orlixcamera/conversion/conversionjob.h"

namespace Orlix {

// A ConversionKernel that needs rows: a job without them takes those of the calling thread.
void ConvertBySamples(const ConversionJob& job, std::uint32_t first, std::uint32_t end);

}  // namespace Orlix
