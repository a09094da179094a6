// The value of a feature as the text of a stream: exact, and the same in every locale.
#pragma once

#include <string>

#include "genapi/inode.h"

namespace Orlix {

// Whether the feature has a value that can be read and written now.
[[nodiscard]] bool isPersistable(GenApi::INode& node);

[[nodiscard]] std::string readFeature(GenApi::INode& node);
// Whether what was read can be written: a float that is infinite, or no number, can't.
[[nodiscard]] bool canBeWritten(GenApi::INode& node, const std::string& value);
// Checks the range. Throws InvalidArgumentException for a text that is no value of the feature.
void writeFeature(GenApi::INode& node, const std::string& value);
// The one spelling of the value that the text stands for, to compare values of one feature with
// each other; of a text that is no value, the text.
[[nodiscard]] std::string normalize(GenApi::INode& node, const std::string& value);
// Whether the feature reads what the text says; floats may differ by what a device rounds off.
[[nodiscard]] bool readsAs(GenApi::INode& node, const std::string& value);

}  // namespace Orlix
