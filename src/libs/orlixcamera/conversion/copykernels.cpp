// Kernels that move bytes: the same format with other padding or orientation, grey to equal
// planes, and grey to luma beside chroma of 128, which is no colour.
#include <cstring>

#include "orlixcamera/conversion/kernels.h"

namespace Orlix {
namespace {

// How often chroma is there for each pixel, as shifts of the coordinates.
struct Subsampling {
    std::uint32_t columns;
    std::uint32_t lines;
};

void CopyLines(const ConversionJob& job, std::size_t planes, std::size_t bytesPerPixel,
               std::uint32_t first, std::uint32_t end) {
    for (std::uint32_t line = first; line < end; ++line) {
        const auto number = static_cast<std::ptrdiff_t>(line);
        const std::uint8_t* from = job.source[0] + number * job.sourceStride[0];
        for (std::size_t plane = 0; plane < planes; ++plane) {
            std::memcpy(job.destination[plane] + number * job.destinationStride[plane], from,
                        job.width * bytesPerPixel);
        }
    }
}

void FillChroma(const ConversionJob& job, Subsampling subsampling, std::uint32_t first,
                std::uint32_t end) {
    const std::size_t bytes =
        (std::size_t{job.width} + (1U << subsampling.columns) - 1) >> subsampling.columns;
    const std::uint32_t step = 1U << subsampling.lines;
    for (std::uint64_t line = first; line < end; line += step) {
        const auto number = static_cast<std::ptrdiff_t>(line >> subsampling.lines);
        for (std::size_t plane = 1; plane < 3; ++plane) {
            std::memset(job.destination[plane] + number * job.destinationStride[plane], 128, bytes);
        }
    }
}

constexpr Subsampling Yuv444{0, 0};
constexpr Subsampling Yuv422{1, 0};
constexpr Subsampling Yuv420{1, 1};

}  // namespace

#define ORLIX_COPY(name, planes, bytesPerPixel)                                   \
    void name(const ConversionJob& job, std::uint32_t first, std::uint32_t end) { \
        CopyLines(job, planes, bytesPerPixel, first, end);                        \
    }
ORLIX_COPY(Mono8ToMono8, 1, 1)
ORLIX_COPY(Mono8ToRgb8Planar, 3, 1)
ORLIX_COPY(Mono16ToMono16, 1, 2)
ORLIX_COPY(Mono16ToRgb16Planar, 3, 2)
ORLIX_COPY(Rgb8ToRgb8, 1, 3)
ORLIX_COPY(Bgra8ToBgra8, 1, 4)
ORLIX_COPY(Rgb16ToRgb16, 1, 6)
#undef ORLIX_COPY

#define ORLIX_GREY_TO_YUV(Source, Destination)                                  \
    void Source##To##Destination(const ConversionJob& job, std::uint32_t first, \
                                 std::uint32_t end) {                           \
        Source##ToMono8(job, first, end);                                       \
        FillChroma(job, Destination, first, end);                               \
    }
ORLIX_GREY_TO_YUV(Mono8, Yuv444)
ORLIX_GREY_TO_YUV(Mono8, Yuv422)
ORLIX_GREY_TO_YUV(Mono8, Yuv420)
ORLIX_GREY_TO_YUV(Mono16, Yuv444)
ORLIX_GREY_TO_YUV(Mono16, Yuv422)
ORLIX_GREY_TO_YUV(Mono16, Yuv420)
#undef ORLIX_GREY_TO_YUV

}  // namespace Orlix
