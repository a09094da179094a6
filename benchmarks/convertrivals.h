// What other libraries do in place of a conversion, for the comparison in convert_benchmark. OpenCV
// and libyuv are optional when this is configured; without them the list of rivals is shorter.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "orlixcamera/pixeltype.h"

namespace Orlix::Benchmarks {

struct Picture {
    EPixelType type;
    std::uint32_t width;
    std::uint32_t height;
    const std::uint8_t* bytes;  // without padding; they outlive the rivals
};

struct Rival {
    std::string name;
    // Converts once, with one thread, into memory of its own that is allocated already.
    std::function<void()> convert;
};

[[nodiscard]] std::vector<Rival> MakeRivals(const Picture& source, EPixelType destination);

// The libraries that there are, for the head of the report.
[[nodiscard]] std::string DescribeRivals();

}  // namespace Orlix::Benchmarks
