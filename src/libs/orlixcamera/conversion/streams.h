// Which pictures are written past the caches, and what ends that.
#pragma once

#include <cstddef>

namespace Orlix {

// True for a destination that is larger than the last cache of a processor.
[[nodiscard]] bool IsBeyondCaches(std::size_t bytes) noexcept;

// Other threads see what this one has written past the caches only after this.
void FinishStreams() noexcept;

}  // namespace Orlix
