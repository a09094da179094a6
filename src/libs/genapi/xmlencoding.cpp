#include "genapi/xmlencoding.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <optional>
#include <string_view>

namespace GenApi::Detail {

namespace {

unsigned char byteAt(std::string_view text, std::size_t at) {
    return static_cast<unsigned char>(text[at]);
}

// What Windows has where Latin-1 has control characters; 0 where it has nothing.
constexpr std::array<std::uint16_t, 32> windowsCharacters = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

void appendWindowsByte(std::string& text, unsigned char byte) {
    std::uint32_t code = byte;
    if (byte >= 0x80 && byte < 0xA0) {
        const std::uint32_t known = windowsCharacters[byte - 0x80U];
        code = known != 0 ? known : 0xFFFD;
    }
    appendUtf8(text, code);
}

// The length of the character that begins here; 0 if the bytes are none.
std::size_t characterLength(std::string_view text, std::size_t at) {
    const unsigned char first = byteAt(text, at);
    if (first < 0x80) {
        return 1;
    }
    const std::size_t length = first >= 0xF0 ? 4 : (first >= 0xE0 ? 3 : 2);
    if (first < 0xC2 || first > 0xF4 || at + length > text.size()) {
        return 0;
    }
    for (std::size_t i = 1; i < length; ++i) {
        if ((byteAt(text, at + i) & 0xC0) != 0x80) {
            return 0;
        }
    }
    const unsigned char second = byteAt(text, at + 1);
    const bool isWrong = (first == 0xE0 && second < 0xA0) || (first == 0xED && second >= 0xA0) ||
                         (first == 0xF0 && second < 0x90) || (first == 0xF4 && second >= 0x90);
    return isWrong ? 0 : length;
}

// Where the first byte above 127 is; eight at a time, since nearly all are below.
std::size_t findNonAscii(std::string_view text, std::size_t at) {
    constexpr std::uint64_t highBits = 0x8080808080808080U;
    for (std::uint64_t word = 0; at + 8 <= text.size(); at += 8) {
        std::memcpy(&word, text.data() + at, 8);
        if ((word & highBits) != 0) {
            break;
        }
    }
    while (at < text.size() && byteAt(text, at) < 0x80) {
        ++at;
    }
    return at;
}

// Some declare UTF-8 and then write a degree sign as one byte.
bool repair(std::string& text) {
    std::string repaired;
    std::size_t kept = 0;
    for (std::size_t at = findNonAscii(text, 0); at < text.size(); at = findNonAscii(text, at)) {
        const std::size_t length = characterLength(text, at);
        if (length == 0) {
            repaired.append(text, kept, at - kept);
            appendWindowsByte(repaired, byteAt(text, at));
            kept = at + 1;
        }
        at += std::max<std::size_t>(length, 1);
    }
    if (kept == 0) {
        return false;
    }
    repaired.append(text, kept);
    text = std::move(repaired);
    return true;
}

std::string fromWindows(const std::string& text) {
    std::string result;
    result.reserve(text.size() + text.size() / 16);
    for (const char c : text) {
        appendWindowsByte(result, static_cast<unsigned char>(c));
    }
    return result;
}

std::string upperCase(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; });
    return result;
}

bool isDeclaredLatin1(const std::string& text) {
    if (text.compare(0, 5, "<?xml") != 0) {
        return false;
    }
    const std::string declaration =
        upperCase(text.substr(0, std::min(text.find("?>"), text.size())));
    return declaration.find("ISO-8859-1") != std::string::npos ||
           declaration.find("WINDOWS-1252") != std::string::npos ||
           declaration.find("LATIN1") != std::string::npos;
}

enum class Wide { no, littleEndian, bigEndian };

// By the mark, or by the zero beside the first '<'.
Wide wideOrder(std::string_view text) {
    const std::string_view first = text.substr(0, 2);
    if (first == "\xFF\xFE" || first == std::string_view("<\0", 2)) {
        return Wide::littleEndian;
    }
    return first == "\xFE\xFF" || first == std::string_view("\0<", 2) ? Wide::bigEndian : Wide::no;
}

// Nothing where half of a character or of a pair stands alone.
std::optional<std::string> fromUtf16(std::string_view text, Wide order) {
    if (text.size() % 2 != 0) {
        return std::nullopt;
    }
    std::string result;
    result.reserve(text.size() / 2);
    std::uint32_t high = 0;
    for (std::size_t at = 0; at + 1 < text.size(); at += 2) {
        const std::uint32_t a = byteAt(text, at);
        const std::uint32_t b = byteAt(text, at + 1);
        const std::uint32_t unit = order == Wide::littleEndian ? a | b << 8 : a << 8 | b;
        const bool isLow = unit >= 0xDC00 && unit < 0xE000;
        if (isLow != (high != 0)) {
            return std::nullopt;
        }
        if (unit >= 0xD800 && unit < 0xDC00) {
            high = unit;
        } else {
            appendUtf8(result, isLow ? 0x10000 + ((high - 0xD800) << 10 | (unit - 0xDC00)) : unit);
            high = 0;
        }
    }
    return high == 0 ? std::optional(std::move(result)) : std::nullopt;
}

}  // namespace

void appendUtf8(std::string& text, std::uint32_t code) {
    const auto tail = [&](unsigned shift) {
        text += static_cast<char>(0x80 | ((code >> shift) & 0x3F));
    };
    if (code < 0x80) {
        text += static_cast<char>(code);
    } else if (code < 0x800) {
        text += static_cast<char>(0xC0 | code >> 6);
        tail(0);
    } else if (code < 0x10000) {
        text += static_cast<char>(0xE0 | code >> 12);
        tail(6);
        tail(0);
    } else {
        text += static_cast<char>(0xF0 | code >> 18);
        tail(12);
        tail(6);
        tail(0);
    }
}

namespace {

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

}  // namespace

// The character that a reference without '&' and ';' stands for; 0 for none.
std::uint32_t characterOf(std::string_view reference) {
    struct Row {
        std::string_view name;
        char character;
    };
    constexpr std::array<Row, 5> known = {
        {{"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}}};
    for (const Row& row : known) {
        if (row.name == reference) {
            return static_cast<std::uint32_t>(row.character);
        }
    }
    if (reference.size() < 2 || reference[0] != '#') {
        return 0;
    }
    const bool hex = reference[1] == 'x';
    reference.remove_prefix(hex ? 2 : 1);
    std::uint32_t code = 0;
    const char* last = reference.data() + reference.size();
    const auto [end, error] = std::from_chars(reference.data(), last, code, hex ? 16 : 10);
    const bool isSurrogate = code >= 0xD800 && code < 0xE000;
    return error == std::errc{} && end == last && code <= 0x10FFFF && !isSurrogate ? code : 0;
}

// Resolves references and line ends. All references were checked before.
void appendDecoded(std::string& result, std::string_view text, Blanks blanks) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '&') {
            const std::size_t end = text.find(';', i);
            appendUtf8(result, characterOf(text.substr(i + 1, end - i - 1)));
            i = end;
        } else if (c == '\r') {
            i += i + 1 < text.size() && text[i + 1] == '\n' ? std::size_t{1} : 0;
            result += blanks == Blanks::unify ? ' ' : '\n';
        } else {
            result += blanks == Blanks::unify && isBlank(c) ? ' ' : c;
        }
    }
}

Utf8Text toUtf8(std::string bytes) {
    Utf8Text result;
    if (const Wide order = wideOrder(bytes); order != Wide::no) {
        auto text = fromUtf16(bytes, order);
        result.isBroken = !text.has_value();
        bytes = std::move(text).value_or(std::string());
    }
    // Devices pad their description with zeros.
    bytes.erase(bytes.find_last_not_of('\0') + 1);
    if (bytes.compare(0, 3, "\xEF\xBB\xBF") == 0) {
        bytes.erase(0, 3);
    }
    if (isDeclaredLatin1(bytes)) {
        bytes = fromWindows(bytes);
    } else {
        result.isRepaired = repair(bytes);
    }
    result.text = std::move(bytes);
    return result;
}

}  // namespace GenApi::Detail
