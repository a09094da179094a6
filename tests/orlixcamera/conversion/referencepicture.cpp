#include "orlixcamera/conversion/referencepicture.h"

#include <algorithm>
#include <array>
#include <random>
#include <stdexcept>

#include "orlixcamera/conversion/referencecolours.h"
#include "orlixcamera/conversion/referenceformats.h"

namespace Orlix::Test {
namespace {

bool IsLumaOrChroma(Form form) {
    return form == Form::Grey || IsYuvForm(form);
}

// What a form that is written interleaved has in each place of a pixel.
std::vector<std::uint32_t Rgba::*> ChannelsOf(Form form) {
    switch (form) {
        case Form::Rgb:
            return {&Rgba::r, &Rgba::g, &Rgba::b};
        case Form::Bgr:
            return {&Rgba::b, &Rgba::g, &Rgba::r};
        case Form::Rgba:
            return {&Rgba::r, &Rgba::g, &Rgba::b, &Rgba::a};
        case Form::Bgra:
            return {&Rgba::b, &Rgba::g, &Rgba::r, &Rgba::a};
        default:
            throw std::logic_error("the reference doesn't write this form");
    }
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
          from_(ReferenceFormatOf(source.pixelType)),
          to_(ReferenceFormatOf(target.pixelType)),
          planes_(
              ReferencePlanesOf(target.pixelType, source.width, source.height, target.paddingX)),
          bytes_(planes_.size, 0) {}

    std::vector<std::uint8_t> Write() {
        for (std::uint32_t y = 0; y < source_.height; ++y) {
            for (std::uint32_t x = 0; x < source_.width; ++x) {
                WritePixel(x, y);
            }
        }
        if (IsYuvForm(to_.form)) {
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
        const ReferencePlane& place = planes_.planes[plane];
        std::uint8_t* line = bytes_.data() + place.offset + y * place.stride;
        if (depth_ == 8) {
            line[sample] = static_cast<std::uint8_t>(value);
        } else {
            line[2 * sample] = static_cast<std::uint8_t>(value);
            line[2 * sample + 1] = static_cast<std::uint8_t>(value >> 8);
        }
    }

    void WritePixel(std::uint32_t x, std::uint32_t y) {
        const bool yuv = IsYuvForm(from_.form);
        const Rgba read = Reduced(x, y);
        const Rgba p = yuv && !IsLumaOrChroma(to_.form) ? ColourOf(read) : read;
        if (IsLumaOrChroma(to_.form)) {
            Put(0, y, x, Raise(IsLumaOrChroma(from_.form) ? p.r : Luma(p)));
        } else if (to_.form == Form::RgbPlanes) {
            Put(0, y, x, Raise(p.r));
            Put(1, y, x, Raise(p.g));
            Put(2, y, x, Raise(p.b));
        } else {
            WriteInterleaved(p, x, y);
        }
    }

    void WriteInterleaved(const Rgba& p, std::uint32_t x, std::uint32_t y) {
        std::size_t sample = x * channels_.size();
        for (const auto channel : channels_) {
            Put(0, y, sample++, channel == &Rgba::a ? p.a : Raise(p.*channel));
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
        const std::uint32_t columns = to_.form == Form::Yuv444Planes ? 1 : 2;
        const std::uint32_t lines = to_.form == Form::Yuv420Planes ? 2 : 1;
        for (std::uint32_t y = 0; y < source_.height; y += lines) {
            for (std::uint32_t x = 0; x < source_.width; x += columns) {
                const Rgba sum = SumOfBlock(x, y, columns, lines);
                const std::int64_t count = std::int64_t{columns} * lines;
                if (from_.form == Form::Grey) {
                    Put(1, y / lines, x / columns, 128);
                    Put(2, y / lines, x / columns, 128);
                    continue;
                }
                if (IsYuvForm(from_.form)) {
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
    const ReferenceFormat& from_;
    const ReferenceFormat& to_;
    ReferencePlanes planes_;
    std::vector<std::uint8_t> bytes_;
    const bool interleaved_ = !IsLumaOrChroma(to_.form) && to_.form != Form::RgbPlanes;
    const std::vector<std::uint32_t Rgba::*> channels_ =
        interleaved_ ? ChannelsOf(to_.form) : std::vector<std::uint32_t Rgba::*>();
    std::uint32_t depth_ = to_.packing.depth;
    int difference_ = static_cast<int>(from_.packing.depth) - static_cast<int>(depth_);
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
    picture.bytes.resize(ReferencePlanesOf(pixelType, width, height, paddingX).size);
    std::mt19937 random(seed);
    for (std::uint8_t& byte : picture.bytes) {
        byte = MakeByte(content, random);
    }
    return picture;
}

Picture Reference::Convert(const Target& target) {
    const std::uint32_t depth = ReferenceFormatOf(target.pixelType).packing.depth;
    const bool repeat = IsBayerForm(ReferenceFormatOf(source_.pixelType).form) &&
                        target.border == BayerBorder_Repeat;
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
