// The log category of ImageLoading, and how its lines begin.
#pragma once

#include "orlixdataprocessingcore/utils/failure.h"

namespace Plugin::OrlixVCellPackageBase {

class ImageLoading;

namespace ImageLoadingLog {

using Orlix::DataProcessing::Utils::createLogEntry;
using Orlix::DataProcessing::Utils::Severitiy;

// Looked up at the first line.
[[nodiscard]] Orlix::DataProcessing::Utils::CatId category();

// A null node is one that the line has no address of.
[[nodiscard]] Orlix::DataProcessing::Utils::LogSubject getSubject(const ImageLoading* node);

}  // namespace ImageLoadingLog

}  // namespace Plugin::OrlixVCellPackageBase
