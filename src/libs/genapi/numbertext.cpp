#include "genapi/numbertext.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>

namespace GenApi::Detail {

namespace {

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == '\v';
}

bool isHexPrefix(std::string_view text) {
    return text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
}

// Takes one sign off the front.
bool takeSign(std::string_view& text) {
    if (text.empty() || (text[0] != '-' && text[0] != '+')) {
        return false;
    }
    const bool negative = text[0] == '-';
    text.remove_prefix(1);
    return negative;
}

template <typename Number, typename... Format>
std::optional<Number> parseWhole(std::string_view text, Format... format) {
    Number value{};
    const auto [end, error] =
        std::from_chars(text.data(), text.data() + text.size(), value, format...);
    if (error != std::errc{} || end != text.data() + text.size()) {
        return std::nullopt;
    }
    return value;
}

std::optional<std::int64_t> withSign(std::uint64_t magnitude, bool negative) {
    constexpr std::uint64_t top = std::uint64_t{1} << 63;
    if (negative) {
        return magnitude <= top ? std::optional(std::bit_cast<std::int64_t>(0 - magnitude))
                                : std::nullopt;
    }
    return magnitude < top ? std::optional(static_cast<std::int64_t>(magnitude)) : std::nullopt;
}

std::optional<std::int64_t> fromFloat(std::string_view text) {
    const auto value = parseFloat(text);
    // Both bounds are exact as doubles; the upper one is the first that does not fit.
    if (!value || *value < -0x1p63 || *value >= 0x1p63) {
        return std::nullopt;
    }
    return static_cast<std::int64_t>(*value);
}

// Reads `count` fields with a separator into one number, `bits` for each field.
std::optional<std::int64_t> parseFields(std::string_view text, char separator, int count, int base,
                                        int bits) {
    std::uint64_t result = 0;
    for (int field = 0; field < count; ++field) {
        const std::size_t end = field + 1 < count ? text.find(separator) : text.size();
        if (end == std::string_view::npos) {
            return std::nullopt;
        }
        const auto value = parseWhole<std::uint8_t>(text.substr(0, end), base);
        if (!value) {
            return std::nullopt;
        }
        result = (result << bits) | *value;
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return static_cast<std::int64_t>(result);
}

std::string formatFields(std::uint64_t value, char separator, int count, int base) {
    constexpr char digits[] = "0123456789ABCDEF";
    std::string text;
    for (int field = count - 1; field >= 0; --field) {
        const auto part = static_cast<std::uint8_t>(value >> (field * 8));
        if (base == 16) {
            text += digits[part >> 4];
            text += digits[part & 15];
        } else {
            text += std::to_string(part);
        }
        if (field > 0) {
            text += separator;
        }
    }
    return text;
}

std::string formatHex(std::uint64_t value) {
    std::array<char, 16> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value, 16).ptr;
    std::string text("0x");
    for (const char* c = digits.data(); c != end; ++c) {
        text += (*c >= 'a') ? static_cast<char>(*c - 'a' + 'A') : *c;
    }
    return text;
}

}  // namespace

std::string_view trim(std::string_view text) {
    while (!text.empty() && isBlank(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && isBlank(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

std::optional<std::uint64_t> parseHex(std::string_view digits) {
    return parseWhole<std::uint64_t>(digits, 16);
}

std::optional<std::uint64_t> parseHexId(std::string_view text) {
    text = trim(text);
    return parseHex(isHexPrefix(text) ? text.substr(2) : text);
}

std::optional<std::int64_t> parseInteger(std::string_view text) {
    text = trim(text);
    std::string_view digits = text;
    const bool negative = takeSign(digits);
    if (isHexPrefix(digits)) {
        const auto bits = parseHex(digits.substr(2));
        if (!bits) {
            return std::nullopt;
        }
        return std::bit_cast<std::int64_t>(negative ? 0 - *bits : *bits);
    }
    if (const auto magnitude = parseWhole<std::uint64_t>(digits, 10)) {
        return withSign(*magnitude, negative);
    }
    return fromFloat(text);
}

std::optional<double> parseFloat(std::string_view text) {
    text = trim(text);
    const bool negative = takeSign(text);
    if (text.empty() || text[0] == '-' || text[0] == '+') {
        return std::nullopt;
    }
    std::optional<double> value;
    if (isHexPrefix(text)) {
        if (const auto bits = parseHex(text.substr(2))) {
            value = static_cast<double>(*bits);
        }
    } else {
        value = parseWhole<double>(text, std::chars_format::general);
    }
    if (!value || !std::isfinite(*value)) {
        return std::nullopt;
    }
    return negative ? -*value : *value;
}

std::optional<std::uint64_t> parseUnsigned(std::string_view text) {
    return parseWhole<std::uint64_t>(trim(text), 10);
}

int sideOfLargeNumber(std::string_view text) {
    text = trim(text);
    const bool negative = takeSign(text);
    const bool isDigit = !text.empty() && text[0] >= '0' && text[0] <= '9';
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool isWhole = end == text.data() + text.size();
    const bool isInfinite = text == "INF" || text == "Infinity";
    // Too small a number is out of range as well.
    const bool isLarge =
        isDigit && isWhole &&
        (error == std::errc::result_out_of_range ? text.find("e-") == std::string_view::npos &&
                                                       text.find("E-") == std::string_view::npos
                                                 : error == std::errc{} && value >= 0x1p63);
    if (!isInfinite && !isLarge) {
        return 0;
    }
    return negative ? -1 : 1;
}

std::string formatInteger(std::int64_t value, ERepresentation representation) {
    const auto bits = std::bit_cast<std::uint64_t>(value);
    if (representation == IPV4Address && bits >> 32 == 0) {
        return formatFields(bits, '.', 4, 10);
    }
    if (representation == MACAddress && bits >> 48 == 0) {
        return formatFields(bits, ':', 6, 16);
    }
    if (representation == HexNumber || representation == IPV4Address ||
        representation == MACAddress) {
        return formatHex(bits);
    }
    return std::to_string(value);
}

std::optional<std::int64_t> parseIntegerAs(std::string_view text, ERepresentation representation) {
    text = trim(text);
    if (representation == IPV4Address) {
        if (const auto value = parseFields(text, '.', 4, 10, 8)) {
            return value;
        }
    }
    if (representation == MACAddress) {
        if (const auto value = parseFields(text, ':', 6, 16, 8)) {
            return value;
        }
    }
    // Who asks for a fraction does not mean the number below it.
    const auto real = parseFloat(text);
    return real && *real != std::trunc(*real) ? std::nullopt : parseInteger(text);
}

std::string formatFloat(double value, EDisplayNotation notation, std::int64_t precision) {
    const int digits = static_cast<int>(std::clamp<std::int64_t>(precision, 1, 40));
    // Room for the 309 digits before the point of the largest double in fixed notation.
    std::array<char, 400> text{};
    auto format = std::chars_format::general;
    int count = digits;
    if (notation == fnScientific) {
        format = std::chars_format::scientific;
        count = digits - 1;
    } else if (notation == fnFixed) {
        format = std::chars_format::fixed;
        const double magnitude = std::fabs(value);
        const int before = magnitude >= 1 && std::isfinite(magnitude)
                               ? static_cast<int>(std::floor(std::log10(magnitude))) + 1
                               : 1;
        count = std::max(digits - before, 0);
    }
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value, format, count);
    return std::string(text.data(), end.ptr);
}

std::string formatFloatExactly(double value) {
    std::array<char, 32> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value);
    return std::string(text.data(), end.ptr);
}

}  // namespace GenApi::Detail
