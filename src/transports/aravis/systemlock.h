// Aravis keeps one list of interfaces and devices for the process and guards it by nothing that can
// be relied on: who enumerates, opens or closes holds this lock.
#pragma once

#include <mutex>

namespace Orlix::Aravis {

// Outermost of this back end's locks. Never destroyed, as threads may outlive the main function.
[[nodiscard]] std::mutex& SystemLock();

}  // namespace Orlix::Aravis
