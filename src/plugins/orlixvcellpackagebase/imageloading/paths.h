// Paths as texts: UTF-8, in the separators of this platform. Pure functions.
#pragma once

#include <filesystem>

#include "gcbase/gcstring.h"

namespace Plugin::OrlixVCellPackageBase {

[[nodiscard]] inline GenICam::gcstring toPreferredText(std::filesystem::path path) {
    return GenICam::gcstring(path.make_preferred().string());
}

}  // namespace Plugin::OrlixVCellPackageBase
