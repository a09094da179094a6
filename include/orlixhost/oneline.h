// Text for a message, which is one line.
#pragma once

#include <string>

#include "orlixhost/api.h"

namespace Orlix::Host {

// Line feeds and other control characters become blanks.
[[nodiscard]] ORLIXHOST_API std::string oneLine(std::string text);

}  // namespace Orlix::Host
