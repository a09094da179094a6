#include "host/settingsdocument.h"

namespace Orlix::Host {
namespace {

using Element = DataProcessing::Core::SettingsPath::Element;

const Json* child(const Json& value, const Element& element) {
    if (const auto* key = std::get_if<GenICam::gcstring>(&element)) {
        const auto found = value.is_object() ? value.find(key->str()) : value.end();
        return found == value.end() ? nullptr : &*found;
    }
    const std::size_t index = std::get<std::size_t>(element);
    return value.is_array() && index < value.size() ? &value[index] : nullptr;
}

}  // namespace

void SettingsDocument::noteRead(const SettingsElements& path) {
    SettingsElements part;
    for (const Element& element : path) {
        part.push_back(element);
        read.insert(part);
    }
    lastRead = path;
}

const Json* SettingsDocument::find(const SettingsElements& path) const {
    const Json* value = &root;
    for (const Element& element : path) {
        value = child(*value, element);
        if (value == nullptr) {
            return nullptr;
        }
    }
    return value;
}

std::string pathText(const SettingsElements& path) {
    DataProcessing::Core::SettingsPath settingsPath;
    for (const Element& element : path) {
        std::visit([&](const auto& part) { settingsPath.addElement(part); }, element);
    }
    return settingsPath.toString().str();
}

}  // namespace Orlix::Host
