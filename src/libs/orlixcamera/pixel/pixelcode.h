// The number of a pixel type as messages tell it, whatever the locale of the process.
#pragma once

#include <string>

#include "orlixcamera/pixeltype.h"

namespace Orlix {

// Such as "0x1080001".
[[nodiscard]] std::string PixelCodeText(EPixelType pixelType);

}  // namespace Orlix
