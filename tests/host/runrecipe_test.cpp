// Runs of recipes through the real program: what ends them, what they report, what they write.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <stop_token>
#include <thread>

#include "host/support/fiforeader.h"
#include "host/support/recipes.h"
#include "orlixcamera/orliximage.h"

namespace Orlix::Host::Testing {
namespace {

using Json = nlohmann::json;

Json lastLineAsJson(const ProgramResult& result) {
    const auto lines = linesOf(result.out);
    EXPECT_FALSE(lines.empty()) << result.err;
    return lines.empty() ? Json() : Json::parse(lines.back());
}

// All lines of values.jsonl that belong to a pin.
std::vector<Json> valuesOf(const std::string& file, const std::string& pin) {
    std::vector<Json> values;
    for (const std::string& line : linesOf(readFile(file))) {
        Json value = Json::parse(line);
        if (value.at("pin") == pin) {
            values.push_back(std::move(value));
        }
    }
    return values;
}

std::uint8_t firstPixel(const std::string& file) {
    COrlixImage image;
    image.Load(GenICam::gcstring(file));
    EXPECT_EQ(image.GetPixelType(), PixelType_Mono8);
    return *static_cast<const std::uint8_t*>(image.GetBuffer());
}

class RunReplay : public testing::Test {
protected:
    // Three pictures, replayed for ever at a high rate.
    RunReplay() {
        writePictures(folder_, "images", 3);
        recipe_ = writeReplayRecipe(
            folder_,
            R"("sourcePath": "images", "numberOfImages": 3, "framesPerSecond": 500,
               "runContinuously": true)");
    }

    TemporaryFolder folder_;
    std::string recipe_;
};

// Of one source, and one of them many nodes behind the other.
TEST_F(RunReplay, AllOutputsEndAtTheSameUpdate) {
    std::string nodes;
    std::string connections;
    std::string last = "Loader";
    for (const char* const name : {"A", "B", "C", "D", "E", "F"}) {
        nodes += std::string(R"(, {"name": ")") + name + R"(", "type": "ImageFormatConverter"})";
        connections += R"({"from": ")" + last + R"(.Image", "to": ")" + name + R"(.Image"}, )";
        last = name;
    }
    const std::string recipe =
        folder_.write("branches.json", R"({"version": 1, "nodes": [
        {"name": "Loader", "type": "ImageLoading", "settings": {"sourcePath": "images",
         "numberOfImages": 3, "framesPerSecond": 100000, "runContinuously": true}})" +
                                           nodes +
                                           R"(, {"name": "Short", "type": "ImageFormatConverter"}],
        "connections": [)" + connections + R"({"from": "Loader.Image", "to": "Short.Image"}]})");
    for (int round = 0; round < 5; ++round) {
        const ProgramResult result = runOrlix({"run", recipe, "--frames", "20", "--json"});
        EXPECT_EQ(result.exitCode, 0) << result.err;
        const Json outputs = lastLineAsJson(result).at("outputs");
        EXPECT_EQ(outputs.at("F.Image").at("frames"), 20);
        EXPECT_EQ(outputs.at("Short.Image").at("frames"), 20);
    }
}

TEST_F(RunReplay, FramesEndsAfterSoManyValuesOnTheFirstOpenImageOutput) {
    const ProgramResult result = runOrlix({"run", recipe_, "--frames", "7", "--json"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.err, "");
    const Json report = lastLineAsJson(result);
    const Json& image = report.at("outputs").at("Converter.Image");
    EXPECT_EQ(image.at("frames"), 7);
    EXPECT_EQ(image.at("errors"), 0);
    EXPECT_GT(image.at("rate"), 0);
    EXPECT_GT(report.at("seconds"), 0);
    EXPECT_TRUE(report.at("dropped").is_number_unsigned());
    EXPECT_TRUE(report.at("outputs").contains("Loader.ImagePath"));
    EXPECT_TRUE(report.at("outputs").contains("Loader.RunCount"));
    EXPECT_FALSE(report.at("outputs").contains("Loader.Image"));
}

TEST_F(RunReplay, OutWritesImagesAndValues) {
    const ProgramResult result =
        runOrlix({"run", recipe_, "--frames", "4", "--out", folder_ / "out", "--quiet"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(folder_.list("out"),
              (std::vector<std::string>{"Converter.Image.000001.png", "Converter.Image.000002.png",
                                        "Converter.Image.000003.png", "Converter.Image.000004.png",
                                        "values.jsonl"}));
    EXPECT_EQ(firstPixel(folder_ / "out/Converter.Image.000001.png"), 10);
    EXPECT_EQ(firstPixel(folder_ / "out/Converter.Image.000003.png"), 30);
    EXPECT_EQ(firstPixel(folder_ / "out/Converter.Image.000004.png"), 10);
    const auto paths = valuesOf(folder_ / "out/values.jsonl", "ImagePath");
    ASSERT_GE(paths.size(), 4U);
    EXPECT_EQ(paths[0].at("node"), "Loader");
    EXPECT_EQ(paths[0].at("value"), folder_ / "images/a01.png");
    EXPECT_LT(paths[0].at("update"), paths[1].at("update"));
    const auto runs = valuesOf(folder_ / "out/values.jsonl", "RunCount");
    ASSERT_GE(runs.size(), 4U);
    EXPECT_EQ(runs[2].at("value"), 1);
    EXPECT_EQ(runs[3].at("value"), 2);
    EXPECT_EQ(runs[0].at("update"), paths[0].at("update"));
}

TEST_F(RunReplay, ImagesThatPngCanNotHoldAreWrittenAsTiff) {
    // RGB8Planar
    const ProgramResult result =
        runOrlix({"run", recipe_, "--frames", "1", "--out", folder_ / "out", "--set",
                  "Converter.OutputPixelFormat=RGB8Planar"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(folder_.list("out").front(), "Converter.Image.000001.tif");
}

// The first column of the picture that comes out of two converters, whose settings are JSON
// members. It goes in as 10, 20, 30.
class TwoConverters : public testing::Test {
protected:
    std::vector<int> Run(const std::string& first, const std::string& second) {
        COrlixImage image;
        image.Reset(PixelType_Mono8, 1, 3);
        const std::array<unsigned char, 3> rows = {10, 20, 30};
        std::memcpy(image.GetBuffer(), rows.data(), rows.size());
        image.Save(GenICam::gcstring(folder_ / "a.png"));
        const std::string type = R"("type": "ImageFormatConverter", "settings": {)";
        const std::string recipe = folder_.write("two.json", R"({"version": 1, "nodes": [
            {"name": "L", "type": "ImageLoading", "settings": {"sourcePath": "a.png"}},
            {"name": "A", )" + type + first + R"(}}, {"name": "B", )" +
                                                                 type + second + R"(}}],
            "connections": [{"from": "L.Image", "to": "A.Image"},
                            {"from": "A.Image", "to": "B.Image"}]})");
        const ProgramResult result =
            runOrlix({"run", recipe, "--frames", "1", "--out", folder_ / "out", "--quiet"});
        EXPECT_EQ(result.exitCode, 0) << result.err;
        COrlixImage written;
        written.Load(GenICam::gcstring(folder_ / "out/B.Image.000001.png"));
        const auto* pixel = static_cast<const unsigned char*>(written.GetBuffer());
        const std::size_t rowBytes = written.GetImageSize() / 3;
        return {pixel[0], pixel[rowBytes], pixel[2 * rowBytes]};
    }

    const std::string mono_ = R"("OutputPixelFormat": 17301505)";
    const std::string rgb_ = R"("OutputPixelFormat": 35127316)";
    const std::string bottomUp_ = R"(, "OutputOrientation": "BottomUp")";
    const std::vector<int> upright_ = {10, 20, 30};
    const std::vector<int> turned_ = {30, 20, 10};
    TemporaryFolder folder_;
};

TEST_F(TwoConverters, APictureIsTurnedOnceForEachOfThemThatTurns) {
    EXPECT_EQ(Run(rgb_, mono_), upright_);
    EXPECT_EQ(Run(rgb_, mono_ + bottomUp_), turned_);
    EXPECT_EQ(Run(mono_ + bottomUp_, rgb_ + bottomUp_), upright_);
    EXPECT_EQ(Run(mono_ + bottomUp_, mono_ + bottomUp_), upright_);
}

TEST_F(TwoConverters, OneThatConvertsWritesWhatOneThatForwardsWrites) {
    EXPECT_EQ(Run(rgb_ + bottomUp_, rgb_), turned_);
    EXPECT_EQ(Run(rgb_ + bottomUp_, mono_), turned_);
    EXPECT_EQ(Run(mono_ + bottomUp_, rgb_ + R"(, "OutputOrientation": "TopDown")"), turned_);
}

TEST_F(RunReplay, SummaryIsForPeople) {
    const ProgramResult result = runOrlix({"run", recipe_, "--frames", "2"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out.find("Loader.ImagePath: "), 0U) << result.out;
    EXPECT_NE(result.out.find("Converter.Image: 2 frames, 0 errors, "), std::string::npos);
}

TEST_F(RunReplay, SecondsEndsARunWithoutEnd) {
    const ProgramResult result = runOrlix({"run", recipe_, "--seconds", "0.2", "--json"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_GE(lastLineAsJson(result).at("seconds"), 0.2);
}

TEST_F(RunReplay, SetChangesAParameterBeforeTheStart) {
    const ProgramResult result =
        runOrlix({"run", recipe_, "--set", "Loader.SortBy=Descending", "--set",
                  "Loader.FramesPerSecond=400", "--frames", "2", "--out", folder_ / "out"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(firstPixel(folder_ / "out/Converter.Image.000001.png"), 30);
}

TEST_F(RunReplay, RelativePathsOfTheCommandLineAreThoseOfTheShell) {
    writePictures(folder_, "elsewhere/others", 1);
    const ProgramResult result = runOrlix({"run", "../r.json", "--set", "Loader.SourcePath=others",
                                           "--frames", "1", "--out", "results"},
                                          folder_ / "elsewhere");
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(folder_.list("elsewhere/results").size(), 2U);
    const auto paths = valuesOf(folder_ / "elsewhere/results/values.jsonl", "ImagePath");
    ASSERT_FALSE(paths.empty());
    EXPECT_NE(paths[0].at("value").get<std::string>().find("others/a01.png"), std::string::npos);
}

TEST_F(RunReplay, RecipeMovesTogetherWithItsPictures) {
    std::filesystem::create_directory(folder_ / "moved");
    std::filesystem::rename(recipe_, folder_ / "moved/r.json");
    std::filesystem::rename(folder_ / "images", folder_ / "moved/images");
    const ProgramResult result =
        runOrlix({"run", folder_ / "moved/r.json", "--frames", "1", "--out", folder_ / "out"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(valuesOf(folder_ / "out/values.jsonl", "ImagePath").at(0).at("value"),
              folder_ / "moved/images/a01.png");
}

TEST_F(RunReplay, BrokenPictureIsAnErrorValueAndTheRunGoesOn) {
    const std::string broken = folder_ / "images/a02.png";
    std::filesystem::resize_file(broken, 40);
    const ProgramResult result =
        runOrlix({"run", recipe_, "--frames", "3", "--out", folder_ / "out", "--json"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    const Json image = lastLineAsJson(result).at("outputs").at("Converter.Image");
    EXPECT_EQ(image.at("frames"), 3);
    EXPECT_EQ(image.at("errors"), 1);
    EXPECT_EQ(folder_.list("out"),
              (std::vector<std::string>{"Converter.Image.000001.png", "Converter.Image.000003.png",
                                        "values.jsonl"}));
    const auto errors = valuesOf(folder_ / "out/values.jsonl", "Image");
    ASSERT_EQ(errors.size(), 1U);
    EXPECT_EQ(errors[0].at("error"), "Input image is invalid.");
    EXPECT_EQ(errors[0].at("causes"), (std::vector<std::string>{"Failed to load image."}));
    EXPECT_FALSE(errors[0].contains("value"));
    EXPECT_EQ(errors[0].at("update"),
              valuesOf(folder_ / "out/values.jsonl", "ImagePath").at(1).at("update"));
}

TEST(RunReplayOnce, IdleEndsAReplayThatHasEnded) {
    const TemporaryFolder folder;
    writePictures(folder, "images", 3);
    const std::string recipe = writeReplayRecipe(
        folder, R"("sourcePath": "images", "numberOfImages": 3, "framesPerSecond": 500,
                   "numberOfRuns": 2)");
    const ProgramResult result = runOrlix({"run", recipe, "--idle", "0.5", "--json"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(lastLineAsJson(result).at("outputs").at("Converter.Image").at("frames"), 6);
}

TEST_F(RunReplay, StartArgumentReachesTheNodes) {
    const ProgramResult result = runOrlix(
        {"run", recipe_, "--arg", "AcquisitionMode=SingleFrame", "--idle", "0.5", "--json"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(lastLineAsJson(result).at("outputs").at("Converter.Image").at("frames"), 1);
}

class RunValues : public testing::Test {
protected:
    [[nodiscard]] std::string values() const { return folder_ / "out/values.jsonl"; }

    // In place of the file that the run writes: who reads it knows when a line has been written.
    void makeFifo() {
        std::filesystem::create_directory(folder_ / "out");
        ASSERT_EQ(::mkfifo(values().c_str(), 0600), 0);
    }

    // Of a source that sends all it has in its start.
    void expectAllOfEagerSource(std::size_t count) const {
        const std::string recipe = writeTestRecipe(
            folder_, "ValueSource", R"({"eager": true, "count": )" + std::to_string(count) + "}");
        const ProgramResult result =
            runWithTestNodes({"run", recipe, "--idle", "3", "--out", folder_ / "out"});
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(valuesOf(values(), "Number").size(), count);
    }

    TemporaryFolder folder_;
};

TEST_F(RunValues, EveryKindOfValueIsALine) {
    const std::string recipe = writeTestRecipe(folder_, "ValueSource", R"({"count": 2})");
    const ProgramResult result =
        runWithTestNodes({"run", recipe, "--idle", "3", "--out", folder_ / "out", "--json", "--arg",
                          "Text=a\xff\"b"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(linesOf(readFile(values())).size(), 12U);
    EXPECT_EQ(valuesOf(values(), "Number").at(0).dump(),
              R"({"node":"S","pin":"Number","update":1,"value":1})");
    EXPECT_EQ(valuesOf(values(), "Ratio").at(0).at("value"), 0.5);
    EXPECT_EQ(valuesOf(values(), "IsOdd").at(0).at("value"), true);
    EXPECT_EQ(valuesOf(values(), "Text").at(0).at("value"), "a\xef\xbf\xbd\"b");
    EXPECT_EQ(valuesOf(values(), "List").at(1).at("value"), Json::parse("[2, 3]"));
    EXPECT_EQ(valuesOf(values(), "Fragile").at(0).dump(),
              R"({"error":"The number is odd.","node":"S","pin":"Fragile","update":1})");
    EXPECT_EQ(valuesOf(values(), "Fragile").at(1).at("value"), 2);
    const Json report = lastLineAsJson(result);
    EXPECT_EQ(report.at("outputs").at("S.Fragile").at("frames"), 2);
    EXPECT_EQ(report.at("outputs").at("S.Fragile").at("errors"), 1);
}

TEST_F(RunValues, KeysOfALineHaveTheirOrder) {
    const std::string recipe = writeTestRecipe(folder_, "ValueSource", R"({"count": 1})");
    const ProgramResult result =
        runWithTestNodes({"run", recipe, "--idle", "3", "--out", folder_ / "out"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_NE(readFile(values()).find(R"({"node":"S","pin":"Number","update":1,"value":1})"),
              std::string::npos);
}

TEST_F(RunValues, ThatCameBeforeEveryNodeHadStartedAreWritten) {
    expectAllOfEagerSource(2);
}

class RunSignal : public RunValues, public testing::WithParamInterface<int> {};

// More than can wait, from a start that ends only when all of it has been sent.
TEST_F(RunValues, SourceThatWaitsForSpaceInItsStartIsNotHeldForEver) {
    expectAllOfEagerSource(5000);
}

// The failure of a stop is told when all that has come is written.
TEST_F(RunValues, NodeThatFailsToStopIsToldAndNothingIsLost) {
    for (const char* const setting : {"stubborn", "greedy"}) {
        const std::string recipe = writeTestRecipe(
            folder_, "ValueSource", std::string(R"({"count": 3, ")") + setting + "\": true}");
        const bool stops = std::string(setting) == "greedy";
        const ProgramResult result =
            runWithTestNodes({"run", recipe, "--idle", "3", "--out", folder_ / "out"});
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_EQ(linesOf(result.err).back(),
                  "orlix: " + recipe + ": node \"S\"" +
                      (stops ? ": can not free its resources: It is mine."
                             : ": can not stop: I can not end."));
        EXPECT_EQ(valuesOf(values(), "Number").size(), 3U) << setting;
    }
}

// All pins to the same update.
TEST_F(RunValues, WhatCameBeforeAFailedStopIsWritten) {
    const std::string recipe =
        writeTestRecipe(folder_, "ValueSource", R"({"count": 0, "stubborn": true})");
    const ProgramResult result =
        runWithTestNodes({"run", recipe, "--seconds", "0.2", "--out", folder_ / "out"});
    EXPECT_EQ(result.exitCode, 1);
    const std::size_t numbers = valuesOf(values(), "Number").size();
    EXPECT_GT(numbers, 0U);
    EXPECT_EQ(linesOf(readFile(values())).size(), 6 * numbers);
}

TEST_F(RunValues, FailedStartIsToldThoughItsResourcesCanNotBeFreedEither) {
    const std::string recipe =
        writeTestRecipe(folder_, "ValueSource", R"({"unwilling": true, "greedy": true})");
    expectFailure(runWithTestNodes({"run", recipe}),
                  recipe + ": node \"S\": can not start: I will not.");
}

TEST_P(RunSignal, StopsTheRecipeInOrder) {
    makeFifo();
    const std::string recipe = writeTestRecipe(folder_, "ValueSource");
    Program program(orlixFile(), {"run", recipe, "--package", testPackage("testnodes"), "--out",
                                  folder_ / "out", "--json"});
    FifoReader reader(values());
    reader.waitForFirstByte();
    program.sendSignal(GetParam());
    const std::string text = reader.readToEnd();
    const ProgramResult result = program.wait();
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.err, "");
    // What has been counted is what has been written, to the last line.
    std::uint64_t frames = 0;
    const Json report = lastLineAsJson(result);
    for (const auto& [pin, output] : report.at("outputs").items()) {
        frames += output.at("frames").get<std::uint64_t>();
    }
    EXPECT_EQ(linesOf(text).size(), frames);
    EXPECT_EQ(text.back(), '\n');
}

INSTANTIATE_TEST_SUITE_P(Signals, RunSignal, testing::Values(SIGINT, SIGTERM, SIGHUP));

// Nothing has begun that would have to be ended in order.
TEST_F(RunValues, ASignalEndsAWaitForARecipeThatComesThroughAPipe) {
    const std::string recipe = folder_ / "recipe";
    ASSERT_EQ(::mkfifo(recipe.c_str(), 0600), 0);
    Program program(orlixFile(), {"run", recipe});
    const int writer = ::open(recipe.c_str(), O_WRONLY);  // waits for the program to read
    program.sendSignal(SIGINT);
    EXPECT_EQ(program.wait().exitCode, 128 + SIGINT);
    ::close(writer);
}

TEST_F(RunValues, ReaderThatGoesAwayEndsTheRunWithAnError) {
    makeFifo();
    const std::string recipe = writeTestRecipe(folder_, "ValueSource");
    Program program(orlixFile(), {"run", recipe, "--package", testPackage("testnodes"), "--out",
                                  folder_ / "out"});
    { FifoReader(values()).waitForFirstByte(); }
    expectFailure(program.wait(), values() + ": can not write: Broken pipe");
}

TEST_F(RunValues, SecondSignalEndsTheProgramAtOnce) {
    makeFifo();
    const std::string recipe = writeTestRecipe(folder_, "StuckSource");
    Program program(orlixFile(), {"run", recipe, "--package", testPackage("testnodes"), "--out",
                                  folder_ / "out"});
    FifoReader reader(values());
    reader.waitForFirstByte();
    program.sendSignal(SIGINT);
    EXPECT_EQ(program.readErrorLine(), "stopping");
    {
        // What comes right behind the first is no second one.
        const std::jthread impatience([&](const std::stop_token& ended) {
            while (!ended.stop_requested()) {
                program.sendSignal(SIGINT);
                std::this_thread::sleep_for(std::chrono::milliseconds(10));
            }
        });
        static_cast<void>(reader.readToEnd());
    }
    EXPECT_EQ(program.wait().exitCode, 128 + SIGINT);
}

}  // namespace
}  // namespace Orlix::Host::Testing
