// What a kernel is given when a test calls it without the converter.
#pragma once

#include <algorithm>
#include <cstdint>

#include "orlixcamera/conversion/conversionjob.h"
#include "orlixcamera/conversion/referenceformats.h"
#include "orlixcamera/conversion/referencepicture.h"

namespace Orlix::Test {

// The source picture's bytes may lie anywhere. `output` has room for the whole destination.
inline ConversionJob MakeKernelJob(const Picture& source, const std::uint8_t* bytes,
                                   const Target& target, std::uint8_t* output) {
    ConversionJob job;
    const ImagePlanes from =
        ComputePlanes(source.pixelType, source.width, source.height, source.paddingX);
    const ImagePlanes to =
        ComputePlanes(target.pixelType, source.width, source.height, target.paddingX);
    const bool flip = source.orientation != target.orientation;
    for (std::size_t index = 0; index < from.count; ++index) {
        const ImagePlane& plane = from.planes[index];
        const auto stride = static_cast<std::ptrdiff_t>(plane.stride);
        job.source[index] = bytes + plane.offset + (flip ? (plane.lines - 1) * plane.stride : 0);
        job.sourceStride[index] = flip ? -stride : stride;
    }
    for (std::size_t index = 0; index < 3; ++index) {
        const ImagePlane& plane = to.planes[index < to.count ? index : 0];
        job.destination[index] = output + plane.offset;
        job.destinationStride[index] = static_cast<std::ptrdiff_t>(plane.stride);
    }
    job.width = source.width;
    job.height = source.height;
    const int difference = static_cast<int>(ReferenceFormatOf(source.pixelType).packing.depth) -
                           static_cast<int>(ReferenceFormatOf(target.pixelType).packing.depth);
    job.shiftDown = std::max(0, difference);
    job.shiftUp = target.alignment == OutputBitAlignment_MsbAligned ? std::max(0, -difference) : 0;
    job.sourceType = source.pixelType;
    job.destinationType = target.pixelType;
    job.copyInner = target.border == BayerBorder_CopyInner;
    return job;
}

}  // namespace Orlix::Test
