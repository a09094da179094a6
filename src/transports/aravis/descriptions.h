// Description files of cameras, one text for all cameras of a model. Any thread may call.
#pragma once

#include <memory>
#include <string>

namespace Orlix::Aravis {

// The same object for the same text, as long as somebody has it.
[[nodiscard]] std::shared_ptr<const std::string> ShareDescription(std::string text);

// Whether its schema is 1.0.
[[nodiscard]] bool IsBeforeSchema11(const std::string& text);

}  // namespace Orlix::Aravis
