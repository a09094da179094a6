// What the program says about bad input: one message that names the thing and the place, exit code
// 1, nothing on standard output and nothing half-written.
#include <gtest/gtest.h>

#include <filesystem>

#include "host/support/recipes.h"

namespace Orlix::Host::Testing {
namespace {

class BadInput : public testing::Test {
protected:
    // A recipe with one or two nodes and connections, as JSON.
    std::string writeRecipe(const std::string& nodes, const std::string& connections = "[]") {
        return folder_.write("r.json", R"({"version": 1, "nodes": [)" + nodes +
                                           R"(], "connections": )" + connections + "}");
    }

    static constexpr const char* loader =
        R"({"name": "Loader", "type": "ImageLoading", "settings": {"sourcePath": "images"}})";
    static constexpr const char* converter =
        R"({"name": "Converter", "type": "ImageFormatConverter"})";

    TemporaryFolder folder_;
};

TEST_F(BadInput, MissingRecipe) {
    expectFailure(runOrlix({"run", folder_ / "none.json"}),
                  (folder_ / "none.json") + ": can not read: No such file or directory");
}

TEST_F(BadInput, RecipeThatIsNoJson) {
    const std::string file = folder_.write("r.json", "{\n  \"version\": 1,\n  nodes: []\n}\n");
    expectFailure(runOrlix({"validate", file}), file +
                                                    ":3:4: syntax error while parsing object key - "
                                                    "invalid literal; expected string literal");
}

TEST_F(BadInput, UnknownNodeType) {
    const std::string file = writeRecipe(R"({"name": "Blur", "type": "Blur"})");
    expectFailure(runOrlix({"run", file}),
                  file +
                      ": node \"Blur\": there is no node type \"Blur\"; the packages have "
                      "Camera, ImageFormatConverter, ImageLoading");
}

TEST_F(BadInput, UnknownOutputPin) {
    const std::string file =
        writeRecipe(std::string(loader) + "," + converter,
                    R"([{"from": "Loader.Picture", "to": "Converter.Image"}])");
    expectFailure(runOrlix({"validate", file}),
                  file +
                      ": connections[0]: There is no output \"Loader.Picture\"; there are Image, "
                      "ImagePath, RunCount.");
}

TEST_F(BadInput, UnknownInputPin) {
    const std::string file =
        writeRecipe(std::string(loader) + "," + converter,
                    R"([{"from": "Loader.Image", "to": "Converter.Picture"}])");
    expectFailure(
        runOrlix({"validate", file}),
        file + ": connections[0]: There is no input \"Converter.Picture\"; there are Image.");
}

TEST_F(BadInput, ConnectionOfTypesThatDoNotFit) {
    const std::string file =
        writeRecipe(std::string(loader) + "," + converter,
                    R"([{"from": "Loader.ImagePath", "to": "Converter.Image"}])");
    expectFailure(runOrlix({"validate", file}),
                  file +
                      ": connections[0]: Can't connect \"Loader.ImagePath\" to "
                      "\"Converter.Image\": an output of "
                      "type \"Orlix::DataProcessing::Core::String\" doesn't fit an input of type "
                      "\"Orlix::DataProcessing::Core::Image\".");
}

TEST_F(BadInput, Cycle) {
    const std::string file = writeRecipe(
        std::string(converter) + R"(, {"name": "Second", "type": "ImageFormatConverter"})",
        R"([{"from": "Converter.Image", "to": "Second.Image"},
            {"from": "Second.Image", "to": "Converter.Image"}])");
    expectFailure(
        runOrlix({"validate", file}),
        file +
            ": connections[1]: Can't connect \"Second.Image\" to \"Converter.Image\": the "
            "connection would close a cycle.");
}

TEST_F(BadInput, InputThatIsTaken) {
    const std::string file = writeRecipe(std::string(loader) + "," + converter,
                                         R"([{"from": "Loader.Image", "to": "Converter.Image"},
                        {"from": "Loader.Image", "to": "Converter.Image"}])");
    expectFailure(
        runOrlix({"validate", file}),
        file +
            ": connections[1]: Can't connect \"Loader.Image\" to \"Converter.Image\": the "
            "input is taken.");
}

TEST_F(BadInput, InputThatIsNotConnected) {
    const std::string file = writeRecipe(converter);
    expectFailure(runOrlix({"validate", file}),
                  file + ": The input \"Converter.Image\" has to be connected.");
}

TEST_F(BadInput, UnknownSetting) {
    const std::string file = writeReplayRecipe(folder_, R"("SourcePath": "images", "sortBy": 1)");
    expectFailure(runOrlix({"run", file}),
                  file +
                      ": node \"Loader\": unknown setting \"SourcePath\"; it has "
                      "\"framesPerSecond\", \"numberOfImages\", \"numberOfRuns\", "
                      "\"runContinuously\", \"sortBy\", \"sourcePath\"");
}

TEST_F(BadInput, SettingOfAWrongType) {
    const std::string file = writeReplayRecipe(folder_, R"("framesPerSecond": "fast")");
    expectFailure(runOrlix({"run", file}),
                  file +
                      ": node \"Loader\": setting \"framesPerSecond\": expected an integer, "
                      "found the text \"fast\"");
}

TEST_F(BadInput, SettingThatTheNodeRefuses) {
    const std::string file = writeReplayRecipe(folder_, R"("framesPerSecond": 0)");
    expectFailure(runOrlix({"run", file}),
                  file +
                      ": node \"Loader\": setting \"framesPerSecond\": FramesPerSecond must be "
                      "greater than 0.");
}

TEST_F(BadInput, SettingWithAWordThatIsNone) {
    const std::string file = writeRecipe(
        R"({"name": "C", "type": "ImageFormatConverter", "settings": {"OutputOrientation": "up"}})");
    expectFailure(runOrlix({"validate", file}),
                  file +
                      ": node \"C\": setting \"OutputOrientation\": Unknown symbolic name of "
                      "output orientation found.");
}

TEST_F(BadInput, NoSourcePath) {
    const std::string file = writeReplayRecipe(folder_, "");
    expectFailure(runOrlix({"run", file, "--idle", "5"}),
                  file + ": node \"Loader\": can not start: No image source path was specified.");
}

TEST_F(BadInput, EmptyFolder) {
    std::filesystem::create_directory(folder_ / "images");
    const std::string file = writeReplayRecipe(folder_, R"("sourcePath": "images")");
    expectFailure(runOrlix({"run", file, "--idle", "5"}),
                  file + ": node \"Loader\" (SourcePath = \"" + (folder_ / "images") +
                      "\"): can not start: No images found in specified image source path.");
}

TEST_F(BadInput, MissingFolderNamesIt) {
    const std::string file = writeReplayRecipe(folder_, R"("sourcePath": "none")");
    const ProgramResult result = runOrlix({"run", file, "--idle", "5"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(linesOf(result.err).size(), 1U) << result.err;
    EXPECT_EQ(result.err.find("orlix: " + file + ": node \"Loader\" (SourcePath = \""), 0U)
        << result.err;
    EXPECT_NE(result.err.find("none"), std::string::npos);
}

TEST_F(BadInput, OfSeveralNodesTheOneThatCanNotStartIsNamed) {
    writePictures(folder_, "images", 1);
    const std::string file = writeRecipe(
        std::string(loader) +
        R"(, {"name": "Second", "type": "ImageLoading", "settings": {"sourcePath": "r.json"}},
            {"name": "Third", "type": "ImageLoading", "settings": {"sourcePath": "images"}})");
    expectFailure(runOrlix({"run", file, "--idle", "5"}),
                  file + ": node \"Second\" (SourcePath = \"" + file +
                      "\"): can not start: No images found in specified image source path.");
}

TEST_F(BadInput, ConnectionOfANodeToItself) {
    const std::string file =
        writeRecipe(converter, R"([{"from": "Converter.Image", "to": "Converter.Image"}])");
    expectFailure(runOrlix({"validate", file}),
                  file +
                      ": connections[0]: Can't connect \"Converter.Image\" to \"Converter.Image\": "
                      "the connection would close a cycle.");
}

TEST_F(BadInput, NoOpenImageOutputToCount) {
    const std::string file = writeTestRecipe(folder_, "ValueSource");
    expectFailure(runWithTestNodes({"run", file, "--frames", "1"}),
                  file + ": there is no open image output that --frames counts");
}

TEST_F(BadInput, PackageThatIsMissing) {
    expectFailure(runOrlix({"catalog", "--package", "none.so"}),
                  "none.so: there is no such package file");
    expectFailure(runOrlix({"catalog", "--package", ""}), "the name of the package file is empty");
}

TEST_F(BadInput, PackageThatIsNoPackage) {
    const std::string file = testPackage("notapackage");
    expectFailure(runOrlix({"catalog", "--package", file}),
                  file + ": is no package: it has no entry point get_InterfaceVersion");
}

TEST_F(BadInput, PackageOfAnotherInterfaceVersion) {
    const std::string file = testPackage("otherversion");
    expectFailure(runOrlix({"run", folder_ / "r.json", "--package", file}),
                  (folder_ / "r.json") + ": can not read: No such file or directory");
    const std::string recipe = writeTestRecipe(folder_, "ValueSource");
    expectFailure(runOrlix({"run", recipe, "--package", file}),
                  file + ": has the interface version 3, and this host knows version 2 only");
}

class BadSet : public BadInput {
protected:
    void expectRefused(const std::string& assignment, const std::string& message) {
        const std::string file = writeReplayRecipe(folder_, R"("sourcePath": "images")");
        expectFailure(runOrlix({"validate", file, "--set", assignment}),
                      message.substr(0, 2) == "--" ? message : file + ": " + message);
    }
};

TEST_F(BadSet, WithoutItsForm) {
    expectRefused("Loader", "--set Loader: expected NODE.PARAM=VALUE");
    expectRefused("Loader=5", "--set Loader=5: expected NODE.PARAM=VALUE");
    expectRefused(".A=5", "--set .A=5: expected NODE.PARAM=VALUE");
    expectRefused("Loader.=5", "--set Loader.=5: expected NODE.PARAM=VALUE");
}

TEST_F(BadSet, UnknownNode) {
    expectRefused("Looder.SortBy=Random", "there is no node \"Looder\"");
}

TEST_F(BadSet, UnknownParameter) {
    expectRefused("Loader.Speed=5",
                  "node \"Loader\": there is no parameter \"Speed\"; there are SourcePath, SortBy, "
                  "NumberOfImages, FramesPerSecond, NumberOfRuns, RunContinuously, "
                  "StoreAbsolutePath");
}

TEST_F(BadSet, ValueOutOfRangeNamesTheRange) {
    const std::string file = writeReplayRecipe(folder_, R"("sourcePath": "images")");
    const ProgramResult result =
        runOrlix({"validate", file, "--set", "Loader.FramesPerSecond=501"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(linesOf(result.err).size(), 1U) << result.err;
    EXPECT_EQ(result.err.find("orlix: " + file +
                              ": node \"Loader\": parameter \"FramesPerSecond\": can not be set to "
                              "\"501\": "),
              0U)
        << result.err;
    EXPECT_NE(result.err.find(" 1 to 500"), std::string::npos) << result.err;
    EXPECT_EQ(result.err.find(" 1 to 500"), result.err.rfind(" 1 to 500")) << result.err;
}

TEST_F(BadSet, ValueThatIsNoNumber) {
    const std::string file = writeReplayRecipe(folder_, R"("sourcePath": "images")");
    const ProgramResult result = runOrlix({"validate", file, "--set", "Loader.NumberOfRuns=two"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.err.find("parameter \"NumberOfRuns\": can not be set to \"two\": "),
              std::string::npos)
        << result.err;
}

TEST_F(BadSet, EntryThatIsNoneNamesTheEntries) {
    const std::string file = writeReplayRecipe(folder_, R"("sourcePath": "images")");
    const ProgramResult result = runOrlix({"validate", file, "--set", "Loader.SortBy=Size"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.err.find("parameter \"SortBy\": can not be set to \"Size\": "),
              std::string::npos)
        << result.err;
    EXPECT_NE(result.err.find("; it takes Ascending, Descending, Random\n"), std::string::npos)
        << result.err;
}

TEST_F(BadSet, ParameterThatIsNotWritable) {
    const std::string file = writeReplayRecipe(folder_, R"("runContinuously": true)");
    expectFailure(runOrlix({"validate", file, "--set", "Loader.NumberOfRuns=2"}),
                  file +
                      ": node \"Loader\": parameter \"NumberOfRuns\": can not be set to \"2\": it "
                      "is not writable now (RO)");
}

class BadFolder : public testing::Test {
protected:
    BadFolder() { recipe_ = writeTestRecipe(folder_, "ValueSource"); }

    TemporaryFolder folder_;
    std::string recipe_;
};

TEST_F(BadFolder, ThatCanNotBeMade) {
    const std::string file = folder_.write("file", "text");
    expectFailure(runWithTestNodes({"run", recipe_, "--out", file + "/out"}),
                  file + "/out: can not make the folder: Not a directory");
    EXPECT_EQ(readFile(file), "text");
}

TEST_F(BadFolder, ThatIsAFile) {
    const std::string file = folder_.write("file", "text");
    const ProgramResult result = runWithTestNodes({"run", recipe_, "--out", file});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err.find("orlix: " + file), 0U) << result.err;
    EXPECT_EQ(linesOf(result.err).size(), 1U) << result.err;
}

// The source never ends by itself: the full disk ends the run.
TEST_F(BadFolder, FullDiskEndsTheRun) {
    std::filesystem::create_directory(folder_ / "out");
    std::filesystem::create_symlink("/dev/full", folder_ / "out/values.jsonl");
    expectFailure(runWithTestNodes({"run", recipe_, "--out", folder_ / "out"}),
                  (folder_ / "out/values.jsonl") + ": can not write: No space left on device");
}

// A run that may not make a file longer than so many blocks: the shell sees to it.
class BadFolderOfShortFiles : public BadFolder {
protected:
    void SetUp() override {
        BadFolder::SetUp();
#ifdef __SANITIZE_THREAD__
        GTEST_SKIP() << "the thread sanitizer writes a file of its own before the program begins";
#endif
    }
    [[nodiscard]] ProgramResult runWithBlocks(int blocks) const {
        const std::string command = "ulimit -f " + std::to_string(blocks) +
                                    "; exec \"$0\" run \"$1\" --package \"$2\" --out \"$3\"";
        return Program("/bin/sh", {"-c", command, orlixFile(), recipe_, testPackage("testnodes"),
                                   folder_ / "out"})
            .wait();
    }
};

TEST_F(BadFolderOfShortFiles, FileThatCanNotGrowEndsTheRun) {
    expectFailure(runWithBlocks(0),
                  (folder_ / "out/values.jsonl") + ": can not write: File too large");
}

TEST_F(BadFolderOfShortFiles, FileThatCanNotGrowFurtherEndsWithAWholeLine) {
    EXPECT_EQ(runWithBlocks(1).exitCode, 1);
    const std::string text = readFile(folder_ / "out/values.jsonl");
    EXPECT_GT(text.size(), 100U);
    EXPECT_TRUE(text.ends_with("}\n")) << text;
}

TEST_F(BadFolder, ImageThatCanNotBeWrittenEndsTheRunAndIsNamed) {
    writePictures(folder_, "images", 1);
    const std::string recipe =
        writeReplayRecipe(folder_, R"("sourcePath": "images", "runContinuously": true)");
    std::filesystem::create_directories(folder_ / "out/Converter.Image.000001.png/blocked");
    const ProgramResult result = runOrlix({"run", recipe, "--out", folder_ / "out"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(linesOf(result.err).size(), 1U) << result.err;
    EXPECT_NE(result.err.find(folder_ / "out/Converter.Image.000001.png"), std::string::npos)
        << result.err;
}

TEST_F(BadFolder, RunThatDoesNotStartMakesNone) {
    const std::string recipe = writeReplayRecipe(folder_, "");
    EXPECT_EQ(runOrlix({"run", recipe, "--out", folder_ / "out"}).exitCode, 1);
    EXPECT_FALSE(std::filesystem::exists(folder_ / "out"));
}

TEST_F(BadFolder, RunThatDoesNotStartTakesEveryFolderAwayThatItMade) {
    const std::string recipe = writeReplayRecipe(folder_, "");
    folder_.write("there/kept.txt", "");
    EXPECT_EQ(runOrlix({"run", recipe, "--out", folder_ / "there/two/three"}).exitCode, 1);
    EXPECT_TRUE(std::filesystem::exists(folder_ / "there/kept.txt"));
    EXPECT_FALSE(std::filesystem::exists(folder_ / "there/two"));
}

TEST_F(BadFolder, RunThatDoesNotStartLeavesEarlierResultsAlone) {
    const std::string recipe = writeReplayRecipe(folder_, "");
    folder_.write("out/values.jsonl", "earlier\n");
    EXPECT_EQ(runOrlix({"run", recipe, "--out", folder_ / "out"}).exitCode, 1);
    EXPECT_EQ(readFile(folder_ / "out/values.jsonl"), "earlier\n");
}

// The node that is listed last starts first, and has sent all its values when the other one fails.
class SentBeforeAFailedStart : public BadFolder {
protected:
    SentBeforeAFailedStart() {
        recipe_ = folder_.write("r.json", R"({"version": 1, "nodes": [
            {"name": "Bad", "type": "ValueSource", "settings": {"unwilling": true}},
            {"name": "Good", "type": "ValueSource", "settings": {"eager": true, "count": 9}}]})");
    }
    void expectFailedRun() const {
        expectFailure(runWithTestNodes({"run", recipe_, "--out", folder_ / "out"}),
                      recipe_ + ": node \"Bad\": can not start: I will not.");
    }
};

TEST_F(SentBeforeAFailedStart, IsNotWritten) {
    expectFailedRun();
    EXPECT_FALSE(std::filesystem::exists(folder_ / "out"));
}

TEST_F(SentBeforeAFailedStart, IsTakenAwayIfItWasMoreThanCanWait) {
    std::string text = readFile(recipe_);
    text.replace(text.find("\"count\": 9"), 10, "\"count\": 5000");
    folder_.write("r.json", text);
    expectFailedRun();
    EXPECT_FALSE(std::filesystem::exists(folder_ / "out"));
}

TEST_F(SentBeforeAFailedStart, LeavesEarlierResultsAlone) {
    folder_.write("out/values.jsonl", "earlier\n");
    expectFailedRun();
    EXPECT_EQ(folder_.list("out"), std::vector<std::string>{"values.jsonl"});
    EXPECT_EQ(readFile(folder_ / "out/values.jsonl"), "earlier\n");
}

TEST_F(BadFolder, SaveOfAFileThatCanNotGrowLeavesNothingBehind) {
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "the thread sanitizer writes a file of its own before the program begins";
#endif
    const std::vector<std::string> before = folder_.list();
    const std::string command = "ulimit -f 0; exec \"$0\" save \"$1\" --package \"$2\" -o \"$3\"";
    expectFailure(Program("/bin/sh", {"-c", command, orlixFile(), recipe_, testPackage("testnodes"),
                                      folder_ / "new.json"})
                      .wait(),
                  (folder_ / "new.json") + ": can not write: File too large");
    EXPECT_EQ(folder_.list(), before);
}

// Whose name is gone, but not what lies in other folders.
TEST_F(BadFolder, CurrentFolderThatIsGoneStaysTheCurrentOne) {
    std::filesystem::create_directory(folder_ / "gone");
    writePictures(folder_, "images", 1);
    const std::string recipe = writeReplayRecipe(folder_, R"("sourcePath": "images")");
    const std::string command = "rmdir \"$1\"; exec \"$0\" run \"$2\" --frames 1 --out ghost";
    expectFailure(
        Program("/bin/sh", {"-c", command, orlixFile(), folder_ / "gone", recipe}, folder_ / "gone")
            .wait(),
        "ghost: is relative to a current folder that can not be told: No such file or "
        "directory");
    EXPECT_EQ(folder_.list(), (std::vector<std::string>{"images", "r.json"}));
}

TEST_F(BadFolder, PackageNamedFromACurrentFolderThatIsGone) {
    std::filesystem::create_directory(folder_ / "gone");
    const std::string command = "rmdir \"$1\"; exec \"$0\" catalog --package x.so";
    expectFailure(
        Program("/bin/sh", {"-c", command, orlixFile(), folder_ / "gone"}, folder_ / "gone").wait(),
        "x.so: is relative to a current folder that can not be told: No such file or directory");
}

TEST_F(BadFolder, SaveThatFailsLeavesNothingBehind) {
    const std::vector<std::string> before = folder_.list();
    expectFailure(runWithTestNodes({"save", recipe_, "-o", folder_ / "none/r.json"}),
                  (folder_ / "none/r.json") + ": can not write: No such file or directory");
    EXPECT_EQ(folder_.list(), before);
}

}  // namespace
}  // namespace Orlix::Host::Testing
