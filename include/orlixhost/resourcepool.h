// The resource pool of this host: what cameras there are, and the services of a run.
#pragma once

#include <cstddef>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "orlixhost/api.h"

namespace Orlix {
class ICameraLayer;
}

namespace Orlix::DataProcessing::Core {
class IResourcePool;
}

namespace Orlix::Host {

// Real cameras are reached through the transport back ends that are installed, which takes a
// second. LookedFor: from the first refresh on, as a node makes it that finds no camera; they come
// to the list when they are found, and a Runner waits for them where an allocation fails before
// that. WaitedFor: they are in the list from its beginning.
enum class RealCameras { LookedFor, WaitedFor, LeftOut };

struct CameraOptions {
    std::size_t emulatedCameras = 0;
    // What goes wrong with them: a fault script, or @ and the name of a file with one.
    std::string faults;
    RealCameras realCameras = RealCameras::LookedFor;
};

// A pool with the process-wide threads, buffers and updates, and the cameras that the options ask
// for. It lists what is there when it is made, and notices by itself what comes and goes: its
// signal then fires on a thread of the camera library. Safe from any thread. Throws
// RuntimeException for a mistake in the faults, which names it and its place.
[[nodiscard]] ORLIXHOST_API std::shared_ptr<DataProcessing::Core::IResourcePool> createResourcePool(
    const CameraOptions& options = {});

// The same with the cameras of any layers.
[[nodiscard]] ORLIXHOST_API std::shared_ptr<DataProcessing::Core::IResourcePool> createResourcePool(
    std::vector<std::shared_ptr<ICameraLayer>> layers);

// Waits for real cameras that are being looked for; they are in the list when it returns. False if
// nobody has begun to look, or for a pool of another make. For who allocates nodes himself: after a
// failure it says whether another attempt is worth it. Not with a node's lock held, which a slot of
// the pool's signal may wait for.
ORLIXHOST_API bool waitForRealCameras(DataProcessing::Core::IResourcePool& pool);

enum class DeviceFormat { Text, Json };

// The devices of a pool with their properties.
ORLIXHOST_API void printDevices(std::ostream& out, DataProcessing::Core::IResourcePool& pool,
                                DeviceFormat format);

}  // namespace Orlix::Host
