#include "genapi/configrom.h"

#include <algorithm>
#include <vector>

namespace GenApi::Detail {

namespace {

// The two highest bits of a key.
enum class KeyType : std::uint8_t { immediate = 0, registerOffset = 1, leaf = 2, directory = 3 };

constexpr std::uint8_t textualDescriptor = 0x81;
constexpr std::int64_t registerSpace = 0xFFFFF0000000;

KeyType typeOf(std::uint8_t key) {
    return static_cast<KeyType>(key >> 6);
}

class Rom {
public:
    explicit Rom(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

    [[nodiscard]] std::uint32_t count() const {
        return static_cast<std::uint32_t>(bytes_.size() / 4);
    }
    // 0 beyond the end.
    [[nodiscard]] std::uint32_t quadlet(std::uint32_t place) const {
        if (place >= count()) {
            return 0;
        }
        const std::size_t at = std::size_t{place} * 4;
        return std::uint32_t{bytes_[at]} << 24 | std::uint32_t{bytes_[at + 1]} << 16 |
               std::uint32_t{bytes_[at + 2]} << 8 | bytes_[at + 3];
    }
    // The number of quadlets behind the header of a directory or a leaf, as far as they are there.
    [[nodiscard]] std::uint32_t lengthAt(std::uint32_t place) const {
        return place >= count() ? 0 : std::min(quadlet(place) >> 16, count() - place - 1);
    }
    [[nodiscard]] ConfigRomEntry entry(std::uint32_t place) const {
        const std::uint32_t bits = quadlet(place);
        return {place, static_cast<std::uint8_t>(bits >> 24), bits & 0xFFFFFF};
    }

private:
    std::span<const std::uint8_t> bytes_;
};

}  // namespace

std::optional<ConfigRomEntry> findConfigKey(std::span<const std::uint8_t> bytes, std::uint8_t key) {
    struct Level {
        std::uint32_t next, last;
    };
    const Rom rom(bytes);
    std::vector<bool> seen(rom.count(), false);
    std::vector<Level> open;
    const auto enter = [&](std::uint32_t place) {
        // A directory that leads to itself is walked once.
        if (place < rom.count() && !seen[place]) {
            seen[place] = true;
            open.push_back({place + 1, place + rom.lengthAt(place)});
        }
    };
    enter(1 + (rom.quadlet(0) >> 24));
    while (!open.empty()) {
        Level& level = open.back();
        if (level.next > level.last) {
            open.pop_back();
            continue;
        }
        const ConfigRomEntry entry = rom.entry(level.next++);
        if (entry.key == key) {
            return entry;
        }
        if (typeOf(entry.key) == KeyType::directory) {
            enter(entry.place + entry.value);
        }
    }
    return std::nullopt;
}

std::int64_t configValue(const ConfigRomEntry& entry, std::int64_t base) {
    switch (typeOf(entry.key)) {
        case KeyType::immediate:
            break;
        case KeyType::registerOffset:
            return registerSpace + std::int64_t{entry.value} * 4;
        case KeyType::leaf:
        case KeyType::directory:
            return static_cast<std::int64_t>(
                static_cast<std::uint64_t>(base) +
                (std::uint64_t{entry.place} + std::uint64_t{entry.value}) * 4);
    }
    return entry.value;
}

std::optional<std::string> configText(std::span<const std::uint8_t> bytes,
                                      const ConfigRomEntry& entry) {
    const Rom rom(bytes);
    const ConfigRomEntry leaf =
        typeOf(entry.key) == KeyType::leaf ? entry : rom.entry(entry.place + 1);
    if (typeOf(leaf.key) != KeyType::leaf ||
        (leaf.place != entry.place && leaf.key != textualDescriptor)) {
        return std::nullopt;
    }
    // Behind the header come two quadlets on the kind of the text.
    const std::uint32_t place = leaf.place + leaf.value;
    const std::uint32_t length = rom.lengthAt(place);
    constexpr std::uint32_t prologue = 2;
    if (length < prologue) {
        return std::nullopt;
    }
    const auto text =
        bytes.subspan(std::size_t{place + 1 + prologue} * 4, std::size_t{length - prologue} * 4);
    return std::string(text.begin(), std::find(text.begin(), text.end(), std::uint8_t{0}));
}

}  // namespace GenApi::Detail
