#include "orlixcamera/conversion/sampleformats.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace Orlix {
namespace {

// Bytes are never moved up: what has 16 bits more out of 8 takes a row of bytes for its source.
void ReadBytes(const std::uint8_t* line, std::size_t count, std::uint8_t* to, int) {
    std::memcpy(to, line, count);
}

#define ORLIX_READERS(packing) Read##packing##To8, Read##packing##To16
#define ORLIX_BAYER(depth, ...)                                             \
    {PixelType_BayerRG##depth, SampleKind::Bayer, __VA_ARGS__, 0, 0},       \
        {PixelType_BayerGR##depth, SampleKind::Bayer, __VA_ARGS__, 1, 0},   \
        {PixelType_BayerGB##depth, SampleKind::Bayer, __VA_ARGS__, 0, 1}, { \
        PixelType_BayerBG##depth, SampleKind::Bayer, __VA_ARGS__, 1, 1      \
    }

constexpr SampleFormat Formats[] = {
    {PixelType_Mono1Packed, SampleKind::Grey, ORLIX_READERS(Bits1)},
    {PixelType_Mono2Packed, SampleKind::Grey, ORLIX_READERS(Bits2)},
    {PixelType_Mono4Packed, SampleKind::Grey, ORLIX_READERS(Bits4)},
    {PixelType_Mono10, SampleKind::Grey, ORLIX_READERS(Words10)},
    {PixelType_Mono10Packed, SampleKind::Grey, ORLIX_READERS(Triples10)},
    {PixelType_Mono10p, SampleKind::Grey, ORLIX_READERS(Bits10)},
    {PixelType_Mono12, SampleKind::Grey, ORLIX_READERS(Words12)},
    {PixelType_Mono12Packed, SampleKind::Grey, ORLIX_READERS(Triples12)},
    {PixelType_Mono12p, SampleKind::Grey, ORLIX_READERS(Bits12)},
    ORLIX_BAYER(8, ReadBytes, nullptr),
    ORLIX_BAYER(10, ORLIX_READERS(Words10)),
    ORLIX_BAYER(10p, ORLIX_READERS(Bits10)),
    ORLIX_BAYER(12, ORLIX_READERS(Words12)),
    ORLIX_BAYER(12Packed, ORLIX_READERS(Triples12)),
    ORLIX_BAYER(12p, ORLIX_READERS(Bits12)),
    ORLIX_BAYER(16, ORLIX_READERS(Words16)),
    {PixelType_RGB10Packed, SampleKind::Rgb, ORLIX_READERS(Words10)},
    {PixelType_BGR10Packed, SampleKind::Bgr, ORLIX_READERS(Words10)},
    {PixelType_RGB12Packed, SampleKind::Rgb, ORLIX_READERS(Words12)},
    {PixelType_BGR12Packed, SampleKind::Bgr, ORLIX_READERS(Words12)},
    {PixelType_RGB12V1Packed, SampleKind::Rgb, ORLIX_READERS(Triples12)},
    {PixelType_RGB8Planar, SampleKind::RgbPlanar, ReadBytes, nullptr},
    {PixelType_RGB16Planar, SampleKind::RgbPlanar, ORLIX_READERS(Words16)},
    {PixelType_YUV422Packed, SampleKind::Uyvy, nullptr, nullptr},
    {PixelType_YUV422_YUYV_Packed, SampleKind::Yuyv, nullptr, nullptr},
    {PixelType_YCbCr422_8_YY_CbCr_Semiplanar, SampleKind::Semiplanar, nullptr, nullptr},
    {PixelType_YCbCr420_8_YY_CbCr_Semiplanar, SampleKind::Semiplanar, nullptr, nullptr},
};
#undef ORLIX_BAYER
#undef ORLIX_READERS

}  // namespace

const SampleFormat* FindSampleFormat(EPixelType pixelType) noexcept {
    const auto* found =
        std::find_if(std::begin(Formats), std::end(Formats),
                     [=](const SampleFormat& format) { return format.pixelType == pixelType; });
    return found != std::end(Formats) ? found : nullptr;
}

}  // namespace Orlix
