// The command save: a recipe through its nodes and back to a file.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "host/support/fiforeader.h"
#include "host/support/recipes.h"

namespace Orlix::Host::Testing {
namespace {

using Json = nlohmann::ordered_json;

class SaveCommand : public testing::Test {
protected:
    SaveCommand() {
        recipe_ = folder_.write("r.json", R"({"comment": "mine", "version": 1, "nodes": [
            {"name": "Loader", "position": [10, 20], "type": "ImageLoading",
             "settings": {"sourcePath": "images", "framesPerSecond": 50}},
            {"name": "Converter", "type": "ImageFormatConverter",
             "uuid": "4049EA56-3827-4faf-9478-c3ba02e4a0cb",
             "settings": {"OutputPixelFormat": 17301505}}],
            "connections": [{"from": "Loader.Image", "to": "Converter.Image", "color": "red"}]})");
        writePictures(folder_, "images", 1);
    }

    ProgramResult save(const std::string& source, const std::string& target) {
        return runOrlix({"save", source, "-o", target});
    }

    TemporaryFolder folder_;
    std::string recipe_;
};

TEST_F(SaveCommand, WritesSettingsAnewAndKeepsEverythingElse) {
    const ProgramResult result = save(recipe_, folder_ / "saved.json");
    EXPECT_EQ(result.exitCode, 0) << result.err;
    const Json saved = Json::parse(readFile(folder_ / "saved.json"));
    EXPECT_EQ(saved.at("comment"), "mine");
    EXPECT_EQ(saved.at("connections")[0].at("color"), "red");
    EXPECT_EQ(saved.at("nodes")[0], Json::parse(R"({
        "name": "Loader", "position": [10, 20], "type": "ImageLoading",
        "uuid": "4f2b72dc-294b-4503-885a-6b73d26eb6d7",
        "settings": {"sourcePath": "images", "sortBy": 0, "numberOfImages": 1,
                     "framesPerSecond": 50, "numberOfRuns": 1, "runContinuously": false}})"));
    EXPECT_EQ(saved.at("nodes")[1].at("uuid"), "4049EA56-3827-4faf-9478-c3ba02e4a0cb");
    EXPECT_EQ(saved.at("nodes")[1].at("settings").at("OutputPixelFormat"), 17301505);
    EXPECT_EQ(saved.at("nodes")[1].at("settings").at("OutputOrientation"), "Unchanged");
}

TEST_F(SaveCommand, SavedRecipeIsSavedTheSameAgain) {
    EXPECT_EQ(save(recipe_, folder_ / "one.json").exitCode, 0);
    EXPECT_EQ(save(folder_ / "one.json", folder_ / "two.json").exitCode, 0);
    EXPECT_EQ(readFile(folder_ / "one.json"), readFile(folder_ / "two.json"));
}

TEST_F(SaveCommand, MayReplaceItsSource) {
    ASSERT_EQ(::chmod(recipe_.c_str(), 0600), 0);
    const ProgramResult result = save(recipe_, recipe_);
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_NE(readFile(recipe_).find("\"numberOfRuns\": 1"), std::string::npos);
    struct stat status {};
    ASSERT_EQ(::stat(recipe_.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0600U);
    EXPECT_EQ(folder_.list(), (std::vector<std::string>{"images", "r.json"}));
}

TEST_F(SaveCommand, PathIsRelativeToTheFolderOfTheNewFile) {
    std::filesystem::create_directory(folder_ / "below");
    const ProgramResult result = runOrlix({"save", "r.json", "-o", "below/r.json"}, folder_.path());
    EXPECT_EQ(result.exitCode, 0) << result.err;
    const Json saved = Json::parse(readFile(folder_ / "below/r.json"));
    EXPECT_EQ(saved.at("nodes")[0].at("settings").at("sourcePath"), "../images");
}

// Behind a link, ".." is not the folder that the text says.
TEST_F(SaveCommand, PathsThatGoUpBehindALinkMeanWhatTheFileSystemSays) {
    std::filesystem::create_directories(folder_ / "real/inner");
    std::filesystem::create_directory_symlink(folder_ / "real/inner", folder_ / "link");
    std::filesystem::rename(folder_ / "images", folder_ / "real/images");
    std::filesystem::rename(recipe_, folder_ / "real/r.json");
    const ProgramResult result = save(folder_ / "link/../r.json", folder_ / "link/../saved.json");
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_FALSE(std::filesystem::exists(folder_ / "saved.json"));
    const Json saved = Json::parse(readFile(folder_ / "real/saved.json"));
    EXPECT_EQ(saved.at("nodes")[0].at("settings").at("sourcePath"), "images");
}

TEST_F(SaveCommand, APipeIsWrittenToAndStays) {
    const std::string pipe = folder_ / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    Program program(orlixFile(), {"save", recipe_, "-o", pipe});
    const std::string text = FifoReader(pipe).readToEnd();
    EXPECT_EQ(program.wait().exitCode, 0);
    EXPECT_EQ(Json::parse(text).at("nodes").size(), 2U);
    EXPECT_TRUE(std::filesystem::is_fifo(pipe));
}

TEST_F(SaveCommand, StandardOutputIsAFileLikeAnyOther) {
    const ProgramResult result = save(recipe_, "/dev/stdout");
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(Json::parse(result.out).at("nodes").size(), 2U);
}

TEST_F(SaveCommand, SetIsPartOfWhatIsSaved) {
    const ProgramResult result =
        runOrlix({"save", recipe_, "-o", folder_ / "saved.json", "--set", "Loader.SortBy=Random"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    const Json saved = Json::parse(readFile(folder_ / "saved.json"));
    EXPECT_EQ(saved.at("nodes")[0].at("settings").at("sortBy"), 2);
}

TEST_F(SaveCommand, RecipeThatIsNotSoundIsNotSaved) {
    folder_.write("bad.json", R"({"version": 1, "nodes": [
        {"name": "C", "type": "ImageFormatConverter", "settings": {"Typo": 1}}]})");
    const ProgramResult result = save(folder_ / "bad.json", folder_ / "saved.json");
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_FALSE(std::filesystem::exists(folder_ / "saved.json"));
}

TEST_F(SaveCommand, ValidateSaysThatARecipeIsValid) {
    const ProgramResult result = runOrlix({"validate", recipe_});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out, recipe_ +
                              ": is valid: 2 nodes, 1 connections; open outputs: "
                              "Loader.ImagePath Loader.RunCount Converter.Image\n");
}

}  // namespace
}  // namespace Orlix::Host::Testing
