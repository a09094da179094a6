#include "orlixcamera/conversion/referencecolours.h"

#include <string_view>

#include "orlixcamera/pixeltypemapper.h"

namespace Orlix::Test {
namespace {

std::uint32_t ReadWord(const std::uint8_t* from) {
    return from[0] + 256U * from[1];
}

// Bit `number` of a line, counted from the lowest bit of its first byte.
std::uint32_t Bit(const std::uint8_t* line, std::size_t number) {
    return std::uint32_t{line[number / 8]} >> (number % 8) & 1U;
}

std::uint32_t ReadBits(const std::uint8_t* line, std::size_t sample, std::uint32_t depth) {
    std::uint32_t value = 0;
    for (std::uint32_t bit = 0; bit < depth; ++bit) {
        value |= Bit(line, sample * depth + bit) << bit;
    }
    return value;
}

// The older packing of 10 and 12 bits: two samples in three bytes.
std::uint32_t ReadOfTriple(const std::uint8_t* line, std::size_t sample, std::uint32_t depth) {
    const std::uint8_t* p = line + sample / 2 * 3;
    const std::uint32_t factor = depth == 10 ? 4 : 16;
    return sample % 2 == 0 ? p[0] * factor + p[1] % 16 % factor
                           : p[2] * factor + p[1] / 16 % factor;
}

// How the samples of a format lie in a line.
class SampleReader {
public:
    explicit SampleReader(EPixelType type) : depth_(BitDepth(type)) {
        const std::string_view name = CPixelTypeMapper::GetNameByPixelType(type);
        if (depth_ < 8 || name.back() == 'p') {
            packing_ = Packing::Bits;
        } else if (IsPacked(type)) {
            packing_ = Packing::Triples;
        } else {
            packing_ = depth_ == 8 ? Packing::Bytes : Packing::Words;
        }
    }

    [[nodiscard]] std::uint32_t Read(const std::uint8_t* line, std::size_t sample) const {
        switch (packing_) {
            case Packing::Bits:
                return ReadBits(line, sample, depth_);
            case Packing::Triples:
                return ReadOfTriple(line, sample, depth_);
            case Packing::Bytes:
                return line[sample];
            case Packing::Words:
                break;
        }
        return ReadWord(line + 2 * sample) % (1U << depth_);
    }

private:
    enum class Packing { Bits, Triples, Bytes, Words };
    std::uint32_t depth_;
    Packing packing_;
};

// How many samples a pixel has and where its colours are.
struct Order {
    std::size_t samples, r, g, b;
};

Order OrderOf(EPixelType type) {
    const std::string_view name = CPixelTypeMapper::GetNameByPixelType(type);
    const std::size_t samples = name.substr(3, 1) == "A" ? 4 : 3;
    return name[0] == 'R' ? Order{samples, 0, 1, 2} : Order{samples, 2, 1, 0};
}

class Colours {
public:
    Colours(const Picture& source, std::uint32_t outputDepth, BayerBorderEnums border)
        : source_(source),
          planes_(ComputePlanes(source.pixelType, source.width, source.height, source.paddingX)),
          border_(border),
          reader_(source.pixelType) {
        const std::uint32_t depth = BitDepth(source.pixelType);
        shift_ = depth > outputDepth ? depth - outputDepth : 0;
        if (IsBayer(source.pixelType)) {
            ReadRaw();
        }
    }

    [[nodiscard]] std::vector<Rgba> Read() const {
        std::vector<Rgba> pixels;
        pixels.reserve(std::size_t{source_.width} * source_.height);
        const EPixelType type = source_.pixelType;
        const bool packedColour =
            !IsBayer(type) && !IsYuv(type) && !IsPlanar(type) && !IsMono(type);
        const Order order = packedColour ? OrderOf(type) : Order{};
        for (std::uint32_t y = 0; y < source_.height; ++y) {
            for (std::uint32_t x = 0; x < source_.width; ++x) {
                pixels.push_back(packedColour ? ReadColour(order, x, y) : ReadPixel(x, y));
            }
        }
        return pixels;
    }

private:
    [[nodiscard]] const std::uint8_t* Line(std::size_t plane, std::uint32_t line) const {
        const ImagePlane& place = planes_.planes[plane];
        return source_.bytes.data() + place.offset + line * place.stride;
    }
    [[nodiscard]] std::uint32_t Sample(std::size_t plane, std::uint32_t line,
                                       std::size_t sample) const {
        return reader_.Read(Line(plane, line), sample) >> shift_;
    }

    [[nodiscard]] Rgba ReadPixel(std::uint32_t x, std::uint32_t line) const {
        const EPixelType type = source_.pixelType;
        if (IsBayer(type)) {
            return Demosaiced(Inner(x, source_.width), Inner(line, source_.height));
        }
        if (IsYuv(type)) {
            return YuvAt(x, line);
        }
        if (IsPlanar(type)) {
            return {Sample(0, line, x), Sample(1, line, x), Sample(2, line, x), 255};
        }
        const std::uint32_t v = Sample(0, line, x);
        return {v, v, v, 255};
    }

    [[nodiscard]] Rgba ReadColour(const Order& order, std::uint32_t x, std::uint32_t line) const {
        const std::size_t first = x * order.samples;
        return {Sample(0, line, first + order.r), Sample(0, line, first + order.g),
                Sample(0, line, first + order.b),
                order.samples == 4 ? Line(0, line)[first + 3] : 255U};
    }

    [[nodiscard]] std::uint32_t Inner(std::uint32_t at, std::uint32_t size) const {
        if (border_ == BayerBorder_Repeat || size < 3) {
            return at;
        }
        return at == 0 ? 1 : at == size - 1 ? size - 2 : at;
    }

    void ReadRaw() {
        for (std::uint32_t y = 0; y < source_.height; ++y) {
            for (std::uint32_t x = 0; x < source_.width; ++x) {
                raw_.push_back(Sample(0, y, x));
            }
        }
        const std::string_view name = CPixelTypeMapper::GetNameByPixelType(source_.pixelType);
        const std::string_view pattern = name.substr(5, 2);
        redFirst_ = pattern == "RG" || pattern == "GR";
        greenFirst_ = pattern[0] == 'G';
    }

    // A raw sample, or the one two pixels further in; alone in its direction, the edge itself.
    [[nodiscard]] std::uint32_t Raw(std::int64_t x, std::int64_t y) const {
        const auto inside = [](std::int64_t at, std::int64_t size) {
            if (size == 1) {
                return std::int64_t{0};
            }
            return at < 0 ? at + 2 : at >= size ? at - 2 : at;
        };
        return raw_[static_cast<std::size_t>(inside(y, source_.height) * source_.width +
                                             inside(x, source_.width))];
    }

    [[nodiscard]] Rgba Demosaiced(std::int64_t x, std::int64_t y) const {
        const bool redLine = (y % 2 == 0) == redFirst_;
        const bool green = ((x + y) % 2 == 0) == greenFirst_;
        const std::uint32_t sides = Raw(x - 1, y) + Raw(x + 1, y);
        const std::uint32_t ends = Raw(x, y - 1) + Raw(x, y + 1);
        const std::uint32_t corners =
            Raw(x - 1, y - 1) + Raw(x + 1, y - 1) + Raw(x - 1, y + 1) + Raw(x + 1, y + 1);
        const std::uint32_t own = green ? (sides + 1) >> 1 : Raw(x, y);
        const std::uint32_t g = green ? Raw(x, y) : (sides + ends + 2) >> 2;
        const std::uint32_t other = green ? (ends + 1) >> 1 : (corners + 2) >> 2;
        return redLine ? Rgba{own, g, other, 255} : Rgba{other, g, own, 255};
    }

    [[nodiscard]] Rgba YuvAt(std::uint32_t x, std::uint32_t line) const {
        const std::size_t pair = x / 2;
        const std::uint8_t* p = Line(0, line);
        switch (source_.pixelType) {
            case PixelType_YUV422Packed:
                return {p[2 * x + 1], p[4 * pair], p[4 * pair + 2], 255};
            case PixelType_YUV422_YUYV_Packed:
                return {p[2 * x], p[4 * pair + 1], p[4 * pair + 3], 255};
            case PixelType_YCbCr420_8_YY_CbCr_Semiplanar:
                return {p[x], Line(1, line / 2)[2 * pair], Line(1, line / 2)[2 * pair + 1], 255};
            default:
                return {p[x], Line(1, line)[2 * pair], Line(1, line)[2 * pair + 1], 255};
        }
    }

    const Picture& source_;
    ImagePlanes planes_;
    BayerBorderEnums border_;
    SampleReader reader_;
    std::uint32_t shift_ = 0;
    std::vector<std::uint32_t> raw_;
    bool redFirst_ = false;
    bool greenFirst_ = false;
};

}  // namespace

std::vector<Rgba> ReadColours(const Picture& source, std::uint32_t outputDepth,
                              BayerBorderEnums border) {
    return Colours(source, outputDepth, border).Read();
}

}  // namespace Orlix::Test
