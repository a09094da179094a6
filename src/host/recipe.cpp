#include "orlixhost/recipe.h"

#include <filesystem>
#include <utility>

#include "host/descriptorname.h"
#include "host/jsontext.h"
#include "host/message.h"
#include "host/recipechecker.h"
#include "host/settingsdocument.h"
#include "host/textfile.h"
#include "orlixhost/jsonsettings.h"
#include "orlixhost/paths.h"

namespace Orlix::Host {

struct Recipe::Document {
    Json root;
};

namespace {

// The same object with the identity right behind the type, where a reader looks for it.
Json withUuid(const Json& node, const std::string& uuid) {
    Json result = Json::object();
    for (const auto& item : node.items()) {
        result[item.key()] = item.value();
        if (item.key() == "type") {
            result["uuid"] = uuid;
        }
    }
    return result;
}

}  // namespace

Recipe::Recipe(std::unique_ptr<Document> document, std::string source, std::string basePath)
    : document_(std::move(document)), source_(std::move(source)), basePath_(std::move(basePath)) {
    const RecipeChecker checker(document_->root, source_);
    checker.checkVersion();
    nodes_ = checker.nodes();
    connections_ = checker.connections(nodes_);
}

Recipe::~Recipe() = default;

Recipe::Recipe(const Recipe& other)
    : document_(std::make_unique<Document>(*other.document_)),
      source_(other.source_),
      basePath_(other.basePath_),
      nodes_(other.nodes_),
      connections_(other.connections_) {}

Recipe::Recipe(Recipe&& other) noexcept = default;

Recipe& Recipe::operator=(Recipe other) noexcept {
    std::swap(document_, other.document_);
    std::swap(source_, other.source_);
    std::swap(basePath_, other.basePath_);
    std::swap(nodes_, other.nodes_);
    std::swap(connections_, other.connections_);
    return *this;
}

// Not by text: behind a link, ".." is another folder.
std::string Recipe::basePathOf(const std::string& file) {
    namespace fs = std::filesystem;
    const fs::path folder = parseDescriptorName(file) ? fs::path(absolutePath("."))
                                                      : fs::path(absolutePath(file)).parent_path();
    return withPlace(file, [&] { return fs::weakly_canonical(folder).string(); });
}

Recipe Recipe::load(const std::string& file) {
    const std::string text = readTextFile(file);
    return parse(text, file, basePathOf(file));
}

Recipe Recipe::parse(const std::string& text, const std::string& source,
                     const std::string& basePath) {
    auto document = std::make_unique<Document>();
    document->root = parseJson(text, source);
    return Recipe(std::move(document), source, basePath);
}

std::string Recipe::placeOf(std::size_t node) const {
    return source_ + ": node " + inQuotes(nodes_.at(node).name);
}

std::shared_ptr<JsonSettings> Recipe::settings(std::size_t node) const {
    auto copy = std::make_shared<SettingsDocument>();
    copy->basePath = basePath_;
    const Json& value = document_->root["nodes"].at(node);
    const auto settings = value.find("settings");
    if (settings != value.end()) {
        copy->root = *settings;
    }
    return std::make_shared<JsonSettings>(std::move(copy));
}

void Recipe::setSettings(std::size_t node, const JsonSettings& settings, const std::string& uuid) {
    Json& value = document_->root["nodes"].at(node);
    if (nodes_.at(node).uuid.empty()) {
        value = withUuid(value, uuid);
        nodes_[node].uuid = uuid;
    }
    value["settings"] = settings.document().root;
}

std::string Recipe::toText() const {
    return printJson(document_->root);
}

void Recipe::save(const std::string& file) const {
    replaceTextFile(file, withPlace(file, [this] { return toText(); }));
}

}  // namespace Orlix::Host
