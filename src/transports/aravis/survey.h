// One look at all interfaces.
#pragma once

#include <vector>

#include "aravis/found.h"

namespace Orlix::Aravis {

// What answers now. Of `before`, a camera of the network whose answer got lost is asked once more.
// Takes a second; holds the system lock for most of it.
[[nodiscard]] std::vector<Found> TakeSurvey(const std::vector<Found>& before);

}  // namespace Orlix::Aravis
