// Numbers of up to eight bytes as they lie in a register. Pure functions.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <span>

namespace GenApi::Detail {

// The bytes as an unsigned number.
[[nodiscard]] inline std::uint64_t gather(std::span<const std::uint8_t> bytes, bool bigEndian) {
    static_assert(std::endian::native == std::endian::little);
    std::uint64_t value = 0;
    // Nearly all have four, which needs no call.
    if (bytes.size() == 4) {
        std::memcpy(&value, bytes.data(), 4);
    } else {
        std::memcpy(&value, bytes.data(), bytes.size());
    }
    return bigEndian ? __builtin_bswap64(value) >> (64 - 8 * bytes.size()) : value;
}

// The low bytes of a number in the order of their addresses.
inline void scatter(std::uint64_t value, std::span<std::uint8_t> bytes, bool bigEndian) {
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[bigEndian ? bytes.size() - 1 - i : i] = static_cast<std::uint8_t>(value >> (8 * i));
    }
}

}  // namespace GenApi::Detail
