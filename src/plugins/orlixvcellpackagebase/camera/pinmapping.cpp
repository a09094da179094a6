#include "camera/pinmapping.h"

#include <array>

namespace Plugin::OrlixVCellPackageBase {

namespace {

// The value of an enumeration is the index of its name.
constexpr std::array mappingTypeNames{"Invalid", "ChunkData", "Event"};
constexpr std::array pinTypeNames{"Invalid", "Boolean", "Float", "Integer", "String"};
constexpr std::array propertyNames{"Invalid", "SelectorName", "SelectorValue",
                                   "Type",    "EventName",    "ValueName"};

template <typename Names, typename Enumeration>
const char* find(const Names& names, Enumeration value) noexcept {
    const auto index = static_cast<std::uint32_t>(value);
    return index < names.size() ? names[index] : "";
}

}  // namespace

const char* toText(PinMappingType type) noexcept {
    return find(mappingTypeNames, type);
}

const char* toText(PinType type) noexcept {
    return find(pinTypeNames, type);
}

const char* toText(PinProperty property) noexcept {
    return find(propertyNames, property);
}

}  // namespace Plugin::OrlixVCellPackageBase
