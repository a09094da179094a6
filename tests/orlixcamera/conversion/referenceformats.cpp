#include "orlixcamera/conversion/referenceformats.h"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace Orlix::Test {
namespace {

// Samples that follow each other bit by bit, the lowest bit of the first byte first.
template <std::uint32_t Depth>
std::uint32_t ReadBits(const std::uint8_t* line, std::size_t sample) {
    std::uint32_t value = 0;
    for (std::uint32_t bit = 0; bit < Depth; ++bit) {
        const std::size_t place = sample * Depth + bit;
        value |= (std::uint32_t{line[place / 8]} >> (place % 8) & 1U) << bit;
    }
    return value;
}

// Two samples in three bytes: the outer ones have the upper bits, that between the lower ones.
template <std::uint32_t Factor>
std::uint32_t ReadOfTriple(const std::uint8_t* line, std::size_t sample) {
    const std::uint8_t* p = line + sample / 2 * 3;
    return sample % 2 == 0 ? p[0] * Factor + p[1] % Factor : p[2] * Factor + p[1] / 16 % Factor;
}

std::uint32_t ReadByte(const std::uint8_t* line, std::size_t sample) {
    return line[sample];
}

template <std::uint32_t Values>
std::uint32_t ReadWord(const std::uint8_t* line, std::size_t sample) {
    return (line[2 * sample] + 256U * line[2 * sample + 1]) % Values;
}

constexpr ReferencePacking Bits1{1, 1, ReadBits<1>};
constexpr ReferencePacking Bits2{2, 2, ReadBits<2>};
constexpr ReferencePacking Bits4{4, 4, ReadBits<4>};
constexpr ReferencePacking Bits10{10, 10, ReadBits<10>};
constexpr ReferencePacking Bits12{12, 12, ReadBits<12>};
constexpr ReferencePacking Triples10{10, 12, ReadOfTriple<4>};
constexpr ReferencePacking Triples12{12, 12, ReadOfTriple<16>};
constexpr ReferencePacking Bytes{8, 8, ReadByte};
constexpr ReferencePacking Words10{10, 16, ReadWord<1024>};
constexpr ReferencePacking Words12{12, 16, ReadWord<4096>};
constexpr ReferencePacking Words16{16, 16, ReadWord<65536>};

constexpr ReferenceFormat Formats[] = {
    {PixelType_Mono1Packed, Form::Grey, Bits1},
    {PixelType_Mono2Packed, Form::Grey, Bits2},
    {PixelType_Mono4Packed, Form::Grey, Bits4},
    {PixelType_Mono8, Form::Grey, Bytes},
    {PixelType_Mono10, Form::Grey, Words10},
    {PixelType_Mono10Packed, Form::Grey, Triples10},
    {PixelType_Mono10p, Form::Grey, Bits10},
    {PixelType_Mono12, Form::Grey, Words12},
    {PixelType_Mono12Packed, Form::Grey, Triples12},
    {PixelType_Mono12p, Form::Grey, Bits12},
    {PixelType_Mono16, Form::Grey, Words16},
    {PixelType_BayerGR8, Form::BayerGR, Bytes},
    {PixelType_BayerRG8, Form::BayerRG, Bytes},
    {PixelType_BayerGB8, Form::BayerGB, Bytes},
    {PixelType_BayerBG8, Form::BayerBG, Bytes},
    {PixelType_BayerGR10, Form::BayerGR, Words10},
    {PixelType_BayerRG10, Form::BayerRG, Words10},
    {PixelType_BayerGB10, Form::BayerGB, Words10},
    {PixelType_BayerBG10, Form::BayerBG, Words10},
    {PixelType_BayerGR12, Form::BayerGR, Words12},
    {PixelType_BayerRG12, Form::BayerRG, Words12},
    {PixelType_BayerGB12, Form::BayerGB, Words12},
    {PixelType_BayerBG12, Form::BayerBG, Words12},
    {PixelType_BayerGR12Packed, Form::BayerGR, Triples12},
    {PixelType_BayerRG12Packed, Form::BayerRG, Triples12},
    {PixelType_BayerGB12Packed, Form::BayerGB, Triples12},
    {PixelType_BayerBG12Packed, Form::BayerBG, Triples12},
    {PixelType_BayerGR10p, Form::BayerGR, Bits10},
    {PixelType_BayerRG10p, Form::BayerRG, Bits10},
    {PixelType_BayerGB10p, Form::BayerGB, Bits10},
    {PixelType_BayerBG10p, Form::BayerBG, Bits10},
    {PixelType_BayerGR12p, Form::BayerGR, Bits12},
    {PixelType_BayerRG12p, Form::BayerRG, Bits12},
    {PixelType_BayerGB12p, Form::BayerGB, Bits12},
    {PixelType_BayerBG12p, Form::BayerBG, Bits12},
    {PixelType_BayerGR16, Form::BayerGR, Words16},
    {PixelType_BayerRG16, Form::BayerRG, Words16},
    {PixelType_BayerGB16, Form::BayerGB, Words16},
    {PixelType_BayerBG16, Form::BayerBG, Words16},
    {PixelType_RGB8Packed, Form::Rgb, Bytes},
    {PixelType_BGR8Packed, Form::Bgr, Bytes},
    {PixelType_RGBA8Packed, Form::Rgba, Bytes},
    {PixelType_BGRA8Packed, Form::Bgra, Bytes},
    {PixelType_RGB10Packed, Form::Rgb, Words10},
    {PixelType_BGR10Packed, Form::Bgr, Words10},
    {PixelType_RGB12Packed, Form::Rgb, Words12},
    {PixelType_BGR12Packed, Form::Bgr, Words12},
    {PixelType_RGB12V1Packed, Form::Rgb, Triples12},
    {PixelType_RGB16Packed, Form::Rgb, Words16},
    {PixelType_RGB8Planar, Form::RgbPlanes, Bytes},
    {PixelType_RGB16Planar, Form::RgbPlanes, Words16},
    {PixelType_YUV422Packed, Form::Uyvy, Bytes},
    {PixelType_YUV422_YUYV_Packed, Form::Yuyv, Bytes},
    {PixelType_YCbCr422_8_YY_CbCr_Semiplanar, Form::Semiplanar422, Bytes},
    {PixelType_YCbCr420_8_YY_CbCr_Semiplanar, Form::Semiplanar420, Bytes},
    // destinations only
    {PixelType_YUV444Planar, Form::Yuv444Planes, Bytes},
    {PixelType_YUV422Planar, Form::Yuv422Planes, Bytes},
    {PixelType_YUV420Planar, Form::Yuv420Planes, Bytes},
};

// The samples of a line of each plane, and the lines.
struct PlaneSize {
    std::size_t samples;
    std::size_t lines;
};

std::vector<PlaneSize> PlaneSizesOf(Form form, std::size_t width, std::size_t height) {
    const std::size_t pairs = (width + 1) / 2;
    const std::size_t halfLines = (height + 1) / 2;
    switch (form) {
        case Form::Grey:
        case Form::BayerRG:
        case Form::BayerGR:
        case Form::BayerGB:
        case Form::BayerBG:
            return {{width, height}};
        case Form::Rgb:
        case Form::Bgr:
            return {{3 * width, height}};
        case Form::Rgba:
        case Form::Bgra:
            return {{4 * width, height}};
        case Form::RgbPlanes:
        case Form::Yuv444Planes:
            return {{width, height}, {width, height}, {width, height}};
        case Form::Uyvy:
        case Form::Yuyv:
            return {{4 * pairs, height}};
        case Form::Semiplanar422:
            return {{width, height}, {2 * pairs, height}};
        case Form::Semiplanar420:
            return {{width, height}, {2 * pairs, halfLines}};
        case Form::Yuv422Planes:
            return {{width, height}, {pairs, height}, {pairs, height}};
        case Form::Yuv420Planes:
            return {{width, height}, {pairs, halfLines}, {pairs, halfLines}};
    }
    return {};
}

}  // namespace

const ReferenceFormat& ReferenceFormatOf(EPixelType pixelType) {
    const auto* const found =
        std::find_if(std::begin(Formats), std::end(Formats),
                     [=](const ReferenceFormat& each) { return each.pixelType == pixelType; });
    if (found == std::end(Formats)) {
        throw std::logic_error("referenceformats.cpp has no line for the pixel type " +
                               std::to_string(pixelType));
    }
    return *found;
}

bool IsBayerForm(Form form) {
    return form == Form::BayerRG || form == Form::BayerGR || form == Form::BayerGB ||
           form == Form::BayerBG;
}

bool IsYuvForm(Form form) {
    return form >= Form::Uyvy;
}

ReferencePlanes ReferencePlanesOf(EPixelType pixelType, std::uint32_t width, std::uint32_t height,
                                  std::size_t paddingX) {
    const ReferenceFormat& format = ReferenceFormatOf(pixelType);
    ReferencePlanes planes;
    for (const PlaneSize& plane : PlaneSizesOf(format.form, width, height)) {
        const std::size_t stride = (plane.samples * format.packing.bits + 7) / 8 + paddingX;
        planes.planes.push_back({planes.size, stride});
        planes.size += plane.lines * stride;
    }
    return planes;
}

}  // namespace Orlix::Test
