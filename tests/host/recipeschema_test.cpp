// The JSON Schema of recipes: it is sound, and it judges recipes as the host's own check does, as
// far as a schema can.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <regex>

#include "gcbase/gcexception.h"
#include "host/support/pages.h"
#include "host/support/program.h"
#include "host/support/temporaryfolder.h"
#include "orlixhost/recipe.h"

namespace Orlix::Host {
namespace {

using Json = nlohmann::json;

// The keywords that the recipe's schema uses; any other one fails the test.
class SchemaChecker {
public:
    explicit SchemaChecker(const Json& root) : root_(root) {}

    bool accepts(const Json& value) const { return check(root_, value); }

private:
    bool check(const Json& schema, const Json& value) const {
        for (const auto& [keyword, rule] : schema.items()) {
            if (!checkKeyword(keyword, rule, value)) {
                return false;
            }
        }
        return true;
    }

    bool checkKeyword(const std::string& keyword, const Json& rule, const Json& value) const {
        if (keyword == "$ref") {
            return check(root_.at(Json::json_pointer(rule.get<std::string>().substr(1))), value);
        }
        if (keyword == "const") {
            return value == rule;
        }
        if (keyword == "type") {
            return value.type_name() == rule;
        }
        if (keyword == "required") {
            return std::all_of(rule.begin(), rule.end(), [&](const Json& key) {
                return value.contains(key.get<std::string>());
            });
        }
        if (keyword == "properties") {
            return checkProperties(rule, value);
        }
        if (keyword == "items") {
            return std::all_of(value.begin(), value.end(),
                               [&](const Json& item) { return check(rule, item); });
        }
        if (keyword == "minItems" || keyword == "minLength") {
            return lengthOf(value) >= rule.get<std::size_t>();
        }
        if (keyword == "pattern") {
            return !value.is_string() ||
                   std::regex_search(value.get<std::string>(), std::regex(rule.get<std::string>()));
        }
        const bool isRemark = keyword == "$schema" || keyword == "$defs" || keyword == "title" ||
                              keyword == "description";
        EXPECT_TRUE(isRemark) << "the checker does not know the keyword " << keyword;
        return true;
    }

    bool checkProperties(const Json& rule, const Json& value) const {
        for (const auto& [key, schema] : rule.items()) {
            if (value.contains(key) && !check(schema, value.at(key))) {
                return false;
            }
        }
        return true;
    }

    static std::size_t lengthOf(const Json& value) {
        return value.is_string() ? value.get<std::string>().size() : value.size();
    }

    const Json& root_;
};

class RecipeSchema : public testing::Test {
protected:
    RecipeSchema()
        : schema_(Json::parse(
              Testing::readFile(std::string(ORLIX_SOURCE_FOLDER) + "/docs/recipe.schema.json"))) {}

    [[nodiscard]] bool accepts(const std::string& recipe) const {
        return SchemaChecker(schema_).accepts(Json::parse(recipe));
    }

    static bool hostAccepts(const std::string& recipe) {
        try {
            static_cast<void>(Recipe::parse(recipe, "r.json", {}));
            return true;
        } catch (const GenICam::RuntimeException&) {
            return false;
        }
    }

    Json schema_;
};

class RecipeSchemaPage : public RecipeSchema, public testing::WithParamInterface<const char*> {};

TEST_P(RecipeSchemaPage, HasRecipesThatSchemaAndHostAccept) {
    const auto recipes = Testing::recipesOfPage(GetParam());
    ASSERT_FALSE(recipes.empty());
    for (const std::string& recipe : recipes) {
        EXPECT_TRUE(accepts(recipe)) << recipe;
        EXPECT_TRUE(hostAccepts(recipe)) << recipe;
    }
}

INSTANTIATE_TEST_SUITE_P(Pages, RecipeSchemaPage,
                         testing::Values("README.md", "docs/recipe-format.md"));

TEST_F(RecipeSchema, AcceptsTheRecipeOfTheDemoAndWhatIsSavedOfIt) {
    const Testing::TemporaryFolder folder;
    const std::string demo = folder / "demo";
    const std::string program = std::string(ORLIX_PROGRAM_FOLDER) + "/demoimages";
    ASSERT_EQ(Testing::Program(program, {demo}).wait().exitCode, 0);
    EXPECT_TRUE(accepts(Testing::readFile(demo + "/recipe.json")));
    const std::string saved = folder / "saved.json";
    ASSERT_EQ(Testing::runOrlix({"save", demo + "/recipe.json", "-o", saved}).exitCode, 0);
    EXPECT_TRUE(accepts(Testing::readFile(saved)));
}

TEST_F(RecipeSchema, JudgesAsTheHostDoes) {
    const std::vector<std::pair<std::string, bool>> recipes = {
        {R"({"version": 1, "nodes": [{"name": "A", "type": "T"}], "other": 1})", true},
        {R"({"version": 1, "nodes": [{"name": "A", "type": "T", "settings": {"x": []}}]})", true},
        {R"([])", false},
        {R"({"nodes": [{"name": "A", "type": "T"}]})", false},
        {R"({"version": 2, "nodes": [{"name": "A", "type": "T"}]})", false},
        {R"({"version": "1", "nodes": [{"name": "A", "type": "T"}]})", false},
        {R"({"version": 1})", false},
        {R"({"version": 1, "nodes": []})", false},
        {R"({"version": 1, "nodes": [5]})", false},
        {R"({"version": 1, "nodes": [{"type": "T"}]})", false},
        {R"({"version": 1, "nodes": [{"name": "", "type": "T"}]})", false},
        {R"({"version": 1, "nodes": [{"name": "a.b", "type": "T"}]})", false},
        {R"({"version": 1, "nodes": [{"name": "a/b", "type": "T"}]})", false},
        {R"({"version": 1, "nodes": [{"name": "A"}]})", false},
        {R"({"version": 1, "nodes": [{"name": "A", "type": "T", "uuid": "x"}]})", false},
        {R"({"version": 1, "nodes": [{"name": "A", "type": "T", "settings": 1}]})", false},
        {R"({"version": 1, "nodes": [{"name": "A", "type": "T"}], "connections": {}})", false},
        {R"({"version": 1, "nodes": [{"name": "A", "type": "T"}], "connections": [{}]})", false},
        {R"({"version": 1, "nodes": [{"name": "A", "type": "T"}],
             "connections": [{"from": "A", "to": "A.I"}]})",
         false},
    };
    for (const auto& [recipe, isGood] : recipes) {
        EXPECT_EQ(accepts(recipe), isGood) << recipe;
        EXPECT_EQ(hostAccepts(recipe), isGood) << recipe;
    }
}

}  // namespace
}  // namespace Orlix::Host
