// What the back end tells without a caller: to the camera library's message sink.
#pragma once

#include <string>

namespace Orlix::Aravis {

void Tell(const std::string& message) noexcept;

}  // namespace Orlix::Aravis
