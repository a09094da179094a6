// The pin mapping parser as the node uses it, and what its types are to the graph.
#pragma once

#include <vector>

#include "camera/pinmapping.h"
#include "orlixdataprocessingcore/utils/typeinfo.h"

namespace Plugin::OrlixVCellPackageBase {

enum class ParseResult { Parsed, Failed };

// Logs a failure with its place; the pins then hold what was found before it. A value that is
// given twice leaves as a std::runtime_error.
[[nodiscard]] ParseResult parsePins(PinMappingType type,
                                    const std::vector<GenICam::gcstring>& lines,
                                    PinMappingMap& pins);

// The registered type of a pin's values. Not valid for PinType::Invalid.
[[nodiscard]] Orlix::DataProcessing::Utils::TypeInfo getScalarType(PinType type);
[[nodiscard]] Orlix::DataProcessing::Utils::TypeInfo getArrayType(PinType type);

}  // namespace Plugin::OrlixVCellPackageBase
