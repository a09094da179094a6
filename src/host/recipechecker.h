// Checks the JSON of a recipe against its format and takes out what the host works with.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "host/jsontext.h"
#include "orlixhost/recipe.h"

namespace Orlix::Host {

// Throws RuntimeException `SOURCE: nodes[1].name: ...`. Holds references to its arguments.
class RecipeChecker {
public:
    RecipeChecker(const Json& root, const std::string& source) : root_(root), source_(source) {}

    void checkVersion() const;
    [[nodiscard]] std::vector<RecipeNode> nodes() const;
    [[nodiscard]] std::vector<RecipeConnection> connections(
        const std::vector<RecipeNode>& nodes) const;

private:
    [[noreturn]] void failAt(const std::string& place, const std::string& what) const;
    [[nodiscard]] const Json& list(const char* key) const;
    // An empty text if the key is absent.
    [[nodiscard]] std::string text(const Json& object, const char* key,
                                   const std::string& place) const;
    [[nodiscard]] std::string requiredText(const Json& object, const char* key,
                                           const std::string& place) const;
    [[nodiscard]] RecipeNode node(const Json& value, const std::string& place) const;
    void checkName(const std::string& name, const std::string& place) const;
    // Sets node and pin from "Node.Pin".
    void splitPin(const Json& connection, const char* key, const std::string& place,
                  const std::set<std::string>& names, std::string& node, std::string& pin) const;

    const Json& root_;
    const std::string& source_;
};

// Whether a text has the form 8-4-4-4-12 of hexadecimal digits.
[[nodiscard]] bool isUuid(const std::string& text);

}  // namespace Orlix::Host
