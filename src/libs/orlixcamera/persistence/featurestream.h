// The text form of a feature stream: its lines, and the escapes of their values.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Orlix {

struct FeatureLine {
    std::string name;
    std::string value;
    std::size_t number = 0;  // of the line in the text, from 1
};

// The line that every stream begins with.
inline constexpr std::string_view featureStreamHeader =
    "# {05D8C294-F295-4dfb-9D01-096BD04049F4}\n";

void appendFeatureLine(std::string& text, std::string_view name, std::string_view value);

// A comment of one line, whatever it holds.
void appendComment(std::string& text, std::string_view comment);

// The lines that are neither comments nor blank. Throws RuntimeException that tells the number of a
// line without a tab.
[[nodiscard]] std::vector<FeatureLine> parseFeatureStream(std::string_view text);

}  // namespace Orlix
