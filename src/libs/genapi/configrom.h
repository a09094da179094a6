// The configuration ROM of IEEE 1212: quadlets in big endian, a header, and directories whose
// entries have a key of eight bits and a value of 24. Pure functions over bytes of any kind: what
// does not fit together is not found.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace GenApi::Detail {

struct ConfigRomEntry {
    std::uint32_t place = 0;  // its quadlet
    std::uint8_t key = 0;
    std::uint32_t value = 0;
};

// The first entry with the key, walking from the root directory down in the order of the entries.
[[nodiscard]] std::optional<ConfigRomEntry> findConfigKey(std::span<const std::uint8_t> rom,
                                                          std::uint8_t key);

// What an entry stands for: its value, or the address of the register, the leaf or the directory
// that it leads to. `base` is the address of the ROM.
[[nodiscard]] std::int64_t configValue(const ConfigRomEntry& entry, std::int64_t base);

// The text of the descriptor that an entry leads to, or of the one right behind the entry.
[[nodiscard]] std::optional<std::string> configText(std::span<const std::uint8_t> rom,
                                                    const ConfigRomEntry& entry);

}  // namespace GenApi::Detail
