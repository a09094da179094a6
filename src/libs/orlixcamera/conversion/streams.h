// Which pictures are written past the caches, and what ends that.
#pragma once

#include <cstddef>

namespace Orlix {

// True for pictures, source and destination together, that are larger than the last cache of a
// processor. What is read takes its place there too: even with the time in which the next reader
// fetches the destination from memory, a conversion past the caches is the faster one.
[[nodiscard]] bool IsBeyondCaches(std::size_t bytes) noexcept;

// Other threads see what this one has written past the caches only after this.
void FinishStreams() noexcept;

}  // namespace Orlix
