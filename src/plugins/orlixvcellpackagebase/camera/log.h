// The log category of Camera, and how its lines begin.
#pragma once

#include "orlixdataprocessingcore/utils/failure.h"

namespace Plugin::OrlixVCellPackageBase {

class Camera;

namespace CameraLog {

using Orlix::DataProcessing::Utils::createLogEntry;
using Orlix::DataProcessing::Utils::Severitiy;

// Looked up at the first line.
[[nodiscard]] Orlix::DataProcessing::Utils::CatId category();

[[nodiscard]] Orlix::DataProcessing::Utils::LogSubject getSubject(const Camera* node);

}  // namespace CameraLog

}  // namespace Plugin::OrlixVCellPackageBase
