// The kernel of every format that has no kernel of its own: its lines become rows of one of the
// simple forms, or colour at once, and the kernel of that form does the rest.
#pragma once

#include <cstddef>

#include "orlixcamera/conversion/conversionjob.h"

namespace Orlix {

// True for the formats of sampleformats.cpp to destinations of 8 and 16 bits whose kernels from the
// simple forms are there.
[[nodiscard]] bool CanConvertBySamples(EPixelType source, EPixelType destination) noexcept;

// Whether ConvertBySamples makes rows for this job, or reads to the destination at once.
[[nodiscard]] bool UsesRows(const ConversionJob& job) noexcept;

// A ConversionKernel: a job that uses rows and has none takes those of the calling thread.
void ConvertBySamples(const ConversionJob& job, std::uint32_t first, std::uint32_t end);

}  // namespace Orlix
