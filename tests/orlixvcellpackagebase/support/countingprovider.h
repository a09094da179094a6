// A buffer provider with memory of its own, which tells how often it was asked and which addresses
// are its own. All members may be called from any thread.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <vector>

#include "orlixdataprocessingcore/core/bufferprovider.h"

namespace Plugin::OrlixVCellPackageBase {

class CountingProvider final : public Orlix::DataProcessing::Core::IBufferProvider {
public:
    std::shared_ptr<void> getBuffer(std::size_t size) override {
        constexpr std::size_t alignment = 64;
        const std::size_t rounded = (size + alignment - 1) / alignment * alignment;
        std::shared_ptr<void> buffer(std::aligned_alloc(alignment, rounded), std::free);
        const std::lock_guard guard(mutex_);
        sizes_.push_back(size);
        buffers_.push_back(buffer);
        return buffer;
    }

    // The bytes that were asked for, in the order of the calls.
    [[nodiscard]] std::vector<std::size_t> sizes() const {
        const std::lock_guard guard(mutex_);
        return sizes_;
    }

    // Buffers are kept, so that no address comes twice.
    [[nodiscard]] bool owns(const void* data) const {
        const std::lock_guard guard(mutex_);
        for (const auto& buffer : buffers_) {
            if (buffer.get() == data) {
                return true;
            }
        }
        return false;
    }

private:
    mutable std::mutex mutex_;
    std::vector<std::size_t> sizes_;
    std::vector<std::shared_ptr<void>> buffers_;
};

}  // namespace Plugin::OrlixVCellPackageBase
