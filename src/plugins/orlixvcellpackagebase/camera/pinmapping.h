// What one line of the pin mapping language says: an output pin and where its value comes from.
#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "gcbase/gcstring.h"

namespace Plugin::OrlixVCellPackageBase {

// What the value of a pin belongs to: a frame or an event.
enum class PinMappingType : std::int32_t { Invalid, ChunkData, Event };

// The type of the output pin.
enum class PinType : std::int32_t { Invalid, Boolean, Float, Integer, String };

enum class PinProperty : std::int32_t {
    Invalid,
    SelectorName,
    SelectorValue,
    Type,
    EventName,
    ValueName,
};

// The names of the language, also for messages; empty for a value that is no member.
[[nodiscard]] const char* toText(PinMappingType type) noexcept;
[[nodiscard]] const char* toText(PinType type) noexcept;
[[nodiscard]] const char* toText(PinProperty property) noexcept;

// One pin. Each property has its values in the order of writing; that of the type is its text.
struct PinMapping {
    std::map<PinProperty, std::vector<GenICam::gcstring>> properties;
    PinMappingType mappingType = PinMappingType::Invalid;
    PinType pinType = PinType::Invalid;
    GenICam::gcstring pinName;
};

// Pins by name.
using PinMappingMap = std::map<GenICam::gcstring, PinMapping>;

}  // namespace Plugin::OrlixVCellPackageBase
