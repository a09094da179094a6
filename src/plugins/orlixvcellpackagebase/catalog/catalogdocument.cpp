#include "catalogdocument.h"

#include <algorithm>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>
#include <stdexcept>
#include <vector>

#include "htmlsubset.h"

namespace Catalog {
namespace {

using Json = nlohmann::ordered_json;
using Type = Json::value_t;

struct Key {
    const char* name;
    Type type;
};

const std::vector<Key> documentKeys{
    {"Version", Type::string}, {"Vendor", Type::string}, {"Copyright", Type::string},
    {"License", Type::string}, {"Modules", Type::array},
};

const std::vector<Key> moduleKeys{
    {"Name", Type::string},
    {"Uuid", Type::string},
    {"ObjectVersion", Type::string},
    {"MinRequiredSoftwareVersion", Type::string},
    {"MinRequiredFileVersion", Type::string},
    {"InterfaceType", Type::string},
    {"DisplayName", Type::string},
    {"Tags", Type::array},
    {"ShortDescription", Type::string},
    {"DetailedDescription", Type::string},
    {"SupportedUuids", Type::array},
    {"HasDynamicInfo", Type::boolean},
};

[[noreturn]] void fail(const std::string& what) {
    throw std::runtime_error(what);
}

std::string readFile(const std::filesystem::path& path) {
    std::ifstream stream(path, std::ios::binary);
    if (!stream) {
        fail(path.string() + ": can't be opened");
    }
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
}

// Same keys, same order, right types: hosts show records in the order that they find.
void checkKeys(const Json& object, const std::vector<Key>& keys, const std::string& where) {
    auto item = object.begin();
    for (const Key& key : keys) {
        if (item == object.end() || item.key() != key.name) {
            fail(where + ": expected \"" + key.name + "\", found " +
                 (item == object.end() ? "the end" : "\"" + item.key() + "\""));
        }
        if (item->type() != key.type) {
            fail(where + "." + key.name + ": a value of this type is not allowed");
        }
        ++item;
    }
    if (item != object.end()) {
        fail(where + ": unknown key \"" + item.key() + "\"");
    }
}

void checkText(const Json& object, const char* key, const char* pattern, const std::string& where) {
    const auto text = object.at(key).get<std::string>();
    if (!std::regex_match(text, std::regex(pattern))) {
        fail(where + "." + key + ": \"" + text + "\" is malformed");
    }
}

void checkTexts(const Json& object, const char* key, const char* pattern,
                const std::string& where) {
    if (object.at(key).empty()) {
        fail(where + "." + key + ": must not be empty");
    }
    for (const Json& element : object.at(key)) {
        if (!element.is_string() ||
            !std::regex_match(element.get<std::string>(), std::regex(pattern))) {
            fail(where + "." + key + ": " + element.dump() + " is malformed");
        }
    }
}

void checkModule(const Json& module, const std::string& where) {
    constexpr auto version = R"(\d+\.\d+\.\d+)";
    constexpr auto uuid = "[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}";
    constexpr auto line = "[^\r\n]+";
    checkKeys(module, moduleKeys, where);
    // The name is a part of the names of exported functions.
    checkText(module, "Name", "[A-Za-z][A-Za-z0-9]*", where);
    checkText(module, "Uuid", uuid, where);
    checkText(module, "ObjectVersion", version, where);
    checkText(module, "MinRequiredSoftwareVersion", version, where);
    checkText(module, "MinRequiredFileVersion", version, where);
    checkText(module, "InterfaceType", "Native", where);
    checkText(module, "DisplayName", line, where);
    checkTexts(module, "Tags", "[A-Za-z]+=[A-Za-z]+", where);
    checkText(module, "ShortDescription", line, where);
    checkTexts(module, "SupportedUuids", uuid, where);
    const Json& supported = module.at("SupportedUuids");
    if (std::find(supported.begin(), supported.end(), module.at("Uuid")) == supported.end()) {
        fail(where + ".SupportedUuids: lacks the module's own Uuid");
    }
}

void checkUnique(const Json& modules, const char* key) {
    std::set<std::string> seen;
    for (const Json& module : modules) {
        if (!seen.insert(module.at(key).get<std::string>()).second) {
            fail(std::string("Modules: two records have the ") + key + " " + module.at(key).dump());
        }
    }
}

// The source names the HTML file; the document has its text.
void insertDescription(Json& module, const std::filesystem::path& folder) {
    const auto file = folder / module.at("DetailedDescription").get<std::string>();
    const std::string html = readFile(file);
    try {
        checkHtml(html);
        checkHelpLink(html, "orlixVCell" + module.at("Name").get<std::string>());
    } catch (const std::runtime_error& error) {
        fail(file.string() + ": " + error.what());
    }
    module["DetailedDescription"] = html;
}

Json parse(const std::filesystem::path& path) {
    try {
        return Json::parse(readFile(path));
    } catch (const Json::parse_error& error) {
        fail(path.string() + ": " + error.what());
    }
}

void checkDocument(const Json& document) {
    checkKeys(document, documentKeys, "catalog");
    checkText(document, "Version", R"(\d+\.\d+\.\d+)", "catalog");
    const Json& modules = document.at("Modules");
    for (std::size_t index = 0; index < modules.size(); ++index) {
        checkModule(modules[index], "catalog.Modules[" + std::to_string(index) + "]");
    }
    checkUnique(modules, "Name");
    checkUnique(modules, "Uuid");
}

std::string toLiteral(const std::string& line) {
    std::string literal = "\"";
    for (const char character : line) {
        if (character == '"' || character == '\\') {
            literal += '\\';
        }
        literal += character;
    }
    return literal;
}

}  // namespace

Json buildDocument(const Sources& sources) {
    Json document = parse(sources.catalog);
    try {
        checkDocument(document);
    } catch (const std::runtime_error& error) {
        fail(sources.catalog.string() + ": " + error.what());
    }
    document["License"] = readFile(sources.license);
    for (Json& module : document.at("Modules")) {
        insertDescription(module, sources.catalog.parent_path());
    }
    return document;
}

std::string toSourceFile(const std::string& document) {
    std::string source =
        "// Generated from src/plugins/orlixvcellpackagebase/catalog; do not edit.\n"
        "#include \"catalog/catalogtext.h\"\n\n"
        "namespace Plugin::OrlixVCellPackageBase {\n\n"
        "const char catalogText[] =\n";
    std::size_t begin = 0;
    while (begin < document.size()) {
        const auto end = std::min(document.find('\n', begin), document.size());
        source += "    " + toLiteral(document.substr(begin, end - begin));
        source += end < document.size() ? "\\n\"\n" : "\"\n";
        begin = end + 1;
    }
    return source +
           "    \"\";\n\n"
           "const std::size_t catalogSize = sizeof(catalogText) - 1;\n\n"
           "}  // namespace Plugin::OrlixVCellPackageBase\n";
}

}  // namespace Catalog
