// The words that stand in a recipe for the values of two enumerations. Pure functions.
#pragma once

#include <cstdint>

#include "gcbase/gcstring.h"

namespace Plugin::OrlixVCellPackageBase {

// Values are those of the library's enumerations. Words are compared with case. Each throws
// InvalidArgumentException for what it does not know.
[[nodiscard]] const char* toOrientationWord(std::int64_t value);
[[nodiscard]] std::int64_t toOrientation(const GenICam::gcstring& word);
[[nodiscard]] const char* toBitAlignmentWord(std::int64_t value);
[[nodiscard]] std::int64_t toBitAlignment(const GenICam::gcstring& word);

}  // namespace Plugin::OrlixVCellPackageBase
