// The package's catalog as a JSON document: read from the readable source in this folder, checked,
// and completed with the long texts.
//
// Build-time code: part of the catalog compiler and of its test, never of the package.
#pragma once

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>

namespace Catalog {

struct Sources {
    std::filesystem::path catalog;  // the JSON file; HTML files lie beside it
    std::filesystem::path license;  // the text that becomes "License"
};

// Keys stand in the order of the source. Throws std::runtime_error that names the file and the
// place of the first mistake: keys missing, unknown or out of order, a malformed version or uuid,
// HTML that a host could not show.
[[nodiscard]] nlohmann::ordered_json buildDocument(const Sources& sources);

// A C++ source file that defines catalogText and catalogSize, the size without the NUL.
[[nodiscard]] std::string toSourceFile(const std::string& document);

}  // namespace Catalog
