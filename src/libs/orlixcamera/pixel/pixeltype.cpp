#include "orlixcamera/pixeltype.h"

#include "orlixcamera/pixel/pixeltable.h"
#include "orlixcamera/pixel/planes.h"

namespace Orlix {
namespace {

bool IsOfFamily(EPixelType pixelType, PixelFamily family) noexcept {
    const PixelFormat* format = FindPixelFormat(pixelType);
    return format != nullptr && format->family == family;
}

}  // namespace

std::uint32_t BitDepth(EPixelType pixelType) noexcept {
    const PixelFormat* format = FindPixelFormat(pixelType);
    return format != nullptr ? format->bitDepth : 0;
}

bool IsKnown(EPixelType pixelType) noexcept {
    return FindPixelFormat(pixelType) != nullptr;
}

bool IsMono(EPixelType pixelType) noexcept {
    return IsOfFamily(pixelType, PixelFamily::Mono);
}

bool IsBayer(EPixelType pixelType) noexcept {
    return IsOfFamily(pixelType, PixelFamily::Bayer);
}

bool IsColor(EPixelType pixelType) noexcept {
    return IsOfFamily(pixelType, PixelFamily::Rgb) || IsYuv(pixelType);
}

bool IsYuv(EPixelType pixelType) noexcept {
    return IsOfFamily(pixelType, PixelFamily::Yuv);
}

bool IsPacked(EPixelType pixelType) noexcept {
    const PixelFormat* format = FindPixelFormat(pixelType);
    return format != nullptr && format->packing == SamplePacking::Shared;
}

bool IsPlanar(EPixelType pixelType) noexcept {
    const PixelFormat* format = FindPixelFormat(pixelType);
    return format != nullptr && format->layout >= PixelLayout::TwoPlanes;
}

std::uint64_t ComputeStride(EPixelType pixelType, std::uint32_t width, std::uint64_t paddingX) {
    return ComputePlanes(pixelType, width, 1, paddingX).planes[0].stride;
}

std::uint64_t ComputeBufferSize(EPixelType pixelType, std::uint32_t width, std::uint32_t height,
                                std::uint64_t paddingX) {
    return ComputePlanes(pixelType, width, height, paddingX).size;
}

}  // namespace Orlix
