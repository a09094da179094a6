#include "orlixcamera/emulated/picture.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string_view>

#include "orlixcamera/emulated/linewriter.h"
#include "orlixcamera/emulated/sensorimages.h"
#include "orlixcamera/pixel/pixeltable.h"

namespace Orlix::Emulated {
namespace {

constexpr std::uint32_t noiseVariants = 4;
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

// Made behind the sensor, so that binning does not show.
Colour colourAt(Pattern pattern, std::uint32_t x, std::uint32_t y) {
    switch (pattern) {
        case Pattern::Off:
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

void addPixel(const PlaneStyle& style, std::uint32_t column, std::uint32_t line,
              const Colour& colour, LineWriter& writer) {
    switch (style.format.family) {
        case PixelFamily::Bayer:
            writer.Add(bayerSample(style.format.name, column, line, colour));
            break;
        case PixelFamily::Rgb:
            addColour(style, colour, writer);
            break;
        case PixelFamily::Yuv:
            addYuv(style, column, colour, writer);
            break;
        default:
            writer.Add(luma(colour));
            break;
    }
}

// Deviations of a sensor, the same for the same picture.
class Noise {
public:
    Noise(std::uint64_t seed, std::uint32_t level)
        : state_(static_cast<std::uint32_t>(seed) * 2 + 1), range_(level * levelStep) {}

    [[nodiscard]] Colour Add(const Colour& colour) {
        if (range_ == 0) {
            return colour;
        }
        return {deviate(colour.red), deviate(colour.green), deviate(colour.blue)};
    }

private:
    std::uint32_t deviate(std::uint32_t level) {
        state_ ^= state_ << 13U;
        state_ ^= state_ >> 17U;
        state_ ^= state_ << 5U;
        const std::uint32_t up = level + state_ % (2 * range_ + 1);
        return std::clamp(up, range_, fullLevel + range_) - range_;
    }

    std::uint32_t state_;
    std::uint32_t range_;
};

Colour brighten(const Colour& colour, const Brightness& brightness) {
    const auto scaled = [](std::uint32_t level, double factor) {
        return static_cast<std::uint32_t>(std::min(level * factor, static_cast<double>(fullLevel)));
    };
    return {scaled(colour.red, brightness.red), scaled(colour.green, brightness.green),
            scaled(colour.blue, brightness.blue)};
}

// The mean of the places of the sensor that make one.
template <typename Seen>
Colour binned(const PictureSettings& settings, std::uint32_t x, std::uint32_t y, const Seen& seen) {
    Colour sum = grey(0);
    for (std::uint32_t down = 0; down < settings.binningY; ++down) {
        for (std::uint32_t right = 0; right < settings.binningX; ++right) {
            const Colour one = seen(x * settings.binningX + right, y * settings.binningY + down);
            sum = {sum.red + one.red, sum.green + one.green, sum.blue + one.blue};
        }
    }
    const std::uint32_t count = settings.binningX * settings.binningY;
    return {sum.red / count, sum.green / count, sum.blue / count};
}

// Which painting of a line a frame takes, so that noise differs from frame to frame.
std::uint64_t variantOf(std::uint64_t frameNumber, std::uint32_t line, std::uint32_t count) {
    constexpr std::uint64_t spread = 0x9E3779B97F4A7C15;
    return count == 1 ? 0 : ((frameNumber * 0x10001 + line) * spread >> 40U) % count;
}

// Whether a line of the plane stands for two of the picture.
std::uint32_t lineShift(const PixelFormat& format, std::size_t plane) {
    return format.layout == PixelLayout::Semiplanar420 && plane > 0 ? 1 : 0;
}

}  // namespace

void Picture::Prepare(const PictureSettings& settings, std::uint64_t frameNumber) {
    if (!prepared_ || !(settings == settings_)) {
        prepared_ = false;
        settings_ = settings;
        planes_ =
            ComputePlanes(settings.pixelType, settings.region.width, settings.region.height, 0);
        showsFiles_ = settings.pattern == Pattern::Off && settings.images != nullptr;
        const bool isNoisy = settings.pattern == Pattern::Off && settings.noiseLevel > 0;
        variantCount_ = isNoisy ? noiseVariants : 1;
        fitCache();
        prepared_ = true;
    }
    const std::size_t image = showsFiles_ ? frameNumber % settings.images->GetCount() : 0;
    current_ = image % painted_.size();
    Painted& painted = painted_[current_];
    if (!painted.valid || painted.image != image) {
        painted.image = image;
        painted.name = showsFiles_ ? settings.images->GetName(image)
                                   : patternNames.at(static_cast<std::size_t>(settings.pattern));
        for (std::size_t plane = 0; plane < planes_.count; ++plane) {
            paintPlane(painted, plane);
        }
        painted.valid = true;
    }
}

// Pictures that fit are painted once for each change of a setting, larger ones for each frame.
void Picture::fitCache() {
    constexpr std::uint64_t mostBytes = std::uint64_t{256} << 20U;
    const std::size_t images = showsFiles_ ? settings_.images->GetCount() : 1;
    const bool allFit = planes_.size * variantCount_ * images <= mostBytes;
    painted_.resize(allFit ? images : 1);
    for (Painted& painted : painted_) {
        painted.valid = false;
    }
}

void Picture::Write(void* buffer, std::uint64_t frameNumber) const {
    for (std::size_t plane = 0; plane < planes_.count; ++plane) {
        writePlane(static_cast<std::uint8_t*>(buffer), plane, frameNumber);
    }
}

// Files are painted line by line of the region, patterns line by line of their period.
std::uint32_t Picture::paintedLines() const noexcept {
    return showsFiles_ ? settings_.region.height : period;
}

void Picture::paintPlane(Painted& painted, std::size_t plane) const {
    const PixelFormat& format = *FindPixelFormat(settings_.pixelType);
    const std::uint32_t step = 1U << lineShift(format, plane);
    const auto lineBytes = static_cast<std::size_t>(planes_.planes[plane].lineBytes);
    const Brightness brightness = brightnessOf(settings_, format.family);
    const Scene scene = makeScene(brightness);
    Noise noise(painted.image, settings_.noiseLevel);
    const auto seen = [&](std::uint32_t x, std::uint32_t y) {
        return showsFiles_ ? brighten(settings_.images->GetColour(painted.image, x, y), brightness)
                           : scene[(x + y) % period];
    };
    const auto colourOf = [&](std::uint32_t x, std::uint32_t y) {
        return settings_.pattern == Pattern::Off ? noise.Add(binned(settings_, x, y, seen))
                                                 : colourAt(settings_.pattern, x, y);
    };
    painted.lines[plane].resize((paintedLines() + step - 1) / step * lineBytes * variantCount_);
    std::uint8_t* out = painted.lines[plane].data();
    for (std::uint32_t variant = 0; variant < variantCount_; ++variant) {
        for (std::uint32_t line = 0; line < paintedLines(); line += step, out += lineBytes) {
            paintLine({format, plane}, line, out, colourOf);
        }
    }
}

template <typename ColourOf>
void Picture::paintLine(const PlaneStyle& style, std::uint32_t line, std::uint8_t* out,
                        const ColourOf& colourOf) const {
    const Region& region = settings_.region;
    const std::uint32_t sensorLine =
        region.offsetY + (settings_.reverseY ? region.height - 1 - line : line);
    const std::uint32_t y = showsFiles_ ? sensorLine : line;
    // Upside down, the last line of the region comes first, and begins the pattern.
    const std::uint32_t filterLine = !showsFiles_ && settings_.reverseY ? line + 1 : line;
    LineWriter writer(style.format, out);
    for (std::uint32_t column = 0; column < region.width; ++column) {
        const std::uint32_t x =
            region.offsetX + (settings_.reverseX ? region.width - 1 - column : column);
        addPixel(style, column, filterLine, colourOf(x, y), writer);
    }
}

void Picture::writePlane(std::uint8_t* out, std::size_t plane, std::uint64_t frameNumber) const {
    const ImagePlane& shape = planes_.planes[plane];
    const std::uint32_t halves = lineShift(*FindPixelFormat(settings_.pixelType), plane);
    const auto lineBytes = static_cast<std::size_t>(shape.lineBytes);
    const std::uint8_t* const lines = painted_[current_].lines[plane].data();
    const std::size_t variantLines = ((paintedLines() - 1) >> halves) + 1;
    const std::uint64_t shift =
        isMoving(settings_.pattern) ? frameNumber % period * linesPerFrame : 0;
    out += shape.offset;
    if (showsFiles_ && variantCount_ == 1) {
        std::memcpy(out, lines, shape.lines * lineBytes);
        return;
    }
    for (std::uint32_t line = 0; line < shape.lines; ++line, out += lineBytes) {
        std::uint64_t place = line;
        if (!showsFiles_) {
            const std::uint64_t top = std::uint64_t{line} << halves;
            const std::uint64_t y = settings_.region.offsetY + shift +
                                    (settings_.reverseY ? settings_.region.height - 1 - top : top);
            place = y % period >> halves;
        }
        place += variantLines * variantOf(frameNumber, line, variantCount_);
        std::memcpy(out, lines + place * lineBytes, lineBytes);
    }
}

}  // namespace Orlix::Emulated
