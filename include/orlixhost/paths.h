// Names of files as the command line and recipes have them.
#pragma once

#include <string>

#include "orlixhost/api.h"

namespace Orlix::Host {

// For the current directory of now, which may be another one later. Throws RuntimeException that
// names the path if that directory is gone.
[[nodiscard]] ORLIXHOST_API std::string absolutePath(const std::string& path);

}  // namespace Orlix::Host
