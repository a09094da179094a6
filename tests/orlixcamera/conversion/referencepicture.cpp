#include "orlixcamera/conversion/referencepicture.h"

#include <algorithm>
#include <array>
#include <random>

#include "orlixcamera/conversion/referencecolours.h"

namespace Orlix::Test {
namespace {

bool IsLumaOrChroma(EPixelType type) {
    return IsMono(type) || IsYuv(type);
}

// Half up, for sums that are not negative.
std::uint32_t DivideToNearest(std::int64_t dividend, std::int64_t divisor) {
    return static_cast<std::uint32_t>((2 * dividend + divisor) / (2 * divisor));
}

std::uint32_t Luma(const Rgba& p) {
    return DivideToNearest(
        std::int64_t{299} * p.r + std::int64_t{587} * p.g + std::int64_t{114} * p.b, 1000);
}

// Of the sums over `count` pixels.
std::uint32_t BlueChroma(const Rgba& sum, std::int64_t count) {
    const std::int64_t value =
        std::int64_t{886} * sum.b - std::int64_t{299} * sum.r - std::int64_t{587} * sum.g;
    return std::min(255U, DivideToNearest(value + 128 * 1772 * count, 1772 * count));
}

std::uint32_t RedChroma(const Rgba& sum, std::int64_t count) {
    const std::int64_t value =
        std::int64_t{701} * sum.r - std::int64_t{587} * sum.g - std::int64_t{114} * sum.b;
    return std::min(255U, DivideToNearest(value + 128 * 1402 * count, 1402 * count));
}

class Writer {
public:
    Writer(const Picture& source, const std::vector<Rgba>& colours, const Target& target)
        : source_(source),
          colours_(colours),
          target_(target),
          planes_(ComputePlanes(target.pixelType, source.width, source.height, target.paddingX)),
          bytes_(planes_.size, 0) {}

    std::vector<std::uint8_t> Write() {
        for (std::uint32_t y = 0; y < source_.height; ++y) {
            for (std::uint32_t x = 0; x < source_.width; ++x) {
                WritePixel(x, y);
            }
        }
        if (IsYuv(target_.pixelType)) {
            WriteChroma();
        }
        return bytes_;
    }

private:
    // The source at a place of the destination's buffer.
    [[nodiscard]] const Rgba& Reduced(std::uint32_t x, std::uint32_t y) const {
        const bool flip = source_.orientation != target_.orientation;
        const std::uint32_t line = flip ? source_.height - 1 - y : y;
        return colours_[std::size_t{line} * source_.width + x];
    }

    // A colour, rounded to nearest with ties up.
    [[nodiscard]] static std::uint32_t Rounded(std::int64_t numerator, std::int64_t denominator) {
        const std::int64_t twice = 2 * numerator + denominator;
        std::int64_t quotient = twice / (2 * denominator);
        if (quotient * 2 * denominator > twice) {
            --quotient;
        }
        return static_cast<std::uint32_t>(std::clamp<std::int64_t>(quotient, 0, 255));
    }
    [[nodiscard]] static Rgba ColourOf(const Rgba& yuv) {
        const std::int64_t y = yuv.r;
        const std::int64_t u = std::int64_t{yuv.g} - 128;
        const std::int64_t v = std::int64_t{yuv.b} - 128;
        return {Rounded(1000 * y + 1402 * v, 1000),
                Rounded(587000 * y - 114 * 1772 * u - 299 * 1402 * v, 587000),
                Rounded(1000 * y + 1772 * u, 1000), 255};
    }

    [[nodiscard]] std::uint32_t Raise(std::uint32_t value) const {
        const bool up = difference_ < 0 && target_.alignment == OutputBitAlignment_MsbAligned;
        return up ? value << -difference_ : value;
    }
    void Put(std::size_t plane, std::uint32_t y, std::size_t sample, std::uint32_t value) {
        const ImagePlane& place = planes_.planes[plane];
        std::uint8_t* line = bytes_.data() + place.offset + y * place.stride;
        if (depth_ == 8) {
            line[sample] = static_cast<std::uint8_t>(value);
        } else {
            line[2 * sample] = static_cast<std::uint8_t>(value);
            line[2 * sample + 1] = static_cast<std::uint8_t>(value >> 8);
        }
    }

    void WritePixel(std::uint32_t x, std::uint32_t y) {
        const bool yuv = IsYuv(source_.pixelType);
        const Rgba read = Reduced(x, y);
        const Rgba p = yuv && !IsLumaOrChroma(target_.pixelType) ? ColourOf(read) : read;
        if (IsLumaOrChroma(target_.pixelType)) {
            const bool grey = IsMono(source_.pixelType) || yuv;
            Put(0, y, x, Raise(grey ? p.r : Luma(p)));
        } else if (IsPlanar(target_.pixelType)) {
            Put(0, y, x, Raise(p.r));
            Put(1, y, x, Raise(p.g));
            Put(2, y, x, Raise(p.b));
        } else {
            WriteInterleaved(p, x, y);
        }
    }

    void WriteInterleaved(const Rgba& p, std::uint32_t x, std::uint32_t y) {
        const bool alpha = target_.pixelType == PixelType_BGRA8Packed;
        const bool redFirst =
            target_.pixelType == PixelType_RGB8Packed || target_.pixelType == PixelType_RGB16Packed;
        const std::size_t first = std::size_t{x} * (alpha ? 4 : 3);
        Put(0, y, first, Raise(redFirst ? p.r : p.b));
        Put(0, y, first + 1, Raise(p.g));
        Put(0, y, first + 2, Raise(redFirst ? p.b : p.r));
        if (alpha) {
            Put(0, y, first + 3, p.a);
        }
    }

    // The sum over a block; what lies beyond the edge is the edge.
    [[nodiscard]] Rgba SumOfBlock(std::uint32_t x, std::uint32_t y, std::uint32_t columns,
                                  std::uint32_t lines) const {
        Rgba sum{};
        for (std::uint32_t dy = 0; dy < lines; ++dy) {
            for (std::uint32_t dx = 0; dx < columns; ++dx) {
                const Rgba p = Reduced(std::min(x + dx, source_.width - 1),
                                       std::min(y + dy, source_.height - 1));
                sum = {sum.r + p.r, sum.g + p.g, sum.b + p.b, 0};
            }
        }
        return sum;
    }

    void WriteChroma() {
        const std::uint32_t columns = target_.pixelType == PixelType_YUV444Planar ? 1 : 2;
        const std::uint32_t lines = target_.pixelType == PixelType_YUV420Planar ? 2 : 1;
        for (std::uint32_t y = 0; y < source_.height; y += lines) {
            for (std::uint32_t x = 0; x < source_.width; x += columns) {
                const Rgba sum = SumOfBlock(x, y, columns, lines);
                const std::int64_t count = std::int64_t{columns} * lines;
                if (IsMono(source_.pixelType)) {
                    Put(1, y / lines, x / columns, 128);
                    Put(2, y / lines, x / columns, 128);
                    continue;
                }
                if (IsYuv(source_.pixelType)) {
                    Put(1, y / lines, x / columns, DivideToNearest(sum.g, count));
                    Put(2, y / lines, x / columns, DivideToNearest(sum.b, count));
                    continue;
                }
                Put(1, y / lines, x / columns, BlueChroma(sum, count));
                Put(2, y / lines, x / columns, RedChroma(sum, count));
            }
        }
    }

    const Picture& source_;
    const std::vector<Rgba>& colours_;
    const Target& target_;
    ImagePlanes planes_;
    std::vector<std::uint8_t> bytes_;
    std::uint32_t depth_ = BitDepth(target_.pixelType);
    int difference_ = static_cast<int>(BitDepth(source_.pixelType)) - static_cast<int>(depth_);
};

std::uint8_t MakeByte(Content content, std::mt19937& random) {
    constexpr std::array<std::uint8_t, 6> Extremes{0, 255, 1, 254, 127, 128};
    const auto number = random();
    return content == Content::Random ? static_cast<std::uint8_t>(number)
                                      : Extremes[number % Extremes.size()];
}

}  // namespace

Picture MakePicture(EPixelType pixelType, std::uint32_t width, std::uint32_t height,
                    std::size_t paddingX, EImageOrientation orientation, Content content,
                    std::uint32_t seed) {
    Picture picture{pixelType, width, height, paddingX, orientation, {}};
    picture.bytes.resize(ComputeBufferSize(pixelType, width, height, paddingX));
    std::mt19937 random(seed);
    for (std::uint8_t& byte : picture.bytes) {
        byte = MakeByte(content, random);
    }
    return picture;
}

Picture Reference::Convert(const Target& target) {
    const std::uint32_t depth = BitDepth(target.pixelType);
    const bool repeat = IsBayer(source_.pixelType) && target.border == BayerBorder_Repeat;
    std::vector<Rgba>& colours = colours_[depth == 8 ? 0 : 1][repeat ? 1 : 0];
    if (colours.empty()) {
        colours = ReadColours(source_, depth, target.border);
    }
    return {target.pixelType, source_.width,      source_.height,
            target.paddingX,  target.orientation, Writer(source_, colours, target).Write()};
}

Picture ConvertByReference(const Picture& source, const Target& target) {
    return Reference(source).Convert(target);
}

}  // namespace Orlix::Test
