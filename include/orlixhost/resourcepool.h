// The resource pool of this host: what cameras there are, and the services of a run.
#pragma once

#include <iosfwd>
#include <memory>

#include "orlixhost/api.h"

namespace Orlix::DataProcessing::Core {
class IResourcePool;
}

namespace Orlix::Host {

// A pool with the process-wide threads, buffers and updates. This version knows no transport layer,
// so that its list of devices is empty and stays so. Safe from any thread.
[[nodiscard]] ORLIXHOST_API std::shared_ptr<DataProcessing::Core::IResourcePool>
createResourcePool();

enum class DeviceFormat { Text, Json };

// The devices of a pool with their properties.
ORLIXHOST_API void printDevices(std::ostream& out, DataProcessing::Core::IResourcePool& pool,
                                DeviceFormat format);

}  // namespace Orlix::Host
