#include "aravis/cleantext.h"

#include <array>
#include <cstdint>

namespace Orlix::Aravis {
namespace {

constexpr std::uint32_t largestPoint = 0x10FFFF;

struct Character {
    std::uint32_t point = 0;
    std::size_t size = 1;  // bytes that it takes
};

// A form of UTF-8 for characters from `first` on.
struct Form {
    std::uint8_t mask;
    std::uint8_t mark;
    std::uint32_t first;
};
constexpr std::array<Form, 3> forms = {{
    {0xE0, 0xC0, 0x80},
    {0xF0, 0xE0, 0x800},
    {0xF8, 0xF0, 0x10000},
}};

bool isPoint(std::uint32_t point, std::uint32_t first) {
    const bool isHalf = point >= 0xD800 && point <= 0xDFFF;
    return point >= first && point <= largestPoint && !isHalf;
}

// The character in front of a text that isn't empty.
Character readCharacter(std::string_view text) {
    const auto lead = static_cast<std::uint8_t>(text[0]);
    std::size_t following = 0;
    for (const Form& form : forms) {
        ++following;
        if ((lead & form.mask) != form.mark || text.size() <= following) {
            continue;
        }
        std::uint32_t point = lead & static_cast<std::uint8_t>(~form.mask);
        bool isWhole = true;
        for (std::size_t index = 1; index <= following; ++index) {
            const auto byte = static_cast<std::uint8_t>(text[index]);
            isWhole = isWhole && (byte & 0xC0U) == 0x80U;
            point = (point << 6U) | (byte & 0x3FU);
        }
        if (isWhole && isPoint(point, form.first)) {
            return {point, following + 1};
        }
    }
    return {lead, 1};
}

// Also those of Latin-1: some begin commands of terminals.
bool isControl(std::uint32_t point) {
    return point < 0x20 || (point >= 0x7F && point < 0xA0);
}

}  // namespace

std::string CleanText(std::string_view raw) {
    std::string clean;
    while (!raw.empty()) {
        const Character character = readCharacter(raw);
        if (!isControl(character.point)) {
            if (character.size == 1 && character.point >= 0x80) {
                clean += static_cast<char>(0xC0U | (character.point >> 6U));
                clean += static_cast<char>(0x80U | (character.point & 0x3FU));
            } else {
                clean += raw.substr(0, character.size);
            }
        }
        raw.remove_prefix(character.size);
    }
    return clean;
}

}  // namespace Orlix::Aravis
