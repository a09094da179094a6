#include "orlixcamera/emulated/sensorformats.h"

#include <algorithm>
#include <array>

#include "orlixcamera/pixel/pixeltable.h"

namespace Orlix::Emulated {
namespace {

// What the sensor can be asked for; emulatedcamera.xml has an entry for each.
constexpr std::array supportedFormats = {
    // clang-format off
    PixelType_Mono1Packed, PixelType_Mono2Packed, PixelType_Mono4Packed, PixelType_Mono8,
    PixelType_Mono10, PixelType_Mono10Packed, PixelType_Mono10p, PixelType_Mono12,
    PixelType_Mono12Packed, PixelType_Mono12p, PixelType_Mono16, PixelType_BayerGR8,
    PixelType_BayerRG8, PixelType_BayerGB8, PixelType_BayerBG8, PixelType_BayerGR10,
    PixelType_BayerRG10, PixelType_BayerGB10, PixelType_BayerBG10, PixelType_BayerGR12,
    PixelType_BayerRG12, PixelType_BayerGB12, PixelType_BayerBG12, PixelType_BayerGR12Packed,
    PixelType_BayerRG12Packed, PixelType_BayerGB12Packed, PixelType_BayerBG12Packed,
    PixelType_BayerGR10p, PixelType_BayerRG10p, PixelType_BayerGB10p, PixelType_BayerBG10p,
    PixelType_BayerGR12p, PixelType_BayerRG12p, PixelType_BayerGB12p, PixelType_BayerBG12p,
    PixelType_BayerGR16, PixelType_BayerRG16, PixelType_BayerGB16, PixelType_BayerBG16,
    PixelType_RGB8Packed, PixelType_BGR8Packed, PixelType_RGBA8Packed, PixelType_BGRA8Packed,
    PixelType_RGB10Packed, PixelType_BGR10Packed, PixelType_RGB12Packed, PixelType_BGR12Packed,
    PixelType_RGB12V1Packed, PixelType_RGB16Packed, PixelType_RGB8Planar, PixelType_RGB16Planar,
    PixelType_YUV422Packed, PixelType_YUV422_YUYV_Packed, PixelType_YCbCr422_8_YY_CbCr_Semiplanar,
    PixelType_YCbCr420_8_YY_CbCr_Semiplanar,
    // clang-format on
};

}  // namespace

bool IsSensorFormat(double pixelFormat) {
    return std::any_of(supportedFormats.begin(), supportedFormats.end(), [&](EPixelType format) {
        return static_cast<double>(format) == pixelFormat;
    });
}

std::uint32_t WidthStepOf(EPixelType pixelType) {
    const PixelFormat& format = *FindPixelFormat(pixelType);
    std::uint32_t step =
        format.family == PixelFamily::Bayer || format.layout != PixelLayout::Whole ? 2 : 1;
    while (step * BitsPerPixel(pixelType) % 8 != 0) {
        step *= 2;
    }
    return step;
}

std::uint32_t HeightStepOf(EPixelType pixelType) {
    const PixelFormat& format = *FindPixelFormat(pixelType);
    return format.family == PixelFamily::Bayer || format.layout == PixelLayout::Semiplanar420 ? 2
                                                                                              : 1;
}

}  // namespace Orlix::Emulated
