// The conversions once more, pixel by pixel and in plain whole numbers, to compare the kernels
// with.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "orlixcamera/imageformatconverter.h"
#include "orlixcamera/pixel/planes.h"

namespace Orlix::Test {

struct Picture {
    EPixelType pixelType = PixelType_Undefined;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::size_t paddingX = 0;
    EImageOrientation orientation = ImageOrientation_TopDown;
    std::vector<std::uint8_t> bytes;
};

// How the bytes of a made-up picture are chosen.
enum class Content { Random, Extreme };

[[nodiscard]] Picture MakePicture(EPixelType pixelType, std::uint32_t width, std::uint32_t height,
                                  std::size_t paddingX, EImageOrientation orientation,
                                  Content content, std::uint32_t seed);

// The form that a picture is to be converted to.
struct Target {
    EPixelType pixelType;
    std::size_t paddingX;
    EImageOrientation orientation;
    OutputBitAlignmentEnums alignment;
};

[[nodiscard]] Picture ConvertByReference(const Picture& source, const Target& target);

inline constexpr EPixelType SourceTypes[] = {
    PixelType_Mono8,       PixelType_Mono16,      PixelType_RGB8Packed, PixelType_BGR8Packed,
    PixelType_RGBA8Packed, PixelType_BGRA8Packed, PixelType_RGB16Packed};

inline constexpr EPixelType OutputTypes[] = {
    PixelType_BGRA8Packed,  PixelType_BGR8Packed,   PixelType_Mono8,       PixelType_Mono16,
    PixelType_RGB8Packed,   PixelType_RGB16Packed,  PixelType_RGB8Planar,  PixelType_RGB16Planar,
    PixelType_YUV444Planar, PixelType_YUV422Planar, PixelType_YUV420Planar};

}  // namespace Orlix::Test
