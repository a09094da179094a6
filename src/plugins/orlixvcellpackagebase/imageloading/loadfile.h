// The guard around the loading of one file: what a load throws becomes the error that the image
// carries, so that a file that can't be loaded does not end the run.
#pragma once

#include <functional>
#include <memory>

#include "orlixdataprocessingcore/core/error.h"

namespace Plugin::OrlixVCellPackageBase {

// Null if the load went well; otherwise the error "Failed to load image.", which keeps the
// exception, after a line in the log. Any thread.
[[nodiscard]] std::shared_ptr<Orlix::DataProcessing::Core::IError> tryLoad(
    const std::function<void()>& load);

}  // namespace Plugin::OrlixVCellPackageBase
