// Numbers as GigE Vision has them on the wire: highest byte first.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Orlix::Aravis {

[[nodiscard]] constexpr std::uint64_t GetNumber(const std::uint8_t* bytes, std::size_t count) {
    std::uint64_t value = 0;
    for (std::size_t index = 0; index < count; ++index) {
        value = value << 8U | bytes[index];
    }
    return value;
}

constexpr void PutNumber(std::uint8_t* bytes, std::size_t count, std::uint64_t value) {
    for (std::size_t index = count; index > 0; --index) {
        bytes[index - 1] = static_cast<std::uint8_t>(value);
        value >>= 8U;
    }
}

}  // namespace Orlix::Aravis
