#include "orlixhost/jsonsettings.h"

#include <cmath>
#include <cstdint>
#include <limits>

#include "host/message.h"
#include "host/settingsdocument.h"

namespace Orlix::Host {
namespace {

using Element = JsonSettings::Path::Element;

[[noreturn]] void failAt(const SettingsElements& path, const std::string& what) {
    fail("setting " + inQuotes(pathText(path)) + ": " + what);
}

[[noreturn]] void failKind(const SettingsElements& path, const char* expected, const Json& found) {
    failAt(path, std::string("expected ") + expected + ", found " + describeJson(found));
}

// The value at a path that is about to be read.
const Json& read(SettingsDocument& document, const SettingsElements& path) {
    document.noteRead(path);
    const Json* value = document.find(path);
    if (value == nullptr) {
        failAt(path, "there is no such setting");
    }
    return *value;
}

// The place of one element in a value that is about to be written, made where it is missing.
Json& step(Json& value, const SettingsElements& path, const Element& element) {
    if (const auto* key = std::get_if<gcstring>(&element)) {
        if (value.is_null()) {
            value = Json::object();
        }
        if (!value.is_object()) {
            failAt(path, "expected a section on the way, found " + describeJson(value));
        }
        return value[key->str()];
    }
    const std::size_t index = std::get<std::size_t>(element);
    if (!value.is_array()) {
        failAt(path, "expected an array on the way, found " + describeJson(value));
    }
    if (index >= value.size()) {
        failAt(path, "the array has " + std::to_string(value.size()) + " elements");
    }
    return value[index];
}

Json& place(SettingsDocument& document, const SettingsElements& path) {
    if (path.empty()) {
        fail("the settings as a whole can not be replaced by a value");
    }
    Json* value = &document.root;
    for (const Element& element : path) {
        value = &step(*value, path, element);
    }
    return *value;
}

// Gathers what neither the reader nor the other document knows, from the outside in.
class UnknownKeys {
public:
    UnknownKeys(const SettingsDocument& loaded, const SettingsDocument& saved)
        : loaded_(loaded), saved_(saved) {}

    std::vector<std::string> find() {
        visit(loaded_.root, {});
        return std::move(unknown_);
    }

private:
    void visit(const Json& value, const SettingsElements& path) {
        if (value.is_object()) {
            for (const auto& item : value.items()) {
                visitChild(item.value(), path, gcstring(item.key()));
            }
        } else if (value.is_array()) {
            for (std::size_t i = 0; i < value.size(); ++i) {
                visitChild(value[i], path, i);
            }
        }
    }

    void visitChild(const Json& value, const SettingsElements& parent, const Element& element) {
        SettingsElements path = parent;
        path.push_back(element);
        if (isKnown(value, parent, path)) {
            visit(value, path);
        } else {
            unknown_.push_back(pathText(path));
        }
    }

    // Whoever asks for the keys of a section reads all of them, also those that mean nothing to it:
    // there only what it saves again is known, and an empty text, which may be saved as nothing.
    [[nodiscard]] bool isKnown(const Json& value, const SettingsElements& parent,
                               const SettingsElements& path) const {
        if (saved_.find(path) != nullptr) {
            return true;
        }
        const bool isListed = loaded_.listed.count(parent) > 0;
        if (isListed && loaded_.find(parent)->is_object()) {
            return value.is_string() && value.get_ref<const std::string&>().empty();
        }
        return isListed || loaded_.read.count(path) > 0;
    }

    const SettingsDocument& loaded_;
    const SettingsDocument& saved_;
    std::vector<std::string> unknown_;
};

}  // namespace

JsonSettings::JsonSettings(const std::string& basePath)
    : document_(std::make_shared<SettingsDocument>()) {
    document_->basePath = basePath;
}

JsonSettings::JsonSettings(std::shared_ptr<SettingsDocument> document)
    : document_(std::move(document)) {}

JsonSettings::JsonSettings(std::shared_ptr<SettingsDocument> document, SettingsElements prefix)
    : document_(std::move(document)), prefix_(std::move(prefix)) {}

JsonSettings::~JsonSettings() = default;

std::shared_ptr<JsonSettings> JsonSettings::fromText(const std::string& json,
                                                     const std::string& basePath) {
    auto settings = std::make_shared<JsonSettings>(basePath);
    Json root = parseJson(json, "settings");
    if (!root.is_object()) {
        fail("settings: expected a section, found " + describeJson(root));
    }
    settings->document_->root = std::move(root);
    return settings;
}

std::string JsonSettings::toText() const {
    return printJson(document_->root);
}

std::string JsonSettings::lastRead() const {
    return document_->lastRead.empty() ? std::string() : pathText(document_->lastRead);
}

std::vector<std::string> JsonSettings::unknownKeys(const JsonSettings& saved) const {
    return UnknownKeys(*document_, *saved.document_).find();
}

SettingsElements JsonSettings::absolute(const Path& path) const {
    SettingsElements all = prefix_;
    all.insert(all.end(), path.getElements().begin(), path.getElements().end());
    return all;
}

bool JsonSettings::hasBasePath() {
    return !document_->basePath.empty();
}

gcstring JsonSettings::getBasePath() {
    return gcstring(document_->basePath);
}

bool JsonSettings::contains(const Path& path) {
    const SettingsElements all = absolute(path);
    document_->noteRead(all);
    return document_->find(all) != nullptr;
}

std::vector<gcstring> JsonSettings::getKeys(const Path& path) {
    const SettingsElements all = absolute(path);
    const Json& value = read(*document_, all);
    if (!value.is_object()) {
        failKind(all, "a section", value);
    }
    document_->listed.insert(all);
    std::vector<gcstring> keys;
    for (const auto& item : value.items()) {
        keys.emplace_back(item.key());
    }
    return keys;
}

std::size_t JsonSettings::getArraySize(const Path& path) {
    const SettingsElements all = absolute(path);
    const Json& value = read(*document_, all);
    if (!value.is_array()) {
        failKind(all, "an array", value);
    }
    document_->listed.insert(all);
    return value.size();
}

bool JsonSettings::getBool(const Path& path) {
    const SettingsElements all = absolute(path);
    const Json& value = read(*document_, all);
    if (!value.is_boolean()) {
        failKind(all, "true or false", value);
    }
    return value.get<bool>();
}

gcstring JsonSettings::getString(const Path& path) {
    const SettingsElements all = absolute(path);
    const Json& value = read(*document_, all);
    if (!value.is_string()) {
        failKind(all, "a text", value);
    }
    return gcstring(value.get<std::string>());
}

std::int64_t JsonSettings::getInteger(const Path& path) {
    const SettingsElements all = absolute(path);
    const Json& value = read(*document_, all);
    if (!value.is_number_integer()) {
        failKind(all, "an integer", value);
    }
    constexpr std::uint64_t largest = std::numeric_limits<std::int64_t>::max();
    if (value.is_number_unsigned() && value.get<std::uint64_t>() > largest) {
        failAt(all, describeJson(value) + " does not fit a signed 64-bit integer");
    }
    return value.get<std::int64_t>();
}

std::uint64_t JsonSettings::getUnsigned(const Path& path) {
    const SettingsElements all = absolute(path);
    const Json& value = read(*document_, all);
    if (!value.is_number_integer()) {
        failKind(all, "an integer", value);
    }
    if (!value.is_number_unsigned() && value.get<std::int64_t>() < 0) {
        failAt(all, describeJson(value) + " does not fit an unsigned 64-bit integer");
    }
    return value.get<std::uint64_t>();
}

double JsonSettings::getFloat(const Path& path) {
    const SettingsElements all = absolute(path);
    const Json& value = read(*document_, all);
    if (!value.is_number()) {
        failKind(all, "a number", value);
    }
    return value.get<double>();
}

void JsonSettings::setBool(const Path& path, bool value) {
    place(*document_, absolute(path)) = value;
}

void JsonSettings::setString(const Path& path, const gcstring& value) {
    place(*document_, absolute(path)) = value.str();
}

void JsonSettings::setInteger(const Path& path, std::int64_t value) {
    place(*document_, absolute(path)) = value;
}

void JsonSettings::setUnsigned(const Path& path, std::uint64_t value) {
    place(*document_, absolute(path)) = value;
}

void JsonSettings::setFloat(const Path& path, double value) {
    const SettingsElements all = absolute(path);
    if (!std::isfinite(value)) {
        failAt(all, "a number that is not finite can not be stored");
    }
    place(*document_, all) = value;
}

std::shared_ptr<DataProcessing::Core::ISettings> JsonSettings::createSection(const Path& path) {
    SettingsElements all = absolute(path);
    place(*document_, all) = Json::object();
    return std::shared_ptr<JsonSettings>(new JsonSettings(document_, std::move(all)));
}

void JsonSettings::setArraySize(const Path& path, std::size_t size) {
    Json& value = place(*document_, absolute(path));
    if (!value.is_array()) {
        value = Json::array();
    }
    auto& elements = value.get_ref<Json::array_t&>();
    elements.resize(size, Json::object());
}

}  // namespace Orlix::Host
