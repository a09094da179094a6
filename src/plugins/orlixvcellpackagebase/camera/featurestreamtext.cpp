#include "camera/featurestreamtext.h"

#include <algorithm>
#include <locale>
#include <string>
#include <string_view>

namespace Plugin::OrlixVCellPackageBase {

namespace {

constexpr std::string_view header = "# {05D8C294-F295-4dfb-9D01-096BD04049F4}";

bool isBlank(char character) {
    return std::isspace(character, std::locale::classic());
}

bool isLetter(char character) {
    return std::isalpha(character, std::locale::classic());
}

bool isLetterOrDigit(char character) {
    return std::isalnum(character, std::locale::classic());
}

// Anywhere, also behind a value.
bool isComment(std::string_view line) {
    return line.find('#') != std::string_view::npos;
}

// A name at the very start, then the sign, with or without blanks.
bool hasNameAndSign(std::string_view line) {
    const auto* const nameEnd = std::find_if_not(line.begin(), line.end(), isLetterOrDigit);
    const auto* const sign = std::find_if_not(nameEnd, line.end(), isBlank);
    return nameEnd != line.begin() && sign != line.end() && *sign == '=';
}

// A letter right before a tab, anywhere.
bool hasTab(std::string_view line) {
    return std::adjacent_find(line.begin(), line.end(), [](char left, char right) {
               return isLetter(left) && right == '\t';
           }) != line.end();
}

// Every sign counts, with the blanks around it, also one in the value.
void appendWithTabs(std::string& out, std::string_view line) {
    const std::size_t lineStart = out.size();
    std::size_t kept = lineStart;  // blanks before it are no longer taken away
    bool afterSign = false;
    for (const char character : line) {
        if (character == '=') {
            while (out.size() > kept && isBlank(out.back())) {
                out.pop_back();
            }
            out += '\t';
            kept = out.size();
            afterSign = true;
        } else if (!afterSign || !isBlank(character)) {
            out += character;
            afterSign = false;
        }
    }
}

}  // namespace

std::optional<GenICam::gcstring> makeFeatureStream(const GenICam::gcstring& entered) {
    const std::string& text = entered.str();
    std::string_view rest = text;
    if (rest.empty()) {
        return GenICam::gcstring();
    }
    std::string out;
    out.reserve(text.size() + header.size() + 2);
    if (rest.find(header) == std::string_view::npos) {
        out.append(header).push_back('\n');
    }
    while (!rest.empty()) {
        const std::string_view line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(line.size() + 1, rest.size()));
        if (isComment(line)) {
            out += line;
        } else if (hasNameAndSign(line)) {
            appendWithTabs(out, line);
        } else if (hasTab(line)) {
            out += line;
        } else {
            return std::nullopt;
        }
        out += '\n';
    }
    return GenICam::gcstring(out);
}

}  // namespace Plugin::OrlixVCellPackageBase
