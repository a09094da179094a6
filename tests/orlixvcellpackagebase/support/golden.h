// Compares a text with a file of this folder. With the environment variable ORLIX_UPDATE_GOLDEN set
// the file is written anew instead, for a look at the difference.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

namespace Plugin::OrlixVCellPackageBase {

inline void expectGolden(const std::string& text, const std::string& file) {
    const std::string path = std::string(ORLIX_GOLDEN_FOLDER) + "/" + file;
    if (std::getenv("ORLIX_UPDATE_GOLDEN") != nullptr) {
        std::ofstream(path) << text;
    }
    std::ostringstream golden;
    golden << std::ifstream(path).rdbuf();
    EXPECT_EQ(text, golden.str()) << path;
}

}  // namespace Plugin::OrlixVCellPackageBase
