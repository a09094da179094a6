// An image whose pixels lie in memory of the host's buffer provider: what a node loads or converts
// into, so that the host decides where output images live. Copies of its handle need no provider.
#pragma once

#include <cstddef>
#include <memory>

#include "orlixcamera/orliximage.h"
#include "orlixdataprocessingcore/core/bufferprovider.h"

namespace Plugin::OrlixVCellPackageBase {

// Belongs to one thread. The provider is asked once for each new buffer.
class ProviderImage final : public Orlix::COrlixImage {
public:
    using Provider = Orlix::DataProcessing::Core::IBufferProvider;

    // Without a provider the memory is the pool's.
    explicit ProviderImage(std::shared_ptr<Provider> provider);

    // What the provider throws passes through; one that gives nothing is a BadAllocException.
    std::shared_ptr<void> AllocateBuffer(std::size_t size) const override;

private:
    std::shared_ptr<Provider> provider_;
};

}  // namespace Plugin::OrlixVCellPackageBase
