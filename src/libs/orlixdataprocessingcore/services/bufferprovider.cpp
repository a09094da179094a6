#include "orlixdataprocessingcore/services/bufferprovider.h"

#include "orlixcamera/bufferpool.h"

namespace Orlix::DataProcessing::Core {

IBufferProvider::~IBufferProvider() = default;

std::shared_ptr<void> BufferProvider::getBuffer(std::size_t size) {
    return Orlix::BufferPool::Instance().Allocate(size);
}

}  // namespace Orlix::DataProcessing::Core
