// Makes JPEG files with libjpeg, in the forms that the tests need.
#pragma once

#include <cstdint>

#include "orlixcamera/codecs/testfiles.h"

namespace Orlix::Test {

enum class JpegColors { Gray, Rgb, YCbCr, Cmyk, Ycck };

enum class AdobeMarker { AsUsual, LeftOut };

struct JpegForm {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    JpegColors colors = JpegColors::YCbCr;
    int horizontalSampling = 1;  // of the luma against the chroma
    int verticalSampling = 1;
    bool isProgressive = false;
    AdobeMarker adobeMarker = AdobeMarker::AsUsual;
};

// `pixels` are gray, RGB or CMYK.
[[nodiscard]] Bytes makeJpeg(const JpegForm& form, const Bytes& pixels);

}  // namespace Orlix::Test
