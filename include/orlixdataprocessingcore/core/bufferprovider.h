// Source of the memory behind output images. Buffers come from a pool and return to it when their
// last holder lets go, on whatever thread that happens.
#pragma once

#include <cstddef>
#include <memory>

#include "orlixdataprocessingcore/api.h"

namespace Orlix::DataProcessing::Core {

class ORLIXDATAPROCESSINGCORE_API IBufferProvider {
public:
    virtual ~IBufferProvider();

    // At least size bytes, 64-byte aligned, contents undefined. Throws BadAllocException. The
    // buffer stays valid as long as the pointer or a copy of it lives, also beyond the provider.
    [[nodiscard]] virtual std::shared_ptr<void> getBuffer(std::size_t size) = 0;
};

}  // namespace Orlix::DataProcessing::Core
