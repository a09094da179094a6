// Translates between the names of pixel formats and their numbers. Stateless: any thread may call
// at any time.
#pragma once

#include <string_view>

#include "orlixcamera/api.h"
#include "orlixcamera/pixeltype.h"

namespace Orlix {

// A format has one canonical name, that of its enumerator ("Mono12p", "RGB8Packed", "YUV422Packed",
// "BayerGR12Packed"). Where the current naming convention has another one ("RGB8", "BGRa8",
// "YUV422_8_UYVY", "Mono1p"), as cameras that follow it report it, that name is understood, too,
// but never given out. Names are compared exactly, case included.
class ORLIXCAMERA_API CPixelTypeMapper {
public:
    // The canonical name; an empty text, never a null pointer, for an unknown format. The text
    // lives as long as the process.
    [[nodiscard]] static const char* GetNameByPixelType(EPixelType pixelType) noexcept;

    // PixelType_Undefined for an unknown or empty name.
    [[nodiscard]] static EPixelType GetPixelTypeByName(std::string_view name) noexcept;

    // The same under the name that camera code knows it by.
    [[nodiscard]] static EPixelType GetOrlixPixelTypeByName(std::string_view name) noexcept {
        return GetPixelTypeByName(name);
    }
};

}  // namespace Orlix
