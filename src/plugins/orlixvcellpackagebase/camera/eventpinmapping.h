// One event pin as its configuration text says it.
#pragma once

#include "camera/pinmapping.h"

namespace Plugin::OrlixVCellPackageBase {

// Made anew whenever it is needed. Not valid, and otherwise empty, for a text that can't be used.
struct EventPinMapping {
    GenICam::gcstring valueName;  // the camera's feature that is read when the event arrives
    GenICam::gcstring eventName;  // the entry of the event selector
    PinType pinType = PinType::Invalid;
    GenICam::gcstring pinName;
    bool valid = false;
};

// Logs what is wrong with a text. Only a value that is given twice leaves as an exception, a
// std::runtime_error.
[[nodiscard]] EventPinMapping getEventMapping(const GenICam::gcstring& text);

}  // namespace Plugin::OrlixVCellPackageBase
