// The errors of a conversion, built in one place so that each names formats, size and what was
// expected. Stateless.
#pragma once

#include <cstdint>
#include <string>

#include "orlixcamera/pixeltype.h"

namespace Orlix {

// What the caller of a conversion says about its source.
struct SourceArguments {
    const void* data;
    std::uint64_t size;
    EPixelType pixelType;
    std::uint32_t width;
    std::uint32_t height;
    std::uint64_t paddingX;
    int orientation;
};

// The name of a format, or its number if it has no name.
[[nodiscard]] std::string DescribePixelType(EPixelType pixelType);

// InvalidArgumentException "Can't convert an image of ...: REASON".
[[noreturn]] void ThrowBadSource(const SourceArguments& source, const std::string& reason);

// InvalidArgumentException with the formats that can be converted to the output format.
[[noreturn]] void ThrowNoConversion(EPixelType source, EPixelType destination);

}  // namespace Orlix
