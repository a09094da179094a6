#include "orlixcamera/conversion/conversiontable.h"

#include <algorithm>
#include <iterator>

#include "orlixcamera/conversion/kernels.h"
#include "orlixcamera/conversion/samplekernel.h"

namespace Orlix {
namespace {

struct ConversionRow {
    EPixelType source;
    EPixelType destination;
    ConversionKernel kernel;
};

// Where only the names of the channels differ, two pairs share a kernel: swapping red and blue is
// one operation in both directions, and grey has no order of channels.
constexpr ConversionRow Rows[] = {
    // clang-format off
    {PixelType_Mono8, PixelType_BGRA8Packed, Mono8ToBgra8},
    {PixelType_Mono8, PixelType_BGR8Packed, Mono8ToRgb8},
    {PixelType_Mono8, PixelType_Mono8, Mono8ToMono8},
    {PixelType_Mono8, PixelType_Mono16, Mono8ToMono16},
    {PixelType_Mono8, PixelType_RGB8Packed, Mono8ToRgb8},
    {PixelType_Mono8, PixelType_RGB16Packed, Mono8ToRgb16},
    {PixelType_Mono8, PixelType_RGB8Planar, Mono8ToRgb8Planar},
    {PixelType_Mono8, PixelType_RGB16Planar, Mono8ToRgb16Planar},
    {PixelType_Mono8, PixelType_YUV444Planar, Mono8ToYuv444},
    {PixelType_Mono8, PixelType_YUV422Planar, Mono8ToYuv422},
    {PixelType_Mono8, PixelType_YUV420Planar, Mono8ToYuv420},
    {PixelType_Mono16, PixelType_BGRA8Packed, Mono16ToBgra8},
    {PixelType_Mono16, PixelType_BGR8Packed, Mono16ToRgb8},
    {PixelType_Mono16, PixelType_Mono8, Mono16ToMono8},
    {PixelType_Mono16, PixelType_Mono16, Mono16ToMono16},
    {PixelType_Mono16, PixelType_RGB8Packed, Mono16ToRgb8},
    {PixelType_Mono16, PixelType_RGB16Packed, Mono16ToRgb16},
    {PixelType_Mono16, PixelType_RGB8Planar, Mono16ToRgb8Planar},
    {PixelType_Mono16, PixelType_RGB16Planar, Mono16ToRgb16Planar},
    {PixelType_Mono16, PixelType_YUV444Planar, Mono16ToYuv444},
    {PixelType_Mono16, PixelType_YUV422Planar, Mono16ToYuv422},
    {PixelType_Mono16, PixelType_YUV420Planar, Mono16ToYuv420},
    {PixelType_RGB8Packed, PixelType_BGRA8Packed, Rgb8ToBgra8},
    {PixelType_RGB8Packed, PixelType_BGR8Packed, Rgb8ToBgr8},
    {PixelType_RGB8Packed, PixelType_Mono8, Rgb8ToMono8},
    {PixelType_RGB8Packed, PixelType_Mono16, Rgb8ToMono16},
    {PixelType_RGB8Packed, PixelType_RGB8Packed, Rgb8ToRgb8},
    {PixelType_RGB8Packed, PixelType_RGB16Packed, Rgb8ToRgb16},
    {PixelType_RGB8Packed, PixelType_RGB8Planar, Rgb8ToRgb8Planar},
    {PixelType_RGB8Packed, PixelType_RGB16Planar, Rgb8ToRgb16Planar},
    {PixelType_RGB8Packed, PixelType_YUV444Planar, Rgb8ToYuv444},
    {PixelType_RGB8Packed, PixelType_YUV422Planar, Rgb8ToYuv422},
    {PixelType_RGB8Packed, PixelType_YUV420Planar, Rgb8ToYuv420},
    {PixelType_BGR8Packed, PixelType_BGRA8Packed, Bgr8ToBgra8},
    {PixelType_BGR8Packed, PixelType_BGR8Packed, Rgb8ToRgb8},
    {PixelType_BGR8Packed, PixelType_Mono8, Bgr8ToMono8},
    {PixelType_BGR8Packed, PixelType_Mono16, Bgr8ToMono16},
    {PixelType_BGR8Packed, PixelType_RGB8Packed, Rgb8ToBgr8},
    {PixelType_BGR8Packed, PixelType_RGB16Packed, Bgr8ToRgb16},
    {PixelType_BGR8Packed, PixelType_RGB8Planar, Bgr8ToRgb8Planar},
    {PixelType_BGR8Packed, PixelType_RGB16Planar, Bgr8ToRgb16Planar},
    {PixelType_BGR8Packed, PixelType_YUV444Planar, Bgr8ToYuv444},
    {PixelType_BGR8Packed, PixelType_YUV422Planar, Bgr8ToYuv422},
    {PixelType_BGR8Packed, PixelType_YUV420Planar, Bgr8ToYuv420},
    {PixelType_RGBA8Packed, PixelType_BGRA8Packed, Rgba8ToBgra8},
    {PixelType_RGBA8Packed, PixelType_BGR8Packed, Rgba8ToBgr8},
    {PixelType_RGBA8Packed, PixelType_Mono8, Rgba8ToMono8},
    {PixelType_RGBA8Packed, PixelType_Mono16, Rgba8ToMono16},
    {PixelType_RGBA8Packed, PixelType_RGB8Packed, Rgba8ToRgb8},
    {PixelType_RGBA8Packed, PixelType_RGB16Packed, Rgba8ToRgb16},
    {PixelType_RGBA8Packed, PixelType_RGB8Planar, Rgba8ToRgb8Planar},
    {PixelType_RGBA8Packed, PixelType_RGB16Planar, Rgba8ToRgb16Planar},
    {PixelType_RGBA8Packed, PixelType_YUV444Planar, Rgba8ToYuv444},
    {PixelType_RGBA8Packed, PixelType_YUV422Planar, Rgba8ToYuv422},
    {PixelType_RGBA8Packed, PixelType_YUV420Planar, Rgba8ToYuv420},
    {PixelType_BGRA8Packed, PixelType_BGRA8Packed, Bgra8ToBgra8},
    {PixelType_BGRA8Packed, PixelType_BGR8Packed, Rgba8ToRgb8},
    {PixelType_BGRA8Packed, PixelType_Mono8, Bgra8ToMono8},
    {PixelType_BGRA8Packed, PixelType_Mono16, Bgra8ToMono16},
    {PixelType_BGRA8Packed, PixelType_RGB8Packed, Rgba8ToBgr8},
    {PixelType_BGRA8Packed, PixelType_RGB16Packed, Bgra8ToRgb16},
    {PixelType_BGRA8Packed, PixelType_RGB8Planar, Bgra8ToRgb8Planar},
    {PixelType_BGRA8Packed, PixelType_RGB16Planar, Bgra8ToRgb16Planar},
    {PixelType_BGRA8Packed, PixelType_YUV444Planar, Bgra8ToYuv444},
    {PixelType_BGRA8Packed, PixelType_YUV422Planar, Bgra8ToYuv422},
    {PixelType_BGRA8Packed, PixelType_YUV420Planar, Bgra8ToYuv420},
    {PixelType_RGB16Packed, PixelType_BGRA8Packed, Rgb16ToBgra8},
    {PixelType_RGB16Packed, PixelType_BGR8Packed, Rgb16ToBgr8},
    {PixelType_RGB16Packed, PixelType_Mono8, Rgb16ToMono8},
    {PixelType_RGB16Packed, PixelType_Mono16, Rgb16ToMono16},
    {PixelType_RGB16Packed, PixelType_RGB8Packed, Rgb16ToRgb8},
    {PixelType_RGB16Packed, PixelType_RGB16Packed, Rgb16ToRgb16},
    {PixelType_RGB16Packed, PixelType_RGB8Planar, Rgb16ToRgb8Planar},
    {PixelType_RGB16Packed, PixelType_RGB16Planar, Rgb16ToRgb16Planar},
    {PixelType_RGB16Packed, PixelType_YUV444Planar, Rgb16ToYuv444},
    {PixelType_RGB16Packed, PixelType_YUV422Planar, Rgb16ToYuv422},
    {PixelType_RGB16Packed, PixelType_YUV420Planar, Rgb16ToYuv420},
    // clang-format on
};

// What rows of samples are made into before a kernel of this table takes them.
constexpr EPixelType RowForms[] = {PixelType_Mono8, PixelType_Mono16, PixelType_RGB8Packed,
                                   PixelType_BGR8Packed, PixelType_RGB16Packed};

constexpr bool HasRow(EPixelType source, EPixelType destination) {
    return std::any_of(std::begin(Rows), std::end(Rows), [=](const ConversionRow& row) {
        return row.source == source && row.destination == destination;
    });
}
constexpr bool TakesRows(const ConversionRow& row) {
    return std::all_of(std::begin(RowForms), std::end(RowForms),
                       [&](EPixelType form) { return HasRow(form, row.destination); });
}
static_assert(std::all_of(std::begin(Rows), std::end(Rows), TakesRows),
              "a destination lacks the kernel of a form that rows have");

}  // namespace

ConversionKernel FindConversionKernel(EPixelType source, EPixelType destination) noexcept {
    const auto* row =
        std::find_if(std::begin(Rows), std::end(Rows), [=](const ConversionRow& candidate) {
            return candidate.source == source && candidate.destination == destination;
        });
    if (row != std::end(Rows)) {
        return row->kernel;
    }
    const bool output = std::any_of(std::begin(Rows), std::end(Rows), [=](const auto& candidate) {
        return candidate.destination == destination;
    });
    return output && CanConvertBySamples(source, destination) ? ConvertBySamples : nullptr;
}

bool NeedsRows(ConversionKernel kernel, const ConversionJob& job) noexcept {
    return kernel == ConvertBySamples && UsesRows(job);
}

}  // namespace Orlix
