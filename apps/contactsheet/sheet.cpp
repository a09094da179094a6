#include "sheet.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "orlixcamera/imageformatconverter.h"

namespace Orlix::App {
namespace {

constexpr std::uint32_t cellWidth = 160;
constexpr std::uint32_t cellHeight = 120;
constexpr std::uint32_t margin = 6;
constexpr std::uint8_t background = 40;
constexpr std::uint8_t missing = 90;

COrlixImage toRgb(const COrlixImage& picture) {
    CImageFormatConverter converter;
    converter.OutputPixelFormat.SetValue(PixelType_RGB8Packed);
    converter.OutputOrientation.SetValue(OutputOrientation_TopDown);
    if (converter.ImageHasDestinationFormat(picture)) {
        return picture;
    }
    COrlixImage result;
    converter.Convert(result, picture);
    return result;
}

// The mean colour of the pixels that fall on one pixel of the small picture.
std::array<std::uint8_t, 3> meanOf(const COrlixImage& rgb, std::uint32_t x0, std::uint32_t x1,
                                   std::uint32_t y0, std::uint32_t y1) {
    const auto* pixels = static_cast<const std::uint8_t*>(rgb.GetBuffer());
    const std::size_t stride = std::size_t{3} * rgb.GetWidth() + rgb.GetPaddingX();
    std::array<std::uint64_t, 3> sum{};
    for (std::uint32_t y = y0; y < y1; ++y) {
        for (std::uint32_t x = x0; x < x1; ++x) {
            for (std::size_t i = 0; i < 3; ++i) {
                sum[i] += pixels[y * stride + std::size_t{3} * x + i];
            }
        }
    }
    const std::uint64_t count = std::uint64_t{x1 - x0} * (y1 - y0);
    std::array<std::uint8_t, 3> mean{};
    for (std::size_t i = 0; i < 3; ++i) {
        mean[i] = static_cast<std::uint8_t>(sum[i] / count);
    }
    return mean;
}

// The first pixel of the large picture behind part i of n; at least one apart from the next.
std::uint32_t edge(std::uint32_t i, std::uint32_t n, std::uint32_t size) {
    return static_cast<std::uint32_t>(std::uint64_t{i} * size / n);
}

}  // namespace

Sheet::Sheet(std::uint32_t columns, std::uint32_t rows) : columns_(columns), rows_(rows) {
    image_.Reset(PixelType_RGB8Packed, columns * (cellWidth + margin) + margin,
                 rows * (cellHeight + margin) + margin);
    std::memset(image_.GetBuffer(), background, image_.GetImageSize());
}

bool Sheet::nextPlace(Place& place) {
    if (next_ >= columns_ * rows_) {
        return false;
    }
    place.x = margin + next_ % columns_ * (cellWidth + margin);
    place.y = margin + next_ / columns_ * (cellHeight + margin);
    ++next_;
    return true;
}

void Sheet::setPixel(std::uint32_t x, std::uint32_t y, const std::uint8_t* rgb) {
    const std::size_t stride = std::size_t{3} * image_.GetWidth();
    auto* pixels = static_cast<std::uint8_t*>(image_.GetBuffer());
    std::memcpy(pixels + y * stride + std::size_t{3} * x, rgb, 3);
}

void Sheet::fill(Place place, std::uint32_t width, std::uint32_t height, std::uint8_t grey) {
    const std::array<std::uint8_t, 3> colour = {grey, grey, grey};
    for (std::uint32_t y = 0; y < height; ++y) {
        for (std::uint32_t x = 0; x < width; ++x) {
            setPixel(place.x + x, place.y + y, colour.data());
        }
    }
}

void Sheet::addMissing() {
    Place place{};
    if (nextPlace(place)) {
        fill(place, cellWidth, cellHeight, missing);
    }
}

void Sheet::add(const COrlixImage& picture) {
    Place place{};
    if (!nextPlace(place)) {
        return;
    }
    const COrlixImage rgb = toRgb(picture);
    const double scale = std::min({1.0, static_cast<double>(cellWidth) / rgb.GetWidth(),
                                   static_cast<double>(cellHeight) / rgb.GetHeight()});
    const auto width =
        std::max<std::uint32_t>(1, static_cast<std::uint32_t>(rgb.GetWidth() * scale));
    const auto height =
        std::max<std::uint32_t>(1, static_cast<std::uint32_t>(rgb.GetHeight() * scale));
    for (std::uint32_t y = 0; y < height; ++y) {
        for (std::uint32_t x = 0; x < width; ++x) {
            const auto colour =
                meanOf(rgb, edge(x, width, rgb.GetWidth()), edge(x + 1, width, rgb.GetWidth()),
                       edge(y, height, rgb.GetHeight()), edge(y + 1, height, rgb.GetHeight()));
            setPixel(place.x + (cellWidth - width) / 2 + x, place.y + (cellHeight - height) / 2 + y,
                     colour.data());
        }
    }
}

}  // namespace Orlix::App
