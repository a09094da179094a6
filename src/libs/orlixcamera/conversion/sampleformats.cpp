#include "orlixcamera/conversion/sampleformats.h"

#include <algorithm>
#include <iterator>

namespace Orlix {
namespace {

void ReadBytes(const std::uint8_t* line, std::size_t count, std::uint16_t* samples) {
    std::copy(line, line + count, samples);
}

// Bits above the depth don't count.
template <unsigned Depth>
void ReadWords(const std::uint8_t* line, std::size_t count, std::uint16_t* samples) {
    constexpr unsigned Mask = (1U << Depth) - 1;
    for (std::size_t index = 0; index < count; ++index) {
        const unsigned word = line[2 * index] | unsigned{line[2 * index + 1]} << 8U;
        samples[index] = static_cast<std::uint16_t>(word & Mask);
    }
}

// Samples follow each other bit by bit, lowest first. No byte is read that has none of them.
template <unsigned Depth>
void ReadBits(const std::uint8_t* line, std::size_t count, std::uint16_t* samples) {
    constexpr unsigned Mask = (1U << Depth) - 1;
    std::size_t byte = 0;
    unsigned bits = 0;
    unsigned held = 0;
    for (std::size_t index = 0; index < count; ++index) {
        while (held < Depth) {
            bits |= unsigned{line[byte++]} << held;
            held += 8;
        }
        samples[index] = static_cast<std::uint16_t>(bits & Mask);
        bits >>= Depth;
        held -= Depth;
    }
}

// Two samples in three bytes: the upper bits of each have a byte of their own, and the lower bits
// share the byte between, those of the first sample in its lower half.
template <unsigned Depth>
void ReadTriples(const std::uint8_t* line, std::size_t count, std::uint16_t* samples) {
    constexpr unsigned Low = Depth - 8;
    constexpr unsigned Mask = (1U << Low) - 1;
    for (std::size_t index = 0; index < count; ++index) {
        const std::uint8_t* triple = line + index / 2 * 3;
        const unsigned upper = triple[index % 2 * 2];
        const unsigned lower = triple[1] >> (index % 2 * 4);
        samples[index] = static_cast<std::uint16_t>(upper << Low | (lower & Mask));
    }
}

#define ORLIX_BAYER(depth, read)                                     \
    {PixelType_BayerRG##depth, SampleKind::Bayer, read, 0, 0},       \
        {PixelType_BayerGR##depth, SampleKind::Bayer, read, 1, 0},   \
        {PixelType_BayerGB##depth, SampleKind::Bayer, read, 0, 1}, { \
        PixelType_BayerBG##depth, SampleKind::Bayer, read, 1, 1      \
    }

constexpr SampleFormat Formats[] = {
    {PixelType_Mono1Packed, SampleKind::Grey, ReadBits<1>},
    {PixelType_Mono2Packed, SampleKind::Grey, ReadBits<2>},
    {PixelType_Mono4Packed, SampleKind::Grey, ReadBits<4>},
    {PixelType_Mono10, SampleKind::Grey, ReadWords<10>},
    {PixelType_Mono10Packed, SampleKind::Grey, ReadTriples<10>},
    {PixelType_Mono10p, SampleKind::Grey, ReadBits<10>},
    {PixelType_Mono12, SampleKind::Grey, ReadWords<12>},
    {PixelType_Mono12Packed, SampleKind::Grey, ReadTriples<12>},
    {PixelType_Mono12p, SampleKind::Grey, ReadBits<12>},
    ORLIX_BAYER(8, ReadBytes),
    ORLIX_BAYER(10, ReadWords<10>),
    ORLIX_BAYER(10p, ReadBits<10>),
    ORLIX_BAYER(12, ReadWords<12>),
    ORLIX_BAYER(12Packed, ReadTriples<12>),
    ORLIX_BAYER(12p, ReadBits<12>),
    ORLIX_BAYER(16, ReadWords<16>),
    {PixelType_RGB10Packed, SampleKind::Rgb, ReadWords<10>},
    {PixelType_BGR10Packed, SampleKind::Bgr, ReadWords<10>},
    {PixelType_RGB12Packed, SampleKind::Rgb, ReadWords<12>},
    {PixelType_BGR12Packed, SampleKind::Bgr, ReadWords<12>},
    {PixelType_RGB12V1Packed, SampleKind::Rgb, ReadTriples<12>},
    {PixelType_RGB8Planar, SampleKind::RgbPlanar, ReadBytes},
    {PixelType_RGB16Planar, SampleKind::RgbPlanar, ReadWords<16>},
    {PixelType_YUV422Packed, SampleKind::Yuv, ReadBytes, 1, 0},
    {PixelType_YUV422_YUYV_Packed, SampleKind::Yuv, ReadBytes, 0, 1},
    {PixelType_YCbCr422_8_YY_CbCr_Semiplanar, SampleKind::Yuv, ReadBytes},
    {PixelType_YCbCr420_8_YY_CbCr_Semiplanar, SampleKind::Yuv, ReadBytes},
};
#undef ORLIX_BAYER

}  // namespace

const SampleFormat* FindSampleFormat(EPixelType pixelType) noexcept {
    const auto* found =
        std::find_if(std::begin(Formats), std::end(Formats),
                     [=](const SampleFormat& format) { return format.pixelType == pixelType; });
    return found != std::end(Formats) ? found : nullptr;
}

}  // namespace Orlix
