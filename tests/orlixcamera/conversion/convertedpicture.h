// Pictures that the converter makes, and their comparison with those of the reference.
#pragma once

#include <gtest/gtest.h>

#include <cstring>

#include "orlixcamera/conversion/referencepicture.h"
#include "orlixcamera/imageformatconverter.h"
#include "orlixcamera/orliximage.h"

namespace Orlix::Test {

inline COrlixImage Convert(const Picture& source, const Target& target, std::int64_t threads) {
    CImageFormatConverter converter;
    converter.OutputPixelFormat.SetValue(target.pixelType);
    converter.OutputBitAlignment.SetValue(target.alignment);
    converter.BayerBorder.SetValue(target.border);
    converter.OutputPaddingX.SetValue(static_cast<std::int64_t>(target.paddingX));
    converter.OutputOrientation.SetValue(target.orientation == ImageOrientation_TopDown
                                             ? OutputOrientation_TopDown
                                             : OutputOrientation_BottomUp);
    // More threads than a small machine has must give the same bytes.
    converter.MaxNumThreads.SetValue(threads, false);
    COrlixImage result;
    converter.Convert(result, source.bytes.data(), source.bytes.size(), source.pixelType,
                      source.width, source.height, source.paddingX, source.orientation);
    return result;
}

inline ::testing::AssertionResult HasBytes(const COrlixImage& image, const Picture& expected) {
    if (image.GetImageSize() != expected.bytes.size()) {
        return ::testing::AssertionFailure()
               << image.GetImageSize() << " bytes in place of " << expected.bytes.size();
    }
    const auto* bytes = static_cast<const std::uint8_t*>(image.GetBuffer());
    if (std::memcmp(bytes, expected.bytes.data(), expected.bytes.size()) == 0) {
        return ::testing::AssertionSuccess();
    }
    for (std::size_t index = 0; index < expected.bytes.size(); ++index) {
        if (bytes[index] != expected.bytes[index]) {
            return ::testing::AssertionFailure() << "byte " << index << " is " << int{bytes[index]}
                                                 << " in place of " << int{expected.bytes[index]};
        }
    }
    return ::testing::AssertionSuccess();
}

}  // namespace Orlix::Test
