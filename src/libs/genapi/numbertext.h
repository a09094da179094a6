// Numbers as descriptions and users write them. No locale anywhere, and integers never pass through
// a double. Pure functions.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "genapi/types.h"

namespace GenApi::Detail {

// Without the white space at both ends.
[[nodiscard]] std::string_view trim(std::string_view text);

// Decimal, "0x" in either case (64 bits, so all ones are -1), a sign, or the spelling of a float,
// which is cut toward zero. Nothing may be left over.
[[nodiscard]] std::optional<std::int64_t> parseInteger(std::string_view text);

// A decimal number without a sign that needs all 64 bits.
[[nodiscard]] std::optional<std::uint64_t> parseUnsigned(std::string_view text);

// 1 or -1 for a number beyond what the wanted type can be, INF in the spellings of XML among them;
// 0 for what is no number.
[[nodiscard]] int sideOfLargeNumber(std::string_view text);

// Any spelling of a finite number, hexadecimal integers too.
[[nodiscard]] std::optional<double> parseFloat(std::string_view text);

// Hexadecimal digits without "0x".
[[nodiscard]] std::optional<std::uint64_t> parseHex(std::string_view digits);

// An identifier in hexadecimal, which has no "0x" but is written with one at times.
[[nodiscard]] std::optional<std::uint64_t> parseHexId(std::string_view text);

// The text of a value in its representation, and back. Values that do not fit an address form fall
// back to hexadecimal, so that every value reads back. A text with a fraction is no integer.
[[nodiscard]] std::string formatInteger(std::int64_t value, ERepresentation representation);
[[nodiscard]] std::optional<std::int64_t> parseIntegerAs(std::string_view text,
                                                         ERepresentation representation);

// `precision` counts all digits.
[[nodiscard]] std::string formatFloat(double value, EDisplayNotation notation,
                                      std::int64_t precision);
// The shortest text that reads back as the same number.
[[nodiscard]] std::string formatFloatExactly(double value);

}  // namespace GenApi::Detail
