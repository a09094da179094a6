// Conversions whose bytes are compared one by one.
#pragma once

#include <cstdint>
#include <vector>

#include "orlixcamera/imageformatconverter.h"
#include "orlixcamera/orliximage.h"

namespace Orlix::Test {

inline std::vector<int> BytesOf(const COrlixImage& image) {
    const auto* bytes = static_cast<const std::uint8_t*>(image.GetBuffer());
    return {bytes, bytes + image.GetImageSize()};
}

// The bytes of a picture converted to a format.
inline std::vector<int> Convert(const CImageFormatConverter& converter,
                                const std::vector<std::uint8_t>& source, EPixelType type,
                                std::uint32_t width, std::uint32_t height) {
    COrlixImage image;
    converter.Convert(image, source.data(), source.size(), type, width, height, 0,
                      ImageOrientation_TopDown);
    return BytesOf(image);
}

}  // namespace Orlix::Test
