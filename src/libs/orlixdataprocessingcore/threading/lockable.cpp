#include "orlixdataprocessingcore/threading/lockable.h"

namespace Orlix::DataProcessing::Threading {

IRecursiveLockable::~IRecursiveLockable() = default;

}  // namespace Orlix::DataProcessing::Threading
