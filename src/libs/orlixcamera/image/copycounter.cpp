#include "orlixcamera/copycounter.h"

#include <atomic>

namespace Orlix {

namespace {

// A statistic that orders no other memory access, hence relaxed throughout.
std::atomic<std::uint64_t> copiedBytes{0};

}  // namespace

void PixelCopyCounter::Add(std::uint64_t bytes) noexcept {
    copiedBytes.fetch_add(bytes, std::memory_order_relaxed);
}

std::uint64_t PixelCopyCounter::Read() noexcept {
    return copiedBytes.load(std::memory_order_relaxed);
}

std::uint64_t PixelCopyCounter::Reset() noexcept {
    return copiedBytes.exchange(0, std::memory_order_relaxed);
}

}  // namespace Orlix
