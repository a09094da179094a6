// One of the steps in which Camera allocates: whatever fails in it is an error of the node's list,
// and the next step comes.
#pragma once

#include <functional>

#include "orlixdataprocessingcore/core/errors.h"
#include "orlixdataprocessingcore/utils/failure.h"

namespace Plugin::OrlixVCellPackageBase {

// Adds the errors that `step` returns. What it throws is logged as what the node was `doing`, which
// ends with a full stop, and added.
void runAllocationStep(Orlix::DataProcessing::Core::ErrorList& errors,
                       const Orlix::DataProcessing::Utils::LogSubject& subject, const char* doing,
                       const std::function<Orlix::DataProcessing::Core::ErrorList()>& step);

}  // namespace Plugin::OrlixVCellPackageBase
