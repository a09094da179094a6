// The vocabulary of event values.
#pragma once

#include "gcbase/gcstring.h"

namespace Plugin::OrlixVCellPackageBase {

// The index of the event that a value belongs to, -1 for a name that is not in the table.
[[nodiscard]] int getEventValueIndex(const GenICam::gcstring& valueName);

}  // namespace Plugin::OrlixVCellPackageBase
