// JSON text of the host: ordered, with the place of an error in its message.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace Orlix::Host {

using Json = nlohmann::ordered_json;

// From UTF-8, with or without a byte order mark. Throws RuntimeException `SOURCE:LINE:COLUMN: what
// is wrong`. A key that occurs twice in one object is refused, since half of the file would be
// ignored in silence; so are more than 100 levels of nesting and numbers beyond those of a double.
[[nodiscard]] Json parseJson(const std::string& text, const std::string& source);

// For messages: "the number 5", "the text "abc"", "an array", "a section".
[[nodiscard]] std::string describeJson(const Json& value);

// Indented by two blanks and closed with a line feed. Throws RuntimeException for text that is not
// UTF-8, which JSON has no way to hold.
[[nodiscard]] std::string printJson(const Json& value);

// One line; bytes that are not UTF-8 become the replacement character.
[[nodiscard]] std::string printJsonLine(const Json& value);

}  // namespace Orlix::Host
