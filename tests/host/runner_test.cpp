// Recipes in a program of one's own, without the command line.
#include "orlixhost/runner.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>

#include "host/support/message.h"
#include "host/support/recipes.h"
#include "orlixdataprocessingcore/graph/graph.h"
#include "orlixhost/package.h"
#include "orlixhost/recipegraph.h"
#include "orlixhost/resourcepool.h"

namespace Orlix::Host {
namespace {

class RunnerTest : public testing::Test {
protected:
    RunnerTest() { packages_.add(Package::load(Testing::testPackage("testnodes"))); }

    // A connected graph with one source of that many updates, 0 for no end.
    [[nodiscard]] std::unique_ptr<RecipeGraph> makeGraph(int count) const {
        auto graph = std::make_unique<RecipeGraph>(
            Recipe::parse(R"({"version": 1, "nodes": [{"name": "S", "type": "ValueSource",
                              "settings": {"count": )" +
                              std::to_string(count) + "}}]}",
                          "r.json", {}),
            packages_, createResourcePool());
        graph->connect();
        return graph;
    }

    [[nodiscard]] static std::string readFileOf(const Testing::TemporaryFolder& folder,
                                                const std::string& run) {
        return Testing::readFile(folder / (run + "/values.jsonl"));
    }

    PackageList packages_;
};

TEST_F(RunnerTest, ReportsEveryOpenOutputInTheOrderOfItsPins) {
    const auto graph = makeGraph(3);
    RunOptions options;
    options.idle = 3;  // every value is in time on a busy machine
    Runner runner(*graph, options);
    const RunReport report = runner.run({});
    ASSERT_EQ(report.outputs.size(), 6U);
    EXPECT_EQ(report.outputs[0].pin, "Number");
    EXPECT_EQ(report.outputs[0].frames, 3U);
    EXPECT_EQ(report.outputs[5].pin, "Fragile");
    EXPECT_EQ(report.outputs[5].errors, 2U);
    EXPECT_EQ(report.dropped, 0U);
}

TEST_F(RunnerTest, StopBeforeTheRunEndsItAtOnce) {
    const auto graph = makeGraph(0);
    Runner runner(*graph, {});
    runner.requestStop();
    static_cast<void>(runner.run({}));
}

TEST_F(RunnerTest, ObserverMayStopTheRun) {
    const auto graph = makeGraph(0);
    Runner runner(*graph, {});
    bool hasStarted = false;
    RunObserver observer;
    observer.onStarted = [&] { hasStarted = true; };
    RunProgress last;
    observer.onProgress = [&](const RunProgress& progress) {
        last = progress;
        runner.requestStop();
    };
    const RunReport report = runner.run(observer);
    EXPECT_TRUE(hasStarted);
    EXPECT_GT(last.seconds, 0);
    EXPECT_LE(last.frames, report.outputs[0].frames);
}

TEST_F(RunnerTest, SettingFindsANodeWithAnEqualsSignInItsName) {
    PackageList packages;
    packages.add(Package::load(Testing::packageFile()));
    RecipeGraph graph(Recipe::parse(R"({"version": 1, "nodes": [{"name": "a=b",
                                        "type": "ImageLoading"}]})",
                                    "r.json", {}),
                      packages, createResourcePool());
    graph.set("a=b.FramesPerSecond=7");
    EXPECT_NE(graph.saved({}).toText().find("\"framesPerSecond\": 7"), std::string::npos);
    EXPECT_EQ(Testing::messageOf([&] { graph.set("a=b"); }),
              "--set a=b: expected NODE.PARAM=VALUE");
}

// A program may catch it and go on: nothing of the run may be left.
TEST_F(RunnerTest, ExceptionOfAnObserverEndsTheRunFirst) {
    RunObserver starting;
    starting.onStarted = [] { throw std::logic_error("not now"); };
    RunObserver watching;
    watching.onProgress = [](const RunProgress&) { throw std::logic_error("not now"); };
    for (const RunObserver& observer : {starting, watching}) {
        const auto graph = makeGraph(0);
        RunOptions options;
        options.recover = true;
        Runner runner(*graph, options);
        EXPECT_THROW(static_cast<void>(runner.run(observer)), std::logic_error);
        EXPECT_FALSE(graph->graph().isRunning());
        graph->graph().freeResources();
    }
}

TEST_F(RunnerTest, OneGraphMayHaveOneRunAfterAnother) {
    const Testing::TemporaryFolder folder;
    const auto graph = makeGraph(1500);
    for (const char* const name : {"first", "second"}) {
        RunOptions options;
        options.idle = 3;  // every value is in time on a busy machine
        options.outFolder = folder / name;
        Runner runner(*graph, options);
        const RunReport report = runner.run({});
        EXPECT_EQ(report.outputs[0].frames, 1500U) << "more lines than can wait to be written";
    }
}

TEST_F(RunnerTest, RunnerTakesNothingOfARunBeforeItsOwn) {
    const Testing::TemporaryFolder folder;
    const auto graph = makeGraph(1500);
    const auto optionsFor = [&](const char* name) {
        RunOptions options;
        options.idle = 3;  // every value is in time on a busy machine
        options.outFolder = folder / name;
        return options;
    };
    Runner first(*graph, optionsFor("first"));
    Runner second(*graph, optionsFor("second"));
    EXPECT_EQ(first.run({}).outputs[0].frames, 1500U);
    EXPECT_EQ(readFileOf(folder, "second"), "") << "more values than can wait to be written";
    EXPECT_EQ(second.run({}).outputs[0].frames, 1500U);
    EXPECT_NE(readFileOf(folder, "second"), "");
}

TEST_F(RunnerTest, SecondRunAtOnceIsRefusedAndLeavesTheFirstAlone) {
    const auto graph = makeGraph(0);
    Runner first(*graph, {});
    Runner second(*graph, {});
    RunObserver observer;
    observer.onStarted = [&] {
        EXPECT_EQ(Testing::messageOf([&] { static_cast<void>(second.run({})); }),
                  "r.json: the graph is running already");
        EXPECT_TRUE(graph->graph().isRunning());
        first.requestStop();
    };
    static_cast<void>(first.run(observer));
}

TEST_F(RunnerTest, SavedRecipeHasTheNodesSettings) {
    const auto graph = makeGraph(7);
    EXPECT_NE(graph->saved({}).toText().find("\"count\": 7"), std::string::npos);
}

TEST_F(RunnerTest, LoadingPutsTheCurrentDirectoryBack) {
    const Testing::TemporaryFolder folder;
    const std::string file = Testing::writeReplayRecipe(folder, R"("sourcePath": "images")");
    PackageList packages;
    packages.add(Package::load(Testing::packageFile()));
    const std::filesystem::path before = std::filesystem::current_path();
    const RecipeGraph graph(Recipe::load(file), packages, createResourcePool());
    EXPECT_EQ(std::filesystem::current_path(), before);
}

}  // namespace
}  // namespace Orlix::Host
