// Short names for what every node of the package has: its lock, held for a scope, and the signal
// that tells of a changed list of node maps.
#pragma once

#include "gcbase/gcstring.h"
#include "orlixdataprocessingcore/threading/recursiveclock.h"
#include "orlixdataprocessingcore/threading/uniquelock.h"
#include "orlixdataprocessingcore/utils/signal.h"

namespace Plugin::OrlixVCellPackageBase {

using GenICam::gcstring;

using NodeLock =
    Orlix::DataProcessing::Threading::UniqueLock<Orlix::DataProcessing::Threading::RecursiveCLock>;
using NodeMapsSignal =
    Orlix::DataProcessing::Utils::Signal<void(), Orlix::DataProcessing::Utils::VoidCombiner>;

}  // namespace Plugin::OrlixVCellPackageBase
