// Counts the pixel bytes that this library copies from one image buffer to another, so that a
// test or a running host can show that a frame travelled without being copied. Decoding, encoding
// and converting are no copies. Process-wide; every function may be called on any thread.
#pragma once

#include <cstdint>

#include "orlixcamera/api.h"

namespace Orlix {

class ORLIXCAMERA_API PixelCopyCounter {
public:
    PixelCopyCounter() = delete;

    static void Add(std::uint64_t bytes) noexcept;
    [[nodiscard]] static std::uint64_t Read() noexcept;
    // Sets the counter to zero and returns what it was; no byte added meanwhile gets lost.
    static std::uint64_t Reset() noexcept;
};

}  // namespace Orlix
