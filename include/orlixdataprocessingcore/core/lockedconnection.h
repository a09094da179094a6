// Connects work that needs a node's lock to a signal that is fired by threads that hold the locks
// of other nodes, as the resource pool's is: two nodes that refresh the pool at once, each under
// its own lock, must not wait for each other.
//
//     resources_.set(connectUnderLock(*pool->getResourcesChangedSignal(), getLock(),
//                                     getThreadPool(), [this] { updateResources(); }),
//                    true);
#pragma once

#include <functional>
#include <memory>

#include "orlixdataprocessingcore/api.h"
#include "orlixdataprocessingcore/utils/signal.h"

namespace Orlix::DataProcessing::Threading {
class IRecursiveLockable;
class IThreadPool;
}  // namespace Orlix::DataProcessing::Threading

namespace Orlix::DataProcessing::Core {

// The work runs with the lock held: on the emitting thread if the lock is free or that thread holds
// it already, so that what an emission of the node's own leads to shows before it returns; else
// later, on a thread of the pool, once for all emissions that came until then. No emission ever
// waits for the lock. The connection ends as every other: with a ScopedConnection that waits, no
// work is running or will run once it is gone, so its owner must not hold the lock then. Throws
// InvalidArgumentException for a null lock or pool and for an empty function.
[[nodiscard]] ORLIXDATAPROCESSINGCORE_API std::shared_ptr<Utils::IConnection> connectUnderLock(
    Utils::ISignal<void()>& signal, const std::shared_ptr<Threading::IRecursiveLockable>& lock,
    const std::shared_ptr<Threading::IThreadPool>& threadPool, std::function<void()> work);

// Does what emissions of the signal have left for later, as far as its lock is free or the caller
// holds it: a thread that holds a node's lock and asks for what is new would find the node behind.
ORLIXDATAPROCESSINGCORE_API void runPutOffWork(const Utils::ISignal<void()>& signal);

}  // namespace Orlix::DataProcessing::Core
