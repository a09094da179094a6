#include "orlixcamera/conversion/referencecolours.h"

#include "orlixcamera/conversion/referenceformats.h"

namespace Orlix::Test {
namespace {

class Colours {
public:
    Colours(const Picture& source, std::uint32_t outputDepth, BayerBorderEnums border)
        : source_(source),
          format_(ReferenceFormatOf(source.pixelType)),
          planes_(
              ReferencePlanesOf(source.pixelType, source.width, source.height, source.paddingX)),
          border_(border) {
        const std::uint32_t depth = format_.packing.depth;
        shift_ = depth > outputDepth ? depth - outputDepth : 0;
        if (IsBayerForm(format_.form)) {
            ReadRaw();
        }
    }

    [[nodiscard]] std::vector<Rgba> Read() const {
        std::vector<Rgba> pixels;
        pixels.reserve(std::size_t{source_.width} * source_.height);
        for (std::uint32_t y = 0; y < source_.height; ++y) {
            for (std::uint32_t x = 0; x < source_.width; ++x) {
                pixels.push_back(ReadPixel(x, y));
            }
        }
        return pixels;
    }

private:
    [[nodiscard]] std::uint32_t Sample(std::size_t plane, std::uint32_t line,
                                       std::size_t sample) const {
        const ReferencePlane& place = planes_.planes[plane];
        const std::uint8_t* const from = source_.bytes.data() + place.offset + line * place.stride;
        return format_.packing.read(from, sample) >> shift_;
    }

    [[nodiscard]] Rgba ReadPixel(std::uint32_t x, std::uint32_t y) const {
        const auto at = [=, this](std::size_t sample) { return Sample(0, y, sample); };
        const auto chroma = [=, this](std::uint32_t line, std::size_t sample) {
            return Sample(1, line, x / 2 * 2 + sample);
        };
        const std::size_t pair = x / 2 * 4;
        switch (format_.form) {
            case Form::Grey: {
                const std::uint32_t v = at(x);
                return {v, v, v, 255};
            }
            case Form::BayerRG:
                return Demosaiced(x, y, 0, 0);
            case Form::BayerGR:
                return Demosaiced(x, y, 1, 0);
            case Form::BayerGB:
                return Demosaiced(x, y, 0, 1);
            case Form::BayerBG:
                return Demosaiced(x, y, 1, 1);
            case Form::Rgb:
                return {at(3 * x), at(3 * x + 1), at(3 * x + 2), 255};
            case Form::Bgr:
                return {at(3 * x + 2), at(3 * x + 1), at(3 * x), 255};
            case Form::Rgba:
                return {at(4 * x), at(4 * x + 1), at(4 * x + 2), at(4 * x + 3)};
            case Form::Bgra:
                return {at(4 * x + 2), at(4 * x + 1), at(4 * x), at(4 * x + 3)};
            case Form::RgbPlanes:
            case Form::Yuv444Planes:
                return {Sample(0, y, x), Sample(1, y, x), Sample(2, y, x), 255};
            case Form::Uyvy:
                return {at(2 * x + 1), at(pair), at(pair + 2), 255};
            case Form::Yuyv:
                return {at(2 * x), at(pair + 1), at(pair + 3), 255};
            case Form::Semiplanar422:
                return {at(x), chroma(y, 0), chroma(y, 1), 255};
            case Form::Semiplanar420:
                return {at(x), chroma(y / 2, 0), chroma(y / 2, 1), 255};
            case Form::Yuv422Planes:
                return {at(x), Sample(1, y, x / 2), Sample(2, y, x / 2), 255};
            case Form::Yuv420Planes:
                return {at(x), Sample(1, y / 2, x / 2), Sample(2, y / 2, x / 2), 255};
        }
        return {};
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

    // With the column and the line of the first red pixel.
    [[nodiscard]] Rgba Demosaiced(std::uint32_t column, std::uint32_t line, std::uint32_t redColumn,
                                  std::uint32_t redLine) const {
        const std::uint32_t innerColumn = Inner(column, source_.width);
        const std::uint32_t innerLine = Inner(line, source_.height);
        const bool inRedLine = innerLine % 2 == redLine;
        const bool green = (innerColumn % 2 == redColumn) != inRedLine;
        const std::int64_t x = innerColumn;
        const std::int64_t y = innerLine;
        const std::uint32_t sides = Raw(x - 1, y) + Raw(x + 1, y);
        const std::uint32_t ends = Raw(x, y - 1) + Raw(x, y + 1);
        const std::uint32_t corners =
            Raw(x - 1, y - 1) + Raw(x + 1, y - 1) + Raw(x - 1, y + 1) + Raw(x + 1, y + 1);
        const std::uint32_t own = green ? (sides + 1) >> 1 : Raw(x, y);
        const std::uint32_t g = green ? Raw(x, y) : (sides + ends + 2) >> 2;
        const std::uint32_t other = green ? (ends + 1) >> 1 : (corners + 2) >> 2;
        return inRedLine ? Rgba{own, g, other, 255} : Rgba{other, g, own, 255};
    }

    const Picture& source_;
    const ReferenceFormat& format_;
    ReferencePlanes planes_;
    BayerBorderEnums border_;
    std::uint32_t shift_ = 0;
    std::vector<std::uint32_t> raw_;
};

}  // namespace

std::vector<Rgba> ReadColours(const Picture& source, std::uint32_t outputDepth,
                              BayerBorderEnums border) {
    return Colours(source, outputDepth, border).Read();
}

}  // namespace Orlix::Test
