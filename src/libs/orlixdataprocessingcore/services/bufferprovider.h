// The provider behind getDefaultBufferProvider(): the pool that pictures come from.
#pragma once

#include "orlixdataprocessingcore/core/bufferprovider.h"

namespace Orlix::DataProcessing::Core {

class BufferProvider final : public IBufferProvider {
public:
    [[nodiscard]] std::shared_ptr<void> getBuffer(std::size_t size) override;
};

}  // namespace Orlix::DataProcessing::Core
