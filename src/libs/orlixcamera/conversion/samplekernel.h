// The kernel for every format that has no kernel of its own: it reads samples into a row, makes a
// row of gray or colour of them, and hands that row to the kernel of that form.
#pragma once

#include "orlixcamera/conversion/conversionjob.h"

namespace Orlix {

// A ConversionKernel. Its rows belong to the calling thread and stay for its next picture; the
// first picture of a width allocates them and may throw std::bad_alloc.
void ConvertBySamples(const ConversionJob& job, std::uint32_t first, std::uint32_t end);

}  // namespace Orlix
