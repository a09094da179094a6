#include "orlixcamera/pixeltypemapper.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "orlixcamera/pixel/pixeltable.h"

namespace Orlix {
namespace {

using NamedType = std::pair<std::string_view, EPixelType>;

std::vector<NamedType> SortedNames() {
    std::vector<NamedType> names;
    for (const PixelFormat& format : AllPixelFormats()) {
        names.emplace_back(format.name, format.pixelType);
        if (!format.alias.empty()) {
            names.emplace_back(format.alias, format.pixelType);
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace

const char* CPixelTypeMapper::GetNameByPixelType(EPixelType pixelType) noexcept {
    const PixelFormat* format = FindPixelFormat(pixelType);
    // The table's names are literals, and so end with a zero.
    return format != nullptr ? format->name.data() : "";
}

EPixelType CPixelTypeMapper::GetPixelTypeByName(std::string_view name) noexcept {
    static const std::vector<NamedType> names = SortedNames();
    const auto found = std::lower_bound(
        names.begin(), names.end(), name,
        [](const NamedType& entry, std::string_view value) { return entry.first < value; });
    return found != names.end() && found->first == name ? found->second : PixelType_Undefined;
}

}  // namespace Orlix
