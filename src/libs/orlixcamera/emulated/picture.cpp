#include "orlixcamera/emulated/picture.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string_view>

#include "orlixcamera/pixel/pixeltable.h"

namespace Orlix::Emulated {
namespace {

constexpr std::uint32_t period = 256;        // lines after which every pattern repeats
constexpr std::uint64_t linesPerFrame = 2;   // whole Bayer cells and chroma lines
constexpr double defaultExposure = 5000;     // microseconds that show the scene as it is
constexpr std::uint32_t levelStep = 0x0101;  // from 8 to 16 bits
constexpr std::uint32_t fullLevel = 0xFFFF;

// As the description calls them.
constexpr std::array patternNames = {
    "Scene",
    "Black",
    "White",
    "GreyHorizontalRamp",
    "GreyVerticalRamp",
    "GreyVerticalRampMoving",
    "GreyDiagonalRamp",
    "GreyDiagonalRampMoving",
    "ColorBar",
};

// 16 bits a colour, cut to what a format holds when it is written.
struct Colour {
    std::uint32_t red;
    std::uint32_t green;
    std::uint32_t blue;
};

Colour grey(std::uint32_t level) {
    return {level, level, level};
}

Colour ramp(std::uint32_t place) {
    return grey((place & 0xFFU) * levelStep);
}

// Eight bars over the width of the sensor.
Colour bar(std::uint32_t x) {
    constexpr std::array<Colour, 8> bars = {{{fullLevel, fullLevel, fullLevel},
                                             {fullLevel, fullLevel, 0},
                                             {0, fullLevel, fullLevel},
                                             {0, fullLevel, 0},
                                             {fullLevel, 0, fullLevel},
                                             {fullLevel, 0, 0},
                                             {0, 0, fullLevel},
                                             {0, 0, 0}}};
    return bars[x / (Registers::sensorWidth / bars.size()) % bars.size()];
}

// How bright the scene is in each colour.
struct Brightness {
    double red;
    double green;
    double blue;
};

Brightness brightnessOf(const PictureSettings& settings, PixelFamily family) {
    const auto factor = [&](double decibels) {
        constexpr double decibelsPerDecade = 20;
        return settings.exposureMicroseconds / defaultExposure *
               std::pow(10.0, decibels / decibelsPerDecade);
    };
    if (family == PixelFamily::Mono) {
        const double common = factor(settings.gainDecibels[0]);
        return {common, common, common};
    }
    const double common = settings.gainDecibels[0];
    return {factor(common + settings.gainDecibels[1]), factor(common + settings.gainDecibels[2]),
            factor(common + settings.gainDecibels[3])};
}

// The scene by the sum of column and line, of which it is made: to paint is then a look-up.
using Scene = std::array<Colour, period>;

// A soft wave of each colour, half as bright as can be.
Scene makeScene(const Brightness& brightness) {
    const auto wave = [](std::uint32_t place, double factor) {
        constexpr std::uint32_t half = 128;
        const std::uint32_t ascending = place & 0xFFU;
        const std::uint32_t level = ascending < half ? ascending : 2 * half - 1 - ascending;
        return static_cast<std::uint32_t>(
            std::min(level * levelStep * factor, static_cast<double>(fullLevel)));
    };
    Scene scene{};
    for (std::uint32_t place = 0; place < period; ++place) {
        scene[place] = {wave(place, brightness.red), wave(place + 85, brightness.green),
                        wave(place + 170, brightness.blue)};
    }
    return scene;
}

Colour colourAt(Pattern pattern, std::uint32_t x, std::uint32_t y, const Scene& scene) {
    switch (pattern) {
        case Pattern::Off:
            return scene[(x + y) % period];
        case Pattern::Black:
            return grey(0);
        case Pattern::White:
            return grey(fullLevel);
        case Pattern::GreyHorizontalRamp:
            return ramp(x);
        case Pattern::GreyVerticalRamp:
        case Pattern::GreyVerticalRampMoving:
            return ramp(y);
        case Pattern::GreyDiagonalRamp:
        case Pattern::GreyDiagonalRampMoving:
            return ramp(x + y);
        case Pattern::ColorBar:
            return bar(x);
    }
    return grey(0);
}

bool isMoving(Pattern pattern) {
    return pattern == Pattern::GreyVerticalRampMoving || pattern == Pattern::GreyDiagonalRampMoving;
}

std::uint32_t luma(const Colour& c) {
    return (77 * c.red + 150 * c.green + 29 * c.blue) >> 8U;
}

std::uint32_t chroma(std::int64_t red, std::int64_t green, std::int64_t blue, const Colour& c) {
    constexpr std::int64_t middle = 0x8000;
    const std::int64_t sum = red * c.red + green * c.green + blue * c.blue;
    return static_cast<std::uint32_t>(std::clamp<std::int64_t>(middle + sum / 256, 0, fullLevel));
}

std::uint32_t chromaBlue(const Colour& c) {
    return chroma(-43, -85, 128, c);
}

std::uint32_t chromaRed(const Colour& c) {
    return chroma(128, -107, -21, c);
}

// Puts the samples of a line behind each other, as the format packs them.
class LineWriter {
public:
    LineWriter(const PixelFormat& format, std::uint8_t* out)
        : out_(out), depth_(format.bitDepth), packing_(packingOf(format)) {}

    void Add(std::uint32_t level) {
        const std::uint32_t sample = level >> (16U - depth_);
        switch (packing_) {
            case Packing::Byte:
                *out_++ = static_cast<std::uint8_t>(sample);
                break;
            case Packing::Word:
                *out_++ = static_cast<std::uint8_t>(sample);
                *out_++ = static_cast<std::uint8_t>(sample >> 8U);
                break;
            case Packing::Continuous:
                addBits(sample);
                break;
            case Packing::ThreeBytes:
                addToThreeBytes(sample);
                break;
        }
    }

private:
    enum class Packing : std::uint8_t {
        Byte,
        Word,        // lowest byte first
        Continuous,  // lowest bits first
        ThreeBytes,  // two samples: high bits, the low bits of both, high bits
    };

    static Packing packingOf(const PixelFormat& format) {
        if (format.packing == SamplePacking::Bytes) {
            return format.bitDepth <= 8 ? Packing::Byte : Packing::Word;
        }
        const bool older = format.bitDepth > 8 && format.name.ends_with("Packed");
        return older ? Packing::ThreeBytes : Packing::Continuous;
    }

    void addBits(std::uint32_t sample) {
        bits_ |= sample << count_;
        count_ += depth_;
        for (; count_ >= 8; count_ -= 8, bits_ >>= 8U) {
            *out_++ = static_cast<std::uint8_t>(bits_);
        }
    }

    void addToThreeBytes(std::uint32_t sample) {
        const std::uint32_t lowBits = depth_ - 8;
        const auto high = static_cast<std::uint8_t>(sample >> lowBits);
        const std::uint32_t low = sample & ((1U << lowBits) - 1);
        if (second_) {
            out_[1] = static_cast<std::uint8_t>(out_[1] | (low << 4U));
            out_[2] = high;
            out_ += 3;
        } else {
            out_[0] = high;
            out_[1] = static_cast<std::uint8_t>(low);
        }
        second_ = !second_;
    }

    std::uint8_t* out_;
    std::uint32_t depth_;
    Packing packing_;
    std::uint32_t bits_ = 0;
    std::uint32_t count_ = 0;
    bool second_ = false;
};

// The colour of the filter before a pixel; the pattern's name tells those of its first line.
std::uint32_t bayerSample(std::string_view name, std::uint32_t column, std::uint32_t line,
                          const Colour& c) {
    constexpr std::size_t firstLetter = 5;  // behind "Bayer"
    const std::string_view letters = name.substr(firstLetter, 2);
    // Red and blue lie on one diagonal of the cell, green twice on the other.
    const bool greenFirst = letters[0] == 'G';
    if (((column + line) % 2 == 0) == greenFirst) {
        return c.green;
    }
    const char rare = greenFirst ? letters[1] : letters[0];
    return (rare == 'R') == (line % 2 == 0) ? c.red : c.blue;
}

// Everything that tells which samples a pixel of a plane has.
struct PlaneStyle {
    const PixelFormat& format;
    std::size_t plane;
};

void addColour(const PlaneStyle& style, const Colour& c, LineWriter& line) {
    const std::string_view name = style.format.name;
    if (style.format.layout == PixelLayout::ThreePlanes) {
        line.Add(std::array{c.red, c.green, c.blue}[style.plane]);
        return;
    }
    const bool blueFirst = name.starts_with("BGR");
    line.Add(blueFirst ? c.blue : c.red);
    line.Add(c.green);
    line.Add(blueFirst ? c.red : c.blue);
    if (name.starts_with("RGBA") || name.starts_with("BGRA")) {
        line.Add(fullLevel);
    }
}

// Pairs carry their chroma once, and a plane of chroma has it for the first of each two pixels.
void addYuv(const PlaneStyle& style, std::uint32_t column, const Colour& c, LineWriter& line) {
    const bool first = column % 2 == 0;
    if (style.format.layout != PixelLayout::Pairs) {
        if (style.plane == 0) {
            line.Add(luma(c));
        } else if (first) {
            line.Add(chromaBlue(c));
            line.Add(chromaRed(c));
        }
        return;
    }
    const std::uint32_t difference = first ? chromaBlue(c) : chromaRed(c);
    const bool lumaFirst = style.format.pixelType == PixelType_YUV422_YUYV_Packed;
    line.Add(lumaFirst ? luma(c) : difference);
    line.Add(lumaFirst ? difference : luma(c));
}

// Whether a line of the plane stands for two of the picture.
std::uint32_t lineShift(const PixelFormat& format, std::size_t plane) {
    return format.layout == PixelLayout::Semiplanar420 && plane > 0 ? 1 : 0;
}

}  // namespace

void Picture::Prepare(const PictureSettings& settings) {
    if (prepared_ && settings == settings_) {
        return;
    }
    settings_ = settings;
    sceneName_ = patternNames.at(static_cast<std::size_t>(settings.pattern));
    planes_ = ComputePlanes(settings.pixelType, settings.region.width, settings.region.height, 0);
    for (std::size_t plane = 0; plane < planes_.count; ++plane) {
        paintPlane(plane);
    }
    prepared_ = true;
}

void Picture::Write(void* buffer, std::uint64_t frameNumber) const {
    const std::uint64_t shift =
        isMoving(settings_.pattern) ? frameNumber % period * linesPerFrame : 0;
    for (std::size_t plane = 0; plane < planes_.count; ++plane) {
        writePlane(static_cast<std::uint8_t*>(buffer), plane, shift);
    }
}

void Picture::paintPlane(std::size_t plane) {
    const PixelFormat& format = *FindPixelFormat(settings_.pixelType);
    const Region& region = settings_.region;
    const std::uint32_t step = 1U << lineShift(format, plane);
    const auto lineBytes = static_cast<std::size_t>(planes_.planes[plane].lineBytes);
    const Scene scene = makeScene(brightnessOf(settings_, format.family));
    lines_[plane].resize(period / step * lineBytes);
    std::uint8_t* out = lines_[plane].data();
    for (std::uint32_t y = 0; y < period; y += step, out += lineBytes) {
        LineWriter line(format, out);
        for (std::uint32_t column = 0; column < region.width; ++column) {
            const std::uint32_t x =
                region.offsetX + (settings_.reverseX ? region.width - 1 - column : column);
            const Colour colour = colourAt(settings_.pattern, x, y, scene);
            if (format.family == PixelFamily::Bayer) {
                // Upside down, the last line of the region comes first, and begins the pattern.
                const std::uint32_t filterLine = settings_.reverseY ? y + 1 : y;
                line.Add(bayerSample(format.name, column, filterLine, colour));
            } else if (format.family == PixelFamily::Rgb) {
                addColour({format, plane}, colour, line);
            } else if (format.family == PixelFamily::Yuv) {
                addYuv({format, plane}, column, colour, line);
            } else {
                line.Add(luma(colour));
            }
        }
    }
}

void Picture::writePlane(std::uint8_t* out, std::size_t plane, std::uint64_t shift) const {
    const ImagePlane& shape = planes_.planes[plane];
    const std::uint32_t halves = lineShift(*FindPixelFormat(settings_.pixelType), plane);
    const auto lineBytes = static_cast<std::size_t>(shape.lineBytes);
    out += shape.offset;
    for (std::uint32_t line = 0; line < shape.lines; ++line, out += lineBytes) {
        const std::uint64_t place = std::uint64_t{line} << halves;
        const std::uint64_t y = settings_.region.offsetY + shift +
                                (settings_.reverseY ? settings_.region.height - 1 - place : place);
        std::memcpy(out, lines_[plane].data() + (y % period >> halves) * lineBytes, lineBytes);
    }
}

}  // namespace Orlix::Emulated
