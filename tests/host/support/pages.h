// The pages of the documentation, read by tests that hold them to the code.
#pragma once

#include <string>
#include <vector>

namespace Orlix::Host::Testing {

// The page's name is relative to the source folder.
[[nodiscard]] std::string readPage(const std::string& page);

// Every indented block of a page that is a recipe: it begins with a brace and has nodes.
[[nodiscard]] std::vector<std::string> recipesOfPage(const std::string& page);

// The cells of every line of a page that is a row of a table, without blanks around them.
[[nodiscard]] std::vector<std::vector<std::string>> tableRowsOfPage(const std::string& page);

}  // namespace Orlix::Host::Testing
