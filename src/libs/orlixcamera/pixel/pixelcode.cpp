#include "orlixcamera/pixel/pixelcode.h"

#include <array>
#include <cstdint>
#include <cstdio>

namespace Orlix {

// A stream would group the digits where the global locale says so.
std::string PixelCodeText(EPixelType pixelType) {
    std::array<char, 20> text{};
    std::snprintf(text.data(), text.size(), "0x%llX", static_cast<long long>(pixelType));
    return text.data();
}

}  // namespace Orlix
