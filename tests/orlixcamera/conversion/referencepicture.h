// The conversions once more, pixel by pixel and in plain whole numbers, to compare the kernels
// with.
#pragma once

#include <array>
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
    BayerBorderEnums border = BayerBorder_CopyInner;
};

struct Rgba {
    std::uint32_t r, g, b, a;
};

// One source and what all targets have in common: its colours are read once for each depth.
class Reference {
public:
    explicit Reference(const Picture& source) : source_(source) {}
    [[nodiscard]] Picture Convert(const Target& target);

private:
    const Picture& source_;
    std::array<std::array<std::vector<Rgba>, 2>, 2> colours_;
};

[[nodiscard]] Picture ConvertByReference(const Picture& source, const Target& target);

inline constexpr EPixelType SourceTypes[] = {PixelType_Mono1Packed,
                                             PixelType_Mono2Packed,
                                             PixelType_Mono4Packed,
                                             PixelType_Mono8,
                                             PixelType_Mono10,
                                             PixelType_Mono10Packed,
                                             PixelType_Mono10p,
                                             PixelType_Mono12,
                                             PixelType_Mono12Packed,
                                             PixelType_Mono12p,
                                             PixelType_Mono16,
                                             PixelType_BayerGR8,
                                             PixelType_BayerRG8,
                                             PixelType_BayerGB8,
                                             PixelType_BayerBG8,
                                             PixelType_BayerGR10,
                                             PixelType_BayerRG10,
                                             PixelType_BayerGB10,
                                             PixelType_BayerBG10,
                                             PixelType_BayerGR12,
                                             PixelType_BayerRG12,
                                             PixelType_BayerGB12,
                                             PixelType_BayerBG12,
                                             PixelType_BayerGR12Packed,
                                             PixelType_BayerRG12Packed,
                                             PixelType_BayerGB12Packed,
                                             PixelType_BayerBG12Packed,
                                             PixelType_BayerGR10p,
                                             PixelType_BayerRG10p,
                                             PixelType_BayerGB10p,
                                             PixelType_BayerBG10p,
                                             PixelType_BayerGR12p,
                                             PixelType_BayerRG12p,
                                             PixelType_BayerGB12p,
                                             PixelType_BayerBG12p,
                                             PixelType_BayerGR16,
                                             PixelType_BayerRG16,
                                             PixelType_BayerGB16,
                                             PixelType_BayerBG16,
                                             PixelType_RGB8Packed,
                                             PixelType_BGR8Packed,
                                             PixelType_RGBA8Packed,
                                             PixelType_BGRA8Packed,
                                             PixelType_RGB10Packed,
                                             PixelType_BGR10Packed,
                                             PixelType_RGB12Packed,
                                             PixelType_BGR12Packed,
                                             PixelType_RGB12V1Packed,
                                             PixelType_RGB16Packed,
                                             PixelType_RGB8Planar,
                                             PixelType_RGB16Planar,
                                             PixelType_YUV422Packed,
                                             PixelType_YUV422_YUYV_Packed,
                                             PixelType_YCbCr422_8_YY_CbCr_Semiplanar,
                                             PixelType_YCbCr420_8_YY_CbCr_Semiplanar};

inline constexpr EPixelType OutputTypes[] = {
    PixelType_BGRA8Packed,  PixelType_BGR8Packed,   PixelType_Mono8,       PixelType_Mono16,
    PixelType_RGB8Packed,   PixelType_RGB16Packed,  PixelType_RGB8Planar,  PixelType_RGB16Planar,
    PixelType_YUV444Planar, PixelType_YUV422Planar, PixelType_YUV420Planar};

}  // namespace Orlix::Test
