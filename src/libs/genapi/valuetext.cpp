#include "genapi/valuetext.h"

#include <algorithm>
#include <cctype>

#include "genapi/numbertext.h"

namespace GenApi {

namespace {

bool isWord(std::string_view text, std::string_view lowerCase) {
    return text.size() == lowerCase.size() &&
           std::equal(text.begin(), text.end(), lowerCase.begin(), [](char a, char b) {
               return std::tolower(static_cast<unsigned char>(a)) == b;
           });
}

}  // namespace

std::optional<bool> BooleanOfText(std::string_view text) {
    text = Detail::trim(text);
    if (text == "1" || isWord(text, "true")) {
        return true;
    }
    if (text == "0" || isWord(text, "false")) {
        return false;
    }
    return std::nullopt;
}

std::optional<std::int64_t> IntegerOfText(std::string_view text, ERepresentation representation) {
    return Detail::parseIntegerAs(text, representation);
}

std::optional<double> FloatOfText(std::string_view text) {
    return Detail::parseFloat(text);
}

std::string_view EntryOfText(std::string_view text) {
    return Detail::trim(text);
}

std::optional<std::vector<std::uint8_t>> BytesOfText(std::string_view text) {
    std::string_view digits = Detail::trim(text);
    if (digits.substr(0, 2) == "0x" || digits.substr(0, 2) == "0X") {
        digits.remove_prefix(2);
    }
    std::vector<std::uint8_t> bytes;
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        const auto byte = Detail::parseHex(digits.substr(i, 2));
        if (!byte || digits.size() % 2 != 0) {
            return std::nullopt;
        }
        bytes.push_back(static_cast<std::uint8_t>(*byte));
    }
    return bytes;
}

}  // namespace GenApi
