// From the text of a description to its immutable form.
#pragma once

#include <memory>
#include <string>

#include "genapi/loadcontext.h"

namespace GenApi::Detail {

// RuntimeException with line and column for a text that is not well-formed, is no description, is
// of a newer schema or has an illegal node name. Anything else that is wrong costs the node or the
// element and stands in the description's report.
[[nodiscard]] std::shared_ptr<const Description> loadDescription(std::string text,
                                                                 StringPolicy strings);

}  // namespace GenApi::Detail
