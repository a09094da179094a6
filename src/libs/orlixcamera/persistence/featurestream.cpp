#include "orlixcamera/persistence/featurestream.h"

#include <algorithm>
#include <charconv>

#include "gcbase/gcexception.h"

namespace Orlix {

namespace {

constexpr std::string_view blanks = " \t\r\n\v\f";
constexpr std::string_view hexDigits = "0123456789abcdef";

bool isLetter(char character) {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
}

void appendEscaped(std::string& text, char character) {
    const auto code = static_cast<unsigned char>(character);
    text += "\\x";
    text += hexDigits[code / 16];
    text += hexDigits[code % 16];
}

std::string escape(std::string_view value) {
    std::string text;
    for (std::size_t index = 0; index < value.size(); ++index) {
        const char character = value[index];
        const bool atEnd = index == 0 || index + 1 == value.size();
        const bool isControl = static_cast<unsigned char>(character) < ' ';
        if (character == '\\') {
            text += "\\\\";
        } else if (isControl || character == '#' || character == '=' ||
                   (atEnd && character == ' ')) {
            appendEscaped(text, character);
        } else {
            text += character;
        }
    }
    return text.empty() ? "\\e" : text;
}

// Whether a code of two hexadecimal digits stands at `index`.
bool readCode(std::string_view text, std::size_t index, char& character) {
    unsigned int code = 0;
    if (index + 2 > text.size()) {
        return false;
    }
    const char* const end = text.data() + index + 2;
    const auto [stop, error] = std::from_chars(text.data() + index, end, code, 16);
    character = static_cast<char>(code);
    return error == std::errc() && stop == end;
}

// Escapes that are none stay as they are: people write these texts, too.
std::string unescape(std::string_view text) {
    std::string value;
    for (std::size_t index = 0; index < text.size(); ++index) {
        const char next = text[index] == '\\' && index + 1 < text.size() ? text[index + 1] : '\0';
        char code = '\0';
        if (next == '\\') {
            value += '\\';
            index += 1;
        } else if (next == 'e') {
            index += index + 2 < text.size() && text[index + 2] == '\t' ? 2U : 1U;
        } else if (next == 'x' && readCode(text, index + 2, code)) {
            value += code;
            index += 3;
        } else {
            value += text[index];
        }
    }
    return value;
}

std::string_view trim(std::string_view text) {
    const std::size_t begin = text.find_first_not_of(blanks);
    return begin == std::string_view::npos
               ? std::string_view()
               : text.substr(begin, text.find_last_not_of(blanks) - begin + 1);
}

FeatureLine parseLine(std::string_view line, std::size_t number) {
    const std::size_t tab = line.find('\t');
    if (tab == std::string_view::npos) {
        throw GenICam::RuntimeException(("Line " + std::to_string(number) +
                                         " of the feature stream has no tab behind a name: \"" +
                                         std::string(line.substr(0, 80)) + "\".")
                                            .c_str(),
                                        __FILE__, __LINE__);
    }
    return {std::string(trim(line.substr(0, tab))), unescape(trim(line.substr(tab + 1))), number};
}

}  // namespace

void appendFeatureLine(std::string& text, std::string_view name, std::string_view value) {
    text += name;
    text += '\t';
    if (name.empty() || !isLetter(name.back())) {
        text += "\\e\t";
    }
    text += escape(value);
    text += '\n';
}

void appendComment(std::string& text, std::string_view comment) {
    text += "# ";
    for (const char character : comment) {
        text += static_cast<unsigned char>(character) < ' ' ? ' ' : character;
    }
    text += '\n';
}

std::vector<FeatureLine> parseFeatureStream(std::string_view text) {
    std::vector<FeatureLine> lines;
    for (std::size_t number = 1; !text.empty(); ++number) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        const std::string_view content = trim(line);
        if (!content.empty() && content.find('#') == std::string_view::npos) {
            lines.push_back(parseLine(line, number));
        }
    }
    return lines;
}

}  // namespace Orlix
