#include "orlixcamera/conversion/streams.h"

#include <hwy/cache_control.h>
#include <unistd.h>

#include <algorithm>

namespace Orlix {
namespace {

// The programs of a machine share a cache, so that no picture ever has a large one to itself; and a
// virtual machine may say what many processors have together.
constexpr std::size_t MostCacheBytes = std::size_t{32} << 20U;
constexpr std::size_t LeastCacheBytes = std::size_t{4} << 20U;

}  // namespace

bool IsBeyondCaches(std::size_t bytes) noexcept {
    static const std::size_t cacheBytes = [] {
        const auto known = static_cast<std::size_t>(std::max(sysconf(_SC_LEVEL3_CACHE_SIZE), 0L));
        return std::clamp(known, LeastCacheBytes, MostCacheBytes);
    }();
    return bytes > cacheBytes;
}

void FinishStreams() noexcept {
    hwy::FlushStream();
}

}  // namespace Orlix
