#include "host/catalogreader.h"

#include "host/message.h"

namespace Orlix::Host {
namespace {

// One record, with its place for messages.
class Record {
public:
    Record(const Json& value, std::string place) : value_(value), place_(std::move(place)) {
        if (!value_.is_object()) {
            fail(place_ + ": expected an object, found " + describeJson(value_));
        }
    }

    [[nodiscard]] std::string text(const char* key) const {
        const Json& value = at(key);
        if (!value.is_string()) {
            failKind(key, "a text", value);
        }
        return value.get<std::string>();
    }

    [[nodiscard]] std::vector<std::string> texts(const char* key) const {
        const Json& value = at(key);
        if (!value.is_array()) {
            failKind(key, "an array of texts", value);
        }
        std::vector<std::string> result;
        for (const Json& element : value) {
            if (!element.is_string()) {
                failKind(key, "an array of texts", element);
            }
            result.push_back(element.get<std::string>());
        }
        return result;
    }

    [[nodiscard]] bool boolean(const char* key) const {
        const Json& value = at(key);
        if (!value.is_boolean()) {
            failKind(key, "true or false", value);
        }
        return value.get<bool>();
    }

private:
    [[nodiscard]] const Json& at(const char* key) const {
        const auto found = value_.find(key);
        if (found == value_.end()) {
            fail(place_ + "." + key + ": is missing");
        }
        return *found;
    }

    [[noreturn]] void failKind(const char* key, const char* expected, const Json& found) const {
        fail(place_ + "." + key + ": expected " + expected + ", found " + describeJson(found));
    }

    const Json& value_;
    std::string place_;
};

Module readModule(const Record& record) {
    Module module;
    module.name = record.text("Name");
    module.uuid = record.text("Uuid");
    module.objectVersion = record.text("ObjectVersion");
    module.minRequiredSoftwareVersion = record.text("MinRequiredSoftwareVersion");
    module.minRequiredFileVersion = record.text("MinRequiredFileVersion");
    module.interfaceType = record.text("InterfaceType");
    module.displayName = record.text("DisplayName");
    module.tags = record.texts("Tags");
    module.shortDescription = record.text("ShortDescription");
    module.detailedDescription = record.text("DetailedDescription");
    module.supportedUuids = record.texts("SupportedUuids");
    module.hasDynamicInfo = record.boolean("HasDynamicInfo");
    return module;
}

}  // namespace

std::vector<Module> readModules(const Json& catalog, const std::string& place) {
    const std::string here = place + ": catalog";
    if (!catalog.is_object() || !catalog.contains("Modules") || !catalog["Modules"].is_array()) {
        fail(here + ": Modules: expected an array");
    }
    std::vector<Module> modules;
    for (const Json& value : catalog["Modules"]) {
        const std::string index = "[" + std::to_string(modules.size()) + "]";
        modules.push_back(readModule(Record(value, (here + ": Modules").append(index))));
    }
    return modules;
}

std::string readCatalogText(const Json& catalog, const char* key, const std::string& place) {
    const auto found = catalog.find(key);
    if (found == catalog.end()) {
        return {};
    }
    if (!found->is_string()) {
        fail(place + ": catalog: " + key + ": expected a text, found " + describeJson(*found));
    }
    return found->get<std::string>();
}

}  // namespace Orlix::Host
