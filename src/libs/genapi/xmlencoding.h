// Brings the bytes of a description to UTF-8, and resolves what stands for a character. Pure
// functions.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace GenApi::Detail {

struct Utf8Text {
    std::string text;
    // Bytes that were no UTF-8 were taken as those of a Windows code page.
    bool isRepaired = false;
    // UTF-16 with half of a pair, where it is no text at all.
    bool isBroken = false;
};

// UTF-8 and UTF-16 with or without a byte order mark; Latin-1 and its Windows form if declared so.
// Marks and zeros at the end are taken off.
[[nodiscard]] Utf8Text toUtf8(std::string bytes);

void appendUtf8(std::string& text, std::uint32_t code);

// The character that a reference without '&' and ';' stands for; 0 for none.
[[nodiscard]] std::uint32_t characterOf(std::string_view reference);

enum class Blanks { keep, unify };

// Resolves references, which were checked before, and line ends. In attributes all blanks are one.
void appendDecoded(std::string& result, std::string_view text, Blanks blanks);

}  // namespace GenApi::Detail
