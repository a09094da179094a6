// Steps: a small language for people who write or check descriptions. One step a line, its fields
// parted by tabs, as "set<TAB>Width<TAB>640"; docs/genapi.md lists the verbs.
#pragma once

#include <iosfwd>
#include <string>

#include "orlixhost/api.h"

namespace Orlix::Host {

class DescriptionFile;

// Runs the steps one after another and writes VERB<TAB>NODE<TAB>RESULT for each, at once. A step
// that fails has "!" and the message as its result, and the next one runs. Empty lines and lines
// that begin with '#' are passed over. One thread at a time for each description.
ORLIXHOST_API void runSteps(std::ostream& out, DescriptionFile& description,
                            const std::string& steps);

// The text of a file of steps. Throws RuntimeException that names the file.
[[nodiscard]] ORLIXHOST_API std::string readStepFile(const std::string& file);

}  // namespace Orlix::Host
