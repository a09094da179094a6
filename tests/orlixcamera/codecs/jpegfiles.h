// Makes JPEG files with libjpeg, in the forms that the tests need.
#pragma once

#include <cstdint>
#include <functional>

#include "orlixcamera/codecs/testfiles.h"

namespace Orlix::Test {

enum class JpegColors { Gray, Rgb, YCbCr, Cmyk, Ycck };

enum class AdobeMarker { AsUsual, LeftOut };

enum class JpegScans { AsUsual, OneForEachComponent };

struct JpegForm {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    JpegColors colors = JpegColors::YCbCr;
    int horizontalSampling = 1;  // of the luma against the chroma
    int verticalSampling = 1;
    bool isProgressive = false;
    AdobeMarker adobeMarker = AdobeMarker::AsUsual;
    JpegScans scans = JpegScans::AsUsual;  // of a progressive picture two for each component
};

// `pixels` are gray, RGB or CMYK.
[[nodiscard]] Bytes makeJpeg(const JpegForm& form, const Bytes& pixels);

// What the head of a scan of one component tells: its number, from 1, and its first coefficient.
struct JpegScan {
    int component = 0;
    int firstCoefficient = 0;
};

// The file with all tables, but without the scans that are left out.
[[nodiscard]] Bytes leaveOutScans(const Bytes& file,
                                  const std::function<bool(const JpegScan&)>& isLeftOut);

}  // namespace Orlix::Test
