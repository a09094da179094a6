// The package's catalog, one JSON document in UTF-8, embedded at build time from the sources in
// this folder.
#pragma once

#include <cstddef>

namespace Plugin::OrlixVCellPackageBase {

extern const char catalogText[];       // with a terminating NUL
extern const std::size_t catalogSize;  // without it

}  // namespace Plugin::OrlixVCellPackageBase
