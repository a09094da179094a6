#include "patterns.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <numbers>

namespace Orlix::App {
namespace {

// Each from 0 to 1.
struct Colour {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;

    [[nodiscard]] double grey() const { return 0.299 * red + 0.587 * green + 0.114 * blue; }
};

// How the samples of a pixel lie in memory.
struct Layout {
    std::array<double Colour::*, 4> channels{};
    std::size_t count = 0;
    std::size_t bytes = 1;
    bool isGrey = false;
};

Layout layoutOf(EPixelType type) {
    constexpr auto red = &Colour::red;
    constexpr auto green = &Colour::green;
    constexpr auto blue = &Colour::blue;
    switch (type) {
        case PixelType_Mono8:
            return {{}, 1, 1, true};
        case PixelType_Mono16:
            return {{}, 1, 2, true};
        case PixelType_BGR8Packed:
            return {{blue, green, red}, 3, 1, false};
        case PixelType_RGBA8Packed:
            return {{red, green, blue, &Colour::alpha}, 4, 1, false};
        case PixelType_RGB16Packed:
            return {{red, green, blue}, 3, 2, false};
        default:
            return {{red, green, blue}, 3, 1, false};
    }
}

// Hue from 0 to 1, full saturation.
Colour hue(double value) {
    const auto channel = [value](double shift) {
        return 0.5 + 0.5 * std::cos(2 * std::numbers::pi * (value - shift));
    };
    return {channel(0), channel(1.0 / 3), channel(2.0 / 3)};
}

// x and y from 0 to 1, from the top left corner.
Colour colourAt(Pattern pattern, double x, double y) {
    const double dx = x - 0.5;
    const double dy = y - 0.5;
    const double distance = std::sqrt(dx * dx + dy * dy);
    switch (pattern) {
        case Pattern::Ramp:
            return {x, y, 1 - x};
        case Pattern::Bars: {
            // White, yellow, cyan, green, magenta, red, blue, black; each darker to the bottom.
            const int bar = 7 - static_cast<int>(x * 8);
            const double light = 1 - 0.6 * y;
            return {light * ((bar & 2) != 0), light * ((bar & 4) != 0), light * ((bar & 1) != 0)};
        }
        case Pattern::Rings: {
            const double value = 0.5 + 0.5 * std::cos(220 * distance * distance);
            return {value, value * (1 - y), value * x};
        }
        case Pattern::Waves:
            return {0.5 + 0.5 * std::sin(20 * x + 6 * std::sin(7 * y)),
                    0.5 + 0.5 * std::sin(15 * y), 0.5 + 0.5 * std::sin(9 * (x + y))};
        case Pattern::Wheel: {
            Colour colour = hue(std::atan2(dy, dx) / (2 * std::numbers::pi));
            colour.alpha = distance < 0.48 ? 1 : 0.25;
            return colour;
        }
    }
    return {};
}

void putSample(std::byte* target, double value, std::size_t bytes) {
    const double full = bytes == 2 ? 65535 : 255;
    const auto sample = static_cast<std::uint16_t>(std::lround(std::clamp(value, 0.0, 1.0) * full));
    const auto small = static_cast<std::uint8_t>(sample);
    if (bytes == 2) {
        std::memcpy(target, &sample, 2);
    } else {
        std::memcpy(target, &small, 1);
    }
}

}  // namespace

COrlixImage makePicture(Pattern pattern, EPixelType pixelType, std::uint32_t width,
                        std::uint32_t height) {
    const Layout layout = layoutOf(pixelType);
    COrlixImage image;
    image.Reset(pixelType, width, height);
    auto* target = static_cast<std::byte*>(image.GetBuffer());
    for (std::uint32_t y = 0; y < height; ++y) {
        for (std::uint32_t x = 0; x < width; ++x) {
            const Colour colour = colourAt(pattern, (x + 0.5) / width, (y + 0.5) / height);
            for (std::size_t i = 0; i < layout.count; ++i, target += layout.bytes) {
                putSample(target, layout.isGrey ? colour.grey() : colour.*layout.channels[i],
                          layout.bytes);
            }
        }
    }
    return image;
}

}  // namespace Orlix::App
