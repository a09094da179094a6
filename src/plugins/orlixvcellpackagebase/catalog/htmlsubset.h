// The HTML subset that a host's description pane can show, and its check.
//
// Build-time code: part of the catalog compiler and of its test, never of the package.
#pragma once

#include <string_view>

namespace Catalog {

// Throws std::runtime_error "line N: ..." at the first thing that the pane could not show: another
// tag or attribute, a tag that is not closed or closes another one, a stray "<", ">" or "&".
void checkHtml(std::string_view text);

// Throws std::runtime_error unless the fragment ends in the help link of that topic.
void checkHelpLink(std::string_view text, std::string_view topic);

}  // namespace Catalog
