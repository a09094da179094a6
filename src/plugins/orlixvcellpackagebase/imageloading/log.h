// The log category of ImageLoading.
#pragma once

#include "failure.h"
#include "orlixdataprocessingcore/utils/log.h"

namespace Plugin::OrlixVCellPackageBase::ImageLoadingLog {

using Orlix::DataProcessing::Utils::createLogEntry;
using Orlix::DataProcessing::Utils::Severitiy;

// Looked up at the first line.
[[nodiscard]] Orlix::DataProcessing::Utils::CatId category();

}  // namespace Plugin::OrlixVCellPackageBase::ImageLoadingLog
