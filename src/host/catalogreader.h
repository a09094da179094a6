// Reads the modules out of a package's catalog.
#pragma once

#include <string>
#include <vector>

#include "host/jsontext.h"
#include "orlixhost/package.h"

namespace Orlix::Host {

// Throws RuntimeException `PLACE: catalog: Modules[1].Name: ...` for a record that lacks something.
[[nodiscard]] std::vector<Module> readModules(const Json& catalog, const std::string& place);

// A text of the catalog itself; empty if it is missing. Throws as above if it is no text.
[[nodiscard]] std::string readCatalogText(const Json& catalog, const char* key,
                                          const std::string& place);

}  // namespace Orlix::Host
