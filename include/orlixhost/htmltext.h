// The user documentation of a node as plain text.
#pragma once

#include <string>

#include "orlixhost/api.h"

namespace Orlix::Host {

// From the HTML subset of a package's catalog: headings, paragraphs and lists become lines, other
// tags are left out, and so are links to topics of a help system.
[[nodiscard]] ORLIXHOST_API std::string plainText(const std::string& html);

}  // namespace Orlix::Host
