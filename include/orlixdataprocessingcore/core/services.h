// The process-wide services of a run, used by nodes that were created without a resource pool and
// by pools that have no reason to bring their own.
#pragma once

#include <memory>

#include "orlixdataprocessingcore/api.h"

namespace Orlix::DataProcessing::Threading {
class IThreadPool;
}

namespace Orlix::DataProcessing::Core {

class IBufferProvider;
class IUpdateFactory;

[[nodiscard]] ORLIXDATAPROCESSINGCORE_API std::shared_ptr<Threading::IThreadPool>
getDefaultThreadPool();
[[nodiscard]] ORLIXDATAPROCESSINGCORE_API std::shared_ptr<IBufferProvider>
getDefaultBufferProvider();
[[nodiscard]] ORLIXDATAPROCESSINGCORE_API std::shared_ptr<IUpdateFactory> getDefaultUpdateFactory();

}  // namespace Orlix::DataProcessing::Core
