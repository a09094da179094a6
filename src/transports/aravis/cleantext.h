// What cameras tell of themselves, as text that people and JSON can have.
#pragma once

#include <string>
#include <string_view>

namespace Orlix::Aravis {

// UTF-8 without control characters. Bytes that are none are taken for Latin-1, which is what makers
// use who know no UTF-8.
[[nodiscard]] std::string CleanText(std::string_view raw);

}  // namespace Orlix::Aravis
