// Reads the modules out of a package's catalog.
#pragma once

#include <string>
#include <vector>

#include "host/jsontext.h"
#include "orlixhost/package.h"

namespace Orlix::Host {

// Throws RuntimeException `PLACE: catalog: Modules[1].Name: ...` for a record that lacks something.
[[nodiscard]] std::vector<Module> readModules(const Json& catalog, const std::string& place);

}  // namespace Orlix::Host
