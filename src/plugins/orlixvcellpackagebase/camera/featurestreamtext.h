// A configuration set as a user enters it: one parameter a line, with a tab or an equals sign
// between name and value.
#pragma once

#include <optional>

#include "gcbase/gcstring.h"

namespace Plugin::OrlixVCellPackageBase {

// The text as the library's reader takes it: a header line first, tabs for equals signs. Nothing
// if a line is neither a parameter nor a comment. Time and stack don't depend on what is in it.
[[nodiscard]] std::optional<GenICam::gcstring> makeFeatureStream(const GenICam::gcstring& entered);

}  // namespace Plugin::OrlixVCellPackageBase
