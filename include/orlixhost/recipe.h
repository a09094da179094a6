// A recipe as it is stored: the nodes with their settings and the connections between them.
//
// A value type for one thread. Everything that the format does not know survives a load and a save;
// only the settings of a node are written anew. The format: docs/recipe-format.md.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "orlixhost/api.h"

namespace Orlix::Host {

class JsonSettings;

struct RecipeNode {
    std::string name;
    std::string type;
    std::string uuid;  // lower case; empty if it was left out
};

struct RecipeConnection {
    std::string fromNode;
    std::string fromPin;
    std::string toNode;
    std::string toPin;
};

// All failures are RuntimeException with one line that begins with the name of the file:
// `recipe.json:3:14: ...` for JSON that is broken, `recipe.json: nodes[1].name: ...` for a value.
class ORLIXHOST_API Recipe {
public:
    // What relative paths of a recipe with that name are relative to: the folder of the file, or
    // the current one for /dev/stdin, /dev/fd/3 and the like, which say nothing of a folder.
    [[nodiscard]] static std::string basePathOf(const std::string& file);
    // The path is made absolute at once, so that a later change of the current directory has no
    // effect.
    [[nodiscard]] static Recipe load(const std::string& file);
    // An empty base path means a recipe without a folder.
    [[nodiscard]] static Recipe parse(const std::string& text, const std::string& source,
                                      const std::string& basePath);
    ~Recipe();
    Recipe(const Recipe& other);
    Recipe(Recipe&& other) noexcept;
    Recipe& operator=(Recipe other) noexcept;

    // The file's name as it was given, for messages.
    [[nodiscard]] const std::string& source() const noexcept { return source_; }
    // Absolute; empty for a recipe without a folder.
    [[nodiscard]] const std::string& basePath() const noexcept { return basePath_; }
    [[nodiscard]] const std::vector<RecipeNode>& nodes() const noexcept { return nodes_; }
    [[nodiscard]] const std::vector<RecipeConnection>& connections() const noexcept {
        return connections_;
    }
    // "recipe.json: node "Loader"", for messages.
    [[nodiscard]] std::string placeOf(std::size_t node) const;

    // A store with a copy of the node's settings.
    [[nodiscard]] std::shared_ptr<JsonSettings> settings(std::size_t node) const;
    // Replaces the node's settings and notes its type's identity where it is not noted yet.
    void setSettings(std::size_t node, const JsonSettings& settings, const std::string& uuid);

    [[nodiscard]] std::string toText() const;
    // Replaces the file as a whole or leaves it as it is; its permissions stay.
    void save(const std::string& file) const;

private:
    struct Document;
    Recipe(std::unique_ptr<Document> document, std::string source, std::string basePath);

    std::unique_ptr<Document> document_;
    std::string source_;
    std::string basePath_;
    std::vector<RecipeNode> nodes_;
    std::vector<RecipeConnection> connections_;
};

}  // namespace Orlix::Host
