#include "orlixcamera/conversion/sampleformats.h"

#include <algorithm>
#include <iterator>

namespace Orlix {
namespace {

#define ORLIX_PACKING(Name, sampleBits) \
    constexpr SamplePacking Name{sampleBits, Read##Name##To8, Read##Name##To16};
ORLIX_PACKINGS(ORLIX_PACKING)
#undef ORLIX_PACKING
constexpr SamplePacking LumaAndChroma{8, nullptr, nullptr};

#define ORLIX_BAYER(depth, packing)                                     \
    {PixelType_BayerRG##depth, SampleKind::Bayer, packing, 0, 0},       \
        {PixelType_BayerGR##depth, SampleKind::Bayer, packing, 1, 0},   \
        {PixelType_BayerGB##depth, SampleKind::Bayer, packing, 0, 1}, { \
        PixelType_BayerBG##depth, SampleKind::Bayer, packing, 1, 1      \
    }

constexpr SampleFormat Formats[] = {
    {PixelType_Mono1Packed, SampleKind::Grey, Bits1},
    {PixelType_Mono2Packed, SampleKind::Grey, Bits2},
    {PixelType_Mono4Packed, SampleKind::Grey, Bits4},
    {PixelType_Mono10, SampleKind::Grey, Words10},
    {PixelType_Mono10Packed, SampleKind::Grey, Triples10},
    {PixelType_Mono10p, SampleKind::Grey, Bits10},
    {PixelType_Mono12, SampleKind::Grey, Words12},
    {PixelType_Mono12Packed, SampleKind::Grey, Triples12},
    {PixelType_Mono12p, SampleKind::Grey, Bits12},
    ORLIX_BAYER(8, Bytes),
    ORLIX_BAYER(10, Words10),
    ORLIX_BAYER(10p, Bits10),
    ORLIX_BAYER(12, Words12),
    ORLIX_BAYER(12Packed, Triples12),
    ORLIX_BAYER(12p, Bits12),
    ORLIX_BAYER(16, Words16),
    {PixelType_RGB10Packed, SampleKind::Rgb, Words10},
    {PixelType_BGR10Packed, SampleKind::Bgr, Words10},
    {PixelType_RGB12Packed, SampleKind::Rgb, Words12},
    {PixelType_BGR12Packed, SampleKind::Bgr, Words12},
    {PixelType_RGB12V1Packed, SampleKind::Rgb, Triples12},
    {PixelType_RGB8Planar, SampleKind::RgbPlanar, Bytes},
    {PixelType_RGB16Planar, SampleKind::RgbPlanar, Words16},
    {PixelType_YUV422Packed, SampleKind::Uyvy, LumaAndChroma},
    {PixelType_YUV422_YUYV_Packed, SampleKind::Yuyv, LumaAndChroma},
    {PixelType_YCbCr422_8_YY_CbCr_Semiplanar, SampleKind::Semiplanar, LumaAndChroma},
    {PixelType_YCbCr420_8_YY_CbCr_Semiplanar, SampleKind::Semiplanar, LumaAndChroma},
};
#undef ORLIX_BAYER

// Whether the samples of a pixel have as many bits as its number says. What isn't grey is never
// moved up within a byte, so that it needs whole bytes at least.
constexpr bool IsPossible(const SampleFormat& format) {
    const std::uint32_t bits = BitsPerPixel(format.pixelType);
    const std::uint32_t sampleBits = format.packing.sampleBits;
    switch (format.kind) {
        case SampleKind::Grey:
            return bits == sampleBits;
        case SampleKind::Bayer:
            return bits == sampleBits && sampleBits >= 8;
        case SampleKind::Rgb:
        case SampleKind::Bgr:
        case SampleKind::RgbPlanar:
            return bits == 3 * sampleBits && sampleBits >= 8;
        case SampleKind::Uyvy:
        case SampleKind::Yuyv:
            return bits == 16;
        case SampleKind::Semiplanar:
            return bits == 16 || bits == 12;
    }
    return false;
}
static_assert(std::all_of(std::begin(Formats), std::end(Formats), IsPossible),
              "a row's kind and packing don't make the pixels that its format has");

}  // namespace

const SampleFormat* FindSampleFormat(EPixelType pixelType) noexcept {
    const auto* found =
        std::find_if(std::begin(Formats), std::end(Formats),
                     [=](const SampleFormat& format) { return format.pixelType == pixelType; });
    return found != std::end(Formats) ? found : nullptr;
}

}  // namespace Orlix
