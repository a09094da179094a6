#include "orlixdataprocessingcore/core/settings.h"

#include <string>

namespace Orlix::DataProcessing::Core {

ISettings::~ISettings() = default;

SettingsPath& SettingsPath::addElement(const gcstring& key) {
    elements_.emplace_back(key);
    return *this;
}

SettingsPath& SettingsPath::addElement(std::size_t index) {
    elements_.emplace_back(index);
    return *this;
}

gcstring SettingsPath::toString() const {
    std::string text;
    for (const Element& element : elements_) {
        if (const auto* const index = std::get_if<std::size_t>(&element)) {
            text += "[" + std::to_string(*index) + "]";
            continue;
        }
        if (!text.empty()) {
            text += ".";
        }
        text += std::get<gcstring>(element).str();
    }
    return gcstring(std::move(text));
}

}  // namespace Orlix::DataProcessing::Core
