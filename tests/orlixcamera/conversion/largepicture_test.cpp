// Pictures that are larger than the caches are written past them. Their bytes are those of the same
// picture converted in parts, each of which is small; those are held against the reference
// elsewhere.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "orlixcamera/conversion/instructionsets.h"
#include "orlixcamera/imageformatconverter.h"
#include "orlixcamera/orliximage.h"
#include "orlixcamera/pixel/planes.h"
#include "orlixcamera/pixeltypemapper.h"

namespace Orlix::Test {
namespace {

struct Pair {
    EPixelType source;
    EPixelType destination;
};

constexpr Pair Pairs[] = {
    {PixelType_BayerRG8, PixelType_BGR8Packed},
    {PixelType_BayerGB8, PixelType_RGB8Planar},
    {PixelType_BayerGR12p, PixelType_BGRA8Packed},
    {PixelType_BayerBG10p, PixelType_BGR8Packed},
    {PixelType_BayerGB12Packed, PixelType_RGB8Packed},
    {PixelType_BayerBG16, PixelType_RGB16Packed},
    {PixelType_BayerRG8, PixelType_RGB16Packed},
    {PixelType_RGB8Packed, PixelType_BGR8Packed},
    {PixelType_RGB8Packed, PixelType_BGRA8Packed},
    {PixelType_RGBA8Packed, PixelType_BGR8Packed},
    {PixelType_RGB8Packed, PixelType_RGB8Planar},
    {PixelType_Mono8, PixelType_RGB8Packed},
    {PixelType_RGB8Packed, PixelType_RGB16Packed},
    {PixelType_RGB16Packed, PixelType_BGR8Packed},
    {PixelType_RGB16Packed, PixelType_RGB8Packed},
    {PixelType_RGB8Packed, PixelType_Mono8},
    {PixelType_Mono16, PixelType_Mono8},
    {PixelType_RGB8Packed, PixelType_YUV444Planar},
    {PixelType_YUV422Packed, PixelType_BGR8Packed},
    {PixelType_YUV422_YUYV_Packed, PixelType_RGB8Planar},
};

// One line of bytes for any source, which each line begins at another place of.
const std::vector<std::uint8_t>& Noise() {
    static const std::vector<std::uint8_t> noise = [] {
        std::vector<std::uint8_t> made(1U << 17U);
        std::uint32_t state = 7;
        for (std::uint8_t& byte : made) {
            state = state * 1664525U + 1013904223U;
            byte = static_cast<std::uint8_t>(state >> 24U);
        }
        return made;
    }();
    return noise;
}

std::vector<std::uint8_t> MakeSource(std::size_t stride, std::uint32_t height) {
    std::vector<std::uint8_t> bytes(stride * height);
    for (std::uint32_t line = 0; line < height; ++line) {
        std::memcpy(bytes.data() + line * stride, Noise().data() + line * 37U % 65536U, stride);
    }
    return bytes;
}

struct Large {
    Pair pair;
    std::uint32_t width;
    std::uint32_t height;
    std::size_t stride;
    std::vector<std::uint8_t> source;
};

// No cache counts for more than 32 MiB.
Large MakeLarge(const Pair& pair, std::uint32_t width) {
    const std::size_t line = ComputePlanes(pair.destination, width, 1, 0).size;
    const auto height = static_cast<std::uint32_t>((std::size_t{32} << 20U) / line + 2);
    const std::size_t stride = ComputeStride(pair.source, width);
    return {pair, width, height, stride, MakeSource(stride, height)};
}

COrlixImage ConvertLines(const Large& large, std::uint32_t first, std::uint32_t end,
                         std::int64_t threads) {
    CImageFormatConverter converter;
    converter.OutputPixelFormat.SetValue(large.pair.destination);
    converter.MaxNumThreads.SetValue(threads, false);
    COrlixImage image;
    converter.Convert(image, large.source.data() + first * large.stride,
                      (end - first) * large.stride, large.pair.source, large.width, end - first, 0,
                      ImageOrientation_TopDown);
    return image;
}

// The lines from `first` up to `end`, which `part` has from its line `offset` on.
bool HasSameLines(const Large& large, const COrlixImage& whole, std::uint32_t first,
                  std::uint32_t end, const COrlixImage& part, std::uint32_t offset) {
    const EPixelType type = large.pair.destination;
    const ImagePlanes all = ComputePlanes(type, large.width, large.height, 0);
    const ImagePlanes some = ComputePlanes(type, large.width, part.GetHeight(), 0);
    const auto* wholeBytes = static_cast<const std::uint8_t*>(whole.GetBuffer());
    const auto* partBytes = static_cast<const std::uint8_t*>(part.GetBuffer());
    for (std::size_t plane = 0; plane < all.count; ++plane) {
        const std::size_t stride = all.planes[plane].stride;
        if (std::memcmp(wholeBytes + all.planes[plane].offset + first * stride,
                        partBytes + some.planes[plane].offset + offset * stride,
                        (end - first) * stride) != 0) {
            return false;
        }
    }
    return true;
}

// Parts begin two lines before what is compared and end two lines behind it, so that demosaicing
// sees the same neighbours.
void ExpectSameAsParts(const Large& large, const COrlixImage& whole) {
    constexpr std::uint32_t PartLines = 512;
    for (std::uint32_t first = 0; first < large.height; first += PartLines) {
        const std::uint32_t end = std::min(first + PartLines, large.height);
        const std::uint32_t from = first > 0 ? first - 2 : 0;
        const COrlixImage part = ConvertLines(large, from, std::min(end + 2, large.height), 1);
        EXPECT_TRUE(HasSameLines(large, whole, first, end, part, first - from))
            << "lines " << first << " to " << end;
    }
}

class LargePictures : public testing::TestWithParam<Pair> {};

// Lines that begin at a cache line, that don't, and of an odd number of pixels.
TEST_P(LargePictures, HaveTheBytesOfTheirParts) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    const std::vector<std::int64_t> sets{InstructionSets().back()};
#else
    std::vector<std::int64_t> sets = InstructionSets();
    sets.erase(sets.begin());  // without vectors it takes a minute, and writes as ever
#endif
    for (const std::uint32_t width : {4096U, 4100U, 4099U}) {
        const Large large = MakeLarge(GetParam(), width);
        for (const std::int64_t set : sets) {
            const InstructionSetScope scope(set);
            SCOPED_TRACE(testing::Message() << width << " wide, instruction set " << set);
            const std::int64_t threads = width == 4096 ? 1 : 3;
            ExpectSameAsParts(large, ConvertLines(large, 0, large.height, threads));
        }
    }
}

std::string NameOf(const testing::TestParamInfo<Pair>& pair) {
    return std::string(CPixelTypeMapper::GetNameByPixelType(pair.param.source)) + "To" +
           CPixelTypeMapper::GetNameByPixelType(pair.param.destination);
}

INSTANTIATE_TEST_SUITE_P(All, LargePictures, testing::ValuesIn(Pairs), NameOf);

}  // namespace
}  // namespace Orlix::Test
