#include "orlixcamera/conversion/referencepicture.h"

#include <algorithm>
#include <array>
#include <random>

namespace Orlix::Test {
namespace {

struct Rgba {
    std::uint32_t r, g, b, a;
};

std::uint32_t ReadWord(const std::uint8_t* from) {
    return from[0] + 256U * from[1];
}

Rgba ReadPixel(EPixelType pixelType, const std::uint8_t* line, std::size_t x) {
    const std::uint8_t* p = line + x * BitsPerPixel(pixelType) / 8;
    switch (pixelType) {
        case PixelType_Mono8:
            return {p[0], p[0], p[0], 255};
        case PixelType_Mono16:
            return {ReadWord(p), ReadWord(p), ReadWord(p), 255};
        case PixelType_RGB8Packed:
            return {p[0], p[1], p[2], 255};
        case PixelType_BGR8Packed:
            return {p[2], p[1], p[0], 255};
        case PixelType_RGBA8Packed:
            return {p[0], p[1], p[2], p[3]};
        case PixelType_BGRA8Packed:
            return {p[2], p[1], p[0], p[3]};
        case PixelType_RGB16Packed:
            return {ReadWord(p), ReadWord(p + 2), ReadWord(p + 4), 255};
        default:
            return {};
    }
}

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
    Writer(const Picture& source, const Target& target)
        : source_(source),
          target_(target),
          sourcePlanes_(
              ComputePlanes(source.pixelType, source.width, source.height, source.paddingX)),
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
    // The pixel at a place of the destination's buffer.
    [[nodiscard]] Rgba Pixel(std::uint32_t x, std::uint32_t y) const {
        const bool flip = source_.orientation != target_.orientation;
        const std::uint32_t line = flip ? source_.height - 1 - y : y;
        return ReadPixel(source_.pixelType,
                         source_.bytes.data() + line * sourcePlanes_.planes[0].stride, x);
    }

    [[nodiscard]] std::uint32_t Reduce(std::uint32_t value) const {
        return difference_ > 0 ? value >> difference_ : value;
    }
    [[nodiscard]] std::uint32_t Raise(std::uint32_t value) const {
        const bool up = difference_ < 0 && target_.alignment == OutputBitAlignment_MsbAligned;
        return up ? value << -difference_ : value;
    }
    [[nodiscard]] Rgba Reduced(std::uint32_t x, std::uint32_t y) const {
        const Rgba p = Pixel(x, y);
        return {Reduce(p.r), Reduce(p.g), Reduce(p.b), p.a};
    }

    void Put(std::size_t plane, std::uint32_t y, std::size_t sample, std::uint32_t value) {
        const ImagePlane& place = planes_.planes[plane];
        std::uint8_t* line = bytes_.data() + place.offset + y * place.stride;
        if (BitDepth(target_.pixelType) == 8) {
            line[sample] = static_cast<std::uint8_t>(value);
        } else {
            line[2 * sample] = static_cast<std::uint8_t>(value);
            line[2 * sample + 1] = static_cast<std::uint8_t>(value >> 8);
        }
    }

    void WritePixel(std::uint32_t x, std::uint32_t y) {
        const Rgba p = Reduced(x, y);
        if (IsLumaOrChroma(target_.pixelType)) {
            const bool grey = IsMono(source_.pixelType);
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
                Put(1, y / lines, x / columns, BlueChroma(sum, count));
                Put(2, y / lines, x / columns, RedChroma(sum, count));
            }
        }
    }

    const Picture& source_;
    const Target& target_;
    ImagePlanes sourcePlanes_;
    ImagePlanes planes_;
    std::vector<std::uint8_t> bytes_;
    int difference_ = static_cast<int>(BitDepth(source_.pixelType)) -
                      static_cast<int>(BitDepth(target_.pixelType));
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

Picture ConvertByReference(const Picture& source, const Target& target) {
    return {target.pixelType, source.width,       source.height,
            target.paddingX,  target.orientation, Writer(source, target).Write()};
}

}  // namespace Orlix::Test
