// Why a camera can't be opened, as its user is told.
#pragma once

#include <string>

#include "aravis/found.h"

namespace Orlix::Aravis {

// RuntimeException; `why` follows "can't be reached".
[[noreturn]] void ThrowUnreachable(const Found& camera, const std::string& why);
// By Aravis' text. AccessException for a camera of USB that another program has.
[[noreturn]] void ThrowNotOpened(const Found& camera, const std::string& why);

}  // namespace Orlix::Aravis
