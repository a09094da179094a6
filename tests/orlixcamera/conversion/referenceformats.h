// What the reference knows of each format, one line for each. Nothing of it is asked of the
// library: a wrong row there must not be a wrong row here.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "orlixcamera/pixeltype.h"

namespace Orlix::Test {

// How the samples of a line lie, each read for itself.
struct ReferencePacking {
    std::uint32_t depth;
    std::uint32_t bits;  // that a sample takes, on average
    std::uint32_t (*read)(const std::uint8_t* line, std::size_t sample);
};

enum class Form {
    Grey,
    BayerRG,
    BayerGR,
    BayerGB,
    BayerBG,
    Rgb,
    Bgr,
    Rgba,
    Bgra,
    RgbPlanes,
    Uyvy,
    Yuyv,
    Semiplanar422,
    Semiplanar420,
    Yuv444Planes,
    Yuv422Planes,
    Yuv420Planes,
};

struct ReferenceFormat {
    EPixelType pixelType;
    Form form;
    ReferencePacking packing;
};

// Throws std::logic_error for a format without a line.
[[nodiscard]] const ReferenceFormat& ReferenceFormatOf(EPixelType pixelType);

[[nodiscard]] bool IsBayerForm(Form form);
// YUV in memory or as a destination.
[[nodiscard]] bool IsYuvForm(Form form);

struct ReferencePlane {
    std::size_t offset;
    std::size_t stride;
};

struct ReferencePlanes {
    std::vector<ReferencePlane> planes;
    std::size_t size = 0;
};

[[nodiscard]] ReferencePlanes ReferencePlanesOf(EPixelType pixelType, std::uint32_t width,
                                                std::uint32_t height, std::size_t paddingX);

}  // namespace Orlix::Test
