// The selectors that decide what a feature shows.
#pragma once

#include <string>
#include <vector>

#include "genapi/inode.h"

namespace Orlix {

// All that select the feature, also through other selectors, the outermost first.
[[nodiscard]] std::vector<GenApi::INode*> findSelectors(GenApi::INode& node);

[[nodiscard]] bool isSelector(GenApi::INode& node);

// The values that the selector can be given now, as texts. Empty for one of a kind that has no list
// of values, and for a range that is too long to be meant for selecting.
[[nodiscard]] std::vector<std::string> listSelectorValues(GenApi::INode& selector);

}  // namespace Orlix
