// The description out of a zip container, as cameras deliver it: one XML file, stored or deflated.
// Containers come from devices, so nothing in one is believed before it is checked. Pure function.
#pragma once

#include <string>
#include <string_view>

namespace GenApi::Detail {

// By the first bytes.
[[nodiscard]] bool isZip(std::string_view bytes);

// The text of the only file, or of the first that is named *.xml. RuntimeException where the
// container is broken, encrypted, without such a file, packed in another way, or where the text
// would be larger than any description may be (XmlText::maximumSize).
[[nodiscard]] std::string unzipDescription(std::string_view bytes);

}  // namespace GenApi::Detail
