// From the texts of a description to its immutable form.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "genapi/loadcontext.h"

namespace GenApi::Detail {

// The first text is the description, the others are injected into it in their order.
// RuntimeException with line and column for a text that is not well-formed, is no description, is
// of a newer schema or has an illegal node name, and for an injected node whose name is taken
// without a priority. Anything else that is wrong costs the node or the element and stands in the
// description's report.
[[nodiscard]] std::shared_ptr<const Description> loadDescription(std::vector<std::string> texts,
                                                                 StringPolicy strings);

}  // namespace GenApi::Detail
