// What the pages of the documentation say, done as they say it.
#include "host/support/pages.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <set>

#include "host/support/recipes.h"

namespace Orlix::Host::Testing {
namespace {

using Json = nlohmann::json;

constexpr const char* formatPage = "docs/recipe-format.md";

TEST(Readme, ItsRecipeReplaysPicturesForAsLongAsOneLikes) {
    const TemporaryFolder folder;
    writePictures(folder, "images", 3);
    const std::string recipe = folder.write("recipe.json", recipesOfPage("README.md").at(0));
    const ProgramResult result =
        runOrlix({"run", "recipe.json", "--set", "Loader.FramesPerSecond=500", "--frames", "7",
                  "--out", "results"},
                 folder.path());
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(folder.list("results").size(), 7U + 1U);
}

std::string withoutMarks(const std::string& cell) {
    const bool isMarked = cell.size() > 1 && cell.front() == '`' && cell.back() == '`';
    return isMarked ? cell.substr(1, cell.size() - 2) : cell;
}

// All settings that nodes have which nobody has set, as they save them.
Json initialSettings() {
    const TemporaryFolder folder;
    const std::string recipe = folder.write("r.json", R"({"version": 1, "nodes": [
        {"name": "Loader", "type": "ImageLoading"},
        {"name": "Converter", "type": "ImageFormatConverter"}],
        "connections": [{"from": "Loader.Image", "to": "Converter.Image"}]})");
    EXPECT_EQ(runOrlix({"save", recipe, "-o", folder / "saved.json"}).exitCode, 0);
    Json settings = Json::object();
    const Json saved = Json::parse(readFile(folder / "saved.json"));
    for (const Json& node : saved.at("nodes")) {
        settings.update(node.at("settings"));
    }
    return settings;
}

// The rows of the table of settings that belong to the two nodes.
Json toldInitialSettings() {
    Json told = Json::object();
    bool isTable = false;
    std::string type;
    for (const auto& cells : tableRowsOfPage(formatPage)) {
        isTable = cells.size() == 4 && (isTable || cells[3] == "Initial value");
        if (isTable && !cells[0].empty()) {
            type = withoutMarks(cells[0]);
        }
        // A path has no initial value that is stored.
        if (isTable && type.compare(0, 5, "Image") == 0 && cells[1] != "`sourcePath`") {
            told[withoutMarks(cells[1])] = Json::parse(withoutMarks(cells[3]));
        }
    }
    return told;
}

TEST(RecipeFormat, InitialValuesAreThoseOfTheNodes) {
    EXPECT_EQ(toldInitialSettings(), initialSettings());
}

TEST(RecipeFormat, CodesAreThoseOfTheConverter) {
    std::size_t count = 0;
    for (const auto& cells : tableRowsOfPage(formatPage)) {
        for (std::size_t i = 0; cells.size() == 6 && i < 6; i += 2) {
            const std::string format = withoutMarks(cells[i]);
            if (format == cells[i]) {
                continue;
            }
            const TemporaryFolder folder;
            const std::string recipe = writeReplayRecipe(folder, "");
            ASSERT_EQ(runOrlix({"save", recipe, "-o", folder / "saved.json", "--set",
                                "Converter.OutputPixelFormat=" + format})
                          .exitCode,
                      0)
                << format;
            const Json saved = Json::parse(readFile(folder / "saved.json"));
            EXPECT_EQ(saved["nodes"][1]["settings"]["OutputPixelFormat"], Json::parse(cells[i + 1]))
                << format;
            ++count;
        }
    }
    EXPECT_EQ(count, 11U);
}

// Each option of the manual is one of the program, and the other way round.
TEST(RecipeFormat, OptionsAreThoseOfTheProgram) {
    const std::string help = runOrlix({"run", "--help"}).out;
    std::set<std::string> told;
    for (const auto& cells : tableRowsOfPage(formatPage)) {
        if (cells[0].compare(0, 3, "`--") == 0) {
            told.insert(cells[0].substr(1, cells[0].find_first_of(" `", 1) - 1));
        }
    }
    std::set<std::string> real;
    for (const std::string& line : linesOf(help)) {
        if (line.compare(0, 4, "  --") == 0) {
            real.insert(line.substr(2, line.find(' ', 2) - 2));
        }
    }
    EXPECT_EQ(told, real);
}

// As a block of the page has it.
std::string indented(const std::string& text) {
    std::string block;
    for (const std::string& line : linesOf(text)) {
        block += (line.empty() ? "" : "    ") + line + "\n";
    }
    return block;
}

TEST(Embedding, ProgramOfThePageIsThatOfTheTree) {
    const std::string program = indented(readPage("examples/brightness.cpp"));
    EXPECT_GT(program.size(), 1000U);
    EXPECT_NE(readPage("docs/embedding.md").find("\n\n" + program + "\n"), std::string::npos);
}

TEST(Embedding, ProgramTellsHowBrightThePicturesAre) {
    const std::string program = std::string(ORLIX_PROGRAM_FOLDER) + "/brightness";
    const TemporaryFolder folder;
    const std::string recipe = writeReplayRecipe(
        folder, R"("sourcePath": "images", "numberOfImages": 3, "framesPerSecond": 500)");
    writePictures(folder, "images", 3);
    const ProgramResult result = Program(program, {recipe, "3"}).wait();
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.err, "");
    const auto lines = linesOf(result.out);
    ASSERT_EQ(lines.size(), 4U) << result.out;
    EXPECT_EQ(std::vector<std::string>(lines.begin(), lines.begin() + 3),
              (std::vector<std::string>{"10", "20", "30"}));
    EXPECT_EQ(Json::parse(lines[3])["outputs"]["Converter.Image"]["frames"], 3);

    const ProgramResult failed = Program(program, {folder / "none.json", "3"}).wait();
    EXPECT_EQ(failed.exitCode, 1);
    EXPECT_EQ(failed.err, (folder / "none.json") + ": can not read: No such file or directory\n");
}

TEST(CiScript, RefusesArgumentsThatItWouldIgnore) {
    const ProgramResult result =
        Program(std::string(ORLIX_SOURCE_FOLDER) + "/.ci/run", {"asan"}).wait();
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, ".ci/run takes no arguments, found: asan; it runs everything\n");
}

}  // namespace
}  // namespace Orlix::Host::Testing
