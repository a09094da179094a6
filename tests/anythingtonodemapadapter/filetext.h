// The text of a file of the source tree.
#pragma once

#include <fstream>
#include <sstream>
#include <string>

namespace AnythingToNodeMapAdapter::Test {

// Empty if there is no such file, which no test expects.
inline std::string fileText(const std::string& name) {
    std::ostringstream text;
    text << std::ifstream(name, std::ios::binary).rdbuf();
    return text.str();
}

}  // namespace AnythingToNodeMapAdapter::Test
