// The conversion kernels, one for each pair of formats, named SourceToDestination. Each runs on the
// best instruction set of the machine; see ConversionKernel for what it is given.
#pragma once

#include "orlixcamera/conversion/conversionjob.h"

namespace Orlix {

// Pairs by the file that holds them. KERNEL is used with two names and makes one kernel of them.

// swizzlekernels.cpp: 8-bit pixels whose bytes only change places
#define ORLIX_SWIZZLE_KERNELS(KERNEL) \
    KERNEL(Rgb8, Bgra8)               \
    KERNEL(Rgb8, Bgr8)                \
    KERNEL(Bgr8, Bgra8)               \
    KERNEL(Rgba8, Bgra8)              \
    KERNEL(Rgba8, Bgr8)               \
    KERNEL(Rgba8, Rgb8)

// colourkernels.cpp: other 8-bit colour
#define ORLIX_COLOUR_KERNELS(KERNEL) \
    KERNEL(Mono8, Bgra8)             \
    KERNEL(Mono8, Rgb8)              \
    KERNEL(Mono16, Bgra8)            \
    KERNEL(Mono16, Rgb8)             \
    KERNEL(Mono16, Rgb8Planar)       \
    KERNEL(Rgb8, Rgb8Planar)         \
    KERNEL(Bgr8, Rgb8Planar)         \
    KERNEL(Rgba8, Rgb8Planar)        \
    KERNEL(Bgra8, Rgb8Planar)        \
    KERNEL(Rgb16, Bgra8)             \
    KERNEL(Rgb16, Bgr8)              \
    KERNEL(Rgb16, Rgb8Planar)

// widekernels.cpp: 16-bit colour, and the change between 8 and 16 bits
#define ORLIX_WIDE_KERNELS(KERNEL) \
    KERNEL(Mono8, Mono16)          \
    KERNEL(Mono8, Rgb16)           \
    KERNEL(Mono8, Rgb16Planar)     \
    KERNEL(Mono16, Mono8)          \
    KERNEL(Mono16, Rgb16)          \
    KERNEL(Rgb8, Rgb16)            \
    KERNEL(Rgb8, Rgb16Planar)      \
    KERNEL(Bgr8, Rgb16)            \
    KERNEL(Bgr8, Rgb16Planar)      \
    KERNEL(Rgba8, Rgb16)           \
    KERNEL(Rgba8, Rgb16Planar)     \
    KERNEL(Bgra8, Rgb16)           \
    KERNEL(Bgra8, Rgb16Planar)     \
    KERNEL(Rgb16, Rgb8)            \
    KERNEL(Rgb16, Rgb16Planar)

// lumakernels.cpp: colour to grey
#define ORLIX_LUMA_KERNELS(KERNEL) \
    KERNEL(Rgb8, Mono8)            \
    KERNEL(Bgr8, Mono8)            \
    KERNEL(Rgba8, Mono8)           \
    KERNEL(Bgra8, Mono8)           \
    KERNEL(Rgb16, Mono8)           \
    KERNEL(Rgb8, Mono16)           \
    KERNEL(Bgr8, Mono16)           \
    KERNEL(Rgba8, Mono16)          \
    KERNEL(Bgra8, Mono16)          \
    KERNEL(Rgb16, Mono16)

// yuvkernels.cpp: colour to luma and chroma
#define ORLIX_YUV_KERNELS(KERNEL) \
    KERNEL(Rgb8, Yuv444)          \
    KERNEL(Bgr8, Yuv444)          \
    KERNEL(Rgba8, Yuv444)         \
    KERNEL(Bgra8, Yuv444)         \
    KERNEL(Rgb16, Yuv444)         \
    KERNEL(Rgb8, Yuv422)          \
    KERNEL(Bgr8, Yuv422)          \
    KERNEL(Rgba8, Yuv422)         \
    KERNEL(Bgra8, Yuv422)         \
    KERNEL(Rgb16, Yuv422)         \
    KERNEL(Rgb8, Yuv420)          \
    KERNEL(Bgr8, Yuv420)          \
    KERNEL(Rgba8, Yuv420)         \
    KERNEL(Bgra8, Yuv420)         \
    KERNEL(Rgb16, Yuv420)

// copykernels.cpp: bytes stay what they are, and grey has no chroma
#define ORLIX_COPY_KERNELS(KERNEL) \
    KERNEL(Mono8, Mono8)           \
    KERNEL(Mono8, Rgb8Planar)      \
    KERNEL(Mono8, Yuv444)          \
    KERNEL(Mono8, Yuv422)          \
    KERNEL(Mono8, Yuv420)          \
    KERNEL(Mono16, Mono16)         \
    KERNEL(Mono16, Rgb16Planar)    \
    KERNEL(Mono16, Yuv444)         \
    KERNEL(Mono16, Yuv422)         \
    KERNEL(Mono16, Yuv420)         \
    KERNEL(Rgb8, Rgb8)             \
    KERNEL(Bgra8, Bgra8)           \
    KERNEL(Rgb16, Rgb16)

#define ORLIX_DECLARE_KERNEL(Source, Destination) \
    void Source##To##Destination(const ConversionJob& job, std::uint32_t first, std::uint32_t end);
ORLIX_SWIZZLE_KERNELS(ORLIX_DECLARE_KERNEL)
ORLIX_COLOUR_KERNELS(ORLIX_DECLARE_KERNEL)
ORLIX_WIDE_KERNELS(ORLIX_DECLARE_KERNEL)
ORLIX_LUMA_KERNELS(ORLIX_DECLARE_KERNEL)
ORLIX_YUV_KERNELS(ORLIX_DECLARE_KERNEL)
ORLIX_COPY_KERNELS(ORLIX_DECLARE_KERNEL)
#undef ORLIX_DECLARE_KERNEL

// Defines the function that picks the instruction set for a kernel file's own per-set function.
#define ORLIX_DISPATCH_KERNEL(Source, Destination)                              \
    HWY_EXPORT(Source##To##Destination##Lines);                                 \
    void Source##To##Destination(const ConversionJob& job, std::uint32_t first, \
                                 std::uint32_t end) {                           \
        HWY_DYNAMIC_DISPATCH(Source##To##Destination##Lines)(job, first, end);  \
    }

}  // namespace Orlix
