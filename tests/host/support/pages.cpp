#include "host/support/pages.h"

#include <sstream>

#include "host/support/recipes.h"

namespace Orlix::Host::Testing {
namespace {

std::string trimmed(const std::string& text) {
    const std::size_t begin = text.find_first_not_of(' ');
    return begin == std::string::npos ? std::string()
                                      : text.substr(begin, text.find_last_not_of(' ') - begin + 1);
}

}  // namespace

std::string readPage(const std::string& page) {
    return readFile(std::string(ORLIX_SOURCE_FOLDER) + "/" + page);
}

std::vector<std::string> recipesOfPage(const std::string& page) {
    std::vector<std::string> recipes;
    std::string block;
    for (const std::string& line : linesOf(readPage(page))) {
        if (line.compare(0, 4, "    ") == 0) {
            block += line.substr(4) + "\n";
            continue;
        }
        if (block.compare(0, 1, "{") == 0 && block.find("\"nodes\"") != std::string::npos) {
            recipes.push_back(block);
        }
        block.clear();
    }
    return recipes;
}

std::vector<std::vector<std::string>> tableRowsOfPage(const std::string& page) {
    std::vector<std::vector<std::string>> rows;
    for (const std::string& line : linesOf(readPage(page))) {
        if (line.compare(0, 1, "|") != 0) {
            continue;
        }
        std::vector<std::string>& cells = rows.emplace_back();
        std::istringstream stream(line.substr(1));
        for (std::string cell; std::getline(stream, cell, '|');) {
            cells.push_back(trimmed(cell));
        }
    }
    return rows;
}

}  // namespace Orlix::Host::Testing
