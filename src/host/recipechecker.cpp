#include "host/recipechecker.h"

#include <algorithm>
#include <cctype>
#include <map>

#include "host/message.h"

namespace Orlix::Host {
namespace {

constexpr int formatVersion = 1;

std::string at(const char* list, std::size_t index) {
    return std::string(list) + "[" + std::to_string(index) + "]";
}

std::string toLower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char character) {
        return static_cast<char>(std::tolower(character));
    });
    return text;
}

bool hasControlCharacter(const std::string& text) {
    return std::any_of(text.begin(), text.end(), [](unsigned char character) {
        return character < 0x20 || character == 0x7f;
    });
}

}  // namespace

bool isUuid(const std::string& text) {
    static const std::string form = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";
    return std::equal(text.begin(), text.end(), form.begin(), form.end(), [](char c, char f) {
        return f == '-' ? c == '-' : std::isxdigit(static_cast<unsigned char>(c)) != 0;
    });
}

void RecipeChecker::failAt(const std::string& place, const std::string& what) const {
    fail(source_ + ": " + (place.empty() ? what : place + ": " + what));
}

void RecipeChecker::checkVersion() const {
    if (!root_.is_object()) {
        failAt("", "a recipe is a JSON object, found " + describeJson(root_));
    }
    const auto version = root_.find("version");
    if (version == root_.end()) {
        failAt("version", "is missing; this program reads version 1");
    }
    if (!version->is_number_integer() || *version != formatVersion) {
        failAt("version", "this program reads version 1, found " + describeJson(*version));
    }
}

const Json& RecipeChecker::list(const char* key) const {
    static const Json none = Json::array();
    const auto found = root_.find(key);
    if (found == root_.end()) {
        return none;
    }
    if (!found->is_array()) {
        failAt(key, "expected an array, found " + describeJson(*found));
    }
    return *found;
}

std::string RecipeChecker::text(const Json& object, const char* key,
                                const std::string& place) const {
    const auto found = object.find(key);
    if (found == object.end()) {
        return {};
    }
    if (!found->is_string()) {
        failAt(place + "." + key, "expected a text, found " + describeJson(*found));
    }
    return found->get<std::string>();
}

std::string RecipeChecker::requiredText(const Json& object, const char* key,
                                        const std::string& place) const {
    if (!object.is_object()) {
        failAt(place, "expected an object, found " + describeJson(object));
    }
    if (!object.contains(key)) {
        failAt(place + "." + key, "is missing");
    }
    std::string value = text(object, key, place);
    if (value.empty()) {
        failAt(place + "." + key, "is empty");
    }
    return value;
}

void RecipeChecker::checkName(const std::string& name, const std::string& place) const {
    // A dot ends the node's name in "Node.Pin"; the name is also part of file names.
    if (name.find_first_of("./") != std::string::npos || hasControlCharacter(name)) {
        failAt(
            place + ".name",
            inQuotes(name) + " has a dot, a slash or a control character, which no name may have");
    }
}

RecipeNode RecipeChecker::node(const Json& value, const std::string& place) const {
    RecipeNode result;
    result.name = requiredText(value, "name", place);
    checkName(result.name, place);
    result.type = requiredText(value, "type", place);
    result.uuid = toLower(text(value, "uuid", place));
    if (value.contains("uuid") && !isUuid(result.uuid)) {
        failAt(place + ".uuid", inQuotes(result.uuid) + " has not the form of a UUID");
    }
    const auto settings = value.find("settings");
    if (settings != value.end() && !settings->is_object()) {
        failAt(place + ".settings", "expected an object, found " + describeJson(*settings));
    }
    return result;
}

std::vector<RecipeNode> RecipeChecker::nodes() const {
    if (!root_.contains("nodes")) {
        failAt("nodes", "is missing");
    }
    const Json& values = list("nodes");
    if (values.empty()) {
        failAt("nodes", "a recipe has at least one node");
    }
    std::vector<RecipeNode> nodes;
    std::map<std::string, std::size_t> indices;
    for (std::size_t i = 0; i < values.size(); ++i) {
        nodes.push_back(node(values[i], at("nodes", i)));
        const std::string& name = nodes.back().name;
        const auto [earlier, isNew] = indices.emplace(name, i);
        if (!isNew) {
            failAt(at("nodes", i) + ".name",
                   inQuotes(name) + " is the name of " + at("nodes", earlier->second) + " too");
        }
    }
    return nodes;
}

void RecipeChecker::splitPin(const Json& connection, const char* key, const std::string& place,
                             const std::set<std::string>& names, std::string& node,
                             std::string& pin) const {
    const std::string value = requiredText(connection, key, place);
    const std::size_t dot = value.find('.');
    if (dot == std::string::npos || dot == 0 || dot + 1 == value.size()) {
        failAt(place + "." + key, "expected \"Node.Pin\", found " + inQuotes(value));
    }
    node = value.substr(0, dot);
    pin = value.substr(dot + 1);
    if (!names.contains(node)) {
        failAt(place + "." + key, "there is no node " + inQuotes(node) + " in the recipe");
    }
}

std::vector<RecipeConnection> RecipeChecker::connections(
    const std::vector<RecipeNode>& nodes) const {
    const Json& values = list("connections");
    std::set<std::string> names;
    for (const RecipeNode& node : nodes) {
        names.insert(node.name);
    }
    std::vector<RecipeConnection> connections(values.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        const std::string place = at("connections", i);
        RecipeConnection& next = connections[i];
        splitPin(values[i], "from", place, names, next.fromNode, next.fromPin);
        splitPin(values[i], "to", place, names, next.toNode, next.toPin);
    }
    return connections;
}

}  // namespace Orlix::Host
