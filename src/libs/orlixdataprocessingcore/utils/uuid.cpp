#include "orlixdataprocessingcore/utils/uuid.h"

#include <cstddef>
#include <string>
#include <string_view>

#include "gcbase/gcexception.h"

namespace Orlix::DataProcessing::Utils {

namespace {

constexpr std::string_view pattern = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";

// 0 to 15, or -1 for another character.
int getDigit(char character) {
    if (character >= '0' && character <= '9') {
        return character - '0';
    }
    if (character >= 'a' && character <= 'f') {
        return character - 'a' + 10;
    }
    if (character >= 'A' && character <= 'F') {
        return character - 'A' + 10;
    }
    return -1;
}

bool parse(std::string_view text, Uuid::Bytes& bytes) {
    if (text.size() != pattern.size()) {
        return false;
    }
    std::size_t count = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (pattern[i] == '-') {
            if (text[i] != '-') {
                return false;
            }
            continue;
        }
        const int digit = getDigit(text[i]);
        if (digit < 0) {
            return false;
        }
        auto& byte = bytes[count / 2];
        byte = static_cast<std::uint8_t>((byte << 4) | digit);
        ++count;
    }
    return true;
}

}  // namespace

Uuid::Uuid(const GenICam::gcstring& text) {
    if (!parse(text.view(), bytes_)) {
        const std::string message = "Invalid UUID \"" + text.str() + "\".";
        throw GenICam::InvalidArgumentException(message.c_str(), __FILE__, __LINE__);
    }
}

GenICam::gcstring Uuid::toString() const {
    constexpr std::string_view digits = "0123456789abcdef";
    GenICam::gcstring text;
    for (std::size_t i = 0; i < bytes_.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) {
            text.push_back('-');
        }
        text.push_back(digits[bytes_[i] >> 4]);
        text.push_back(digits[bytes_[i] & 0xF]);
    }
    return text;
}

}  // namespace Orlix::DataProcessing::Utils
