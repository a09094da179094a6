// What a run shows while it runs, on a real (pseudo) terminal.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <csignal>
#include <filesystem>

#include "host/support/fiforeader.h"
#include "host/support/recipes.h"
#include "host/support/terminal.h"

namespace Orlix::Host::Testing {
namespace {

constexpr const char* clearLine = "\r\033[K";

class LiveLine : public testing::Test {
protected:
    [[nodiscard]] std::unique_ptr<Program> start(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "run");
        auto program = std::make_unique<Program>(orlixFile(), arguments, std::string(), &terminal_);
        terminal_.closeChildEnd();
        return program;
    }
    [[nodiscard]] std::unique_ptr<Program> startWithTestNodes(std::vector<std::string> arguments) {
        arguments.insert(arguments.end(), {"--package", testPackage("testnodes")});
        return start(std::move(arguments));
    }

    [[nodiscard]] static bool endsWith(const std::string& text, const std::string& end) {
        return text.size() >= end.size() &&
               text.compare(text.size() - end.size(), end.size(), end) == 0;
    }

    TemporaryFolder folder_;
    Terminal terminal_;
};

TEST_F(LiveLine, ShowsTimeFramesRateErrorsAndQueueFill) {
    const std::string recipe = writeTestRecipe(folder_, "ValueSource", R"({"count": 5})");
    const auto program = startWithTestNodes({recipe});
    const std::regex line(
        "\r\033\\[K +[0-9]+\\.[0-9] s  5 frames  [0-9]+\\.[0-9] /s  3 errors  "
        "queues 0 of 0");
    EXPECT_TRUE(terminal_.waitFor(line));
    program->sendSignal(SIGINT);
    EXPECT_EQ(program->wait().exitCode, 0);
}

TEST_F(LiveLine, ReplacesItselfAndGoesWithTheRun) {
    const std::string recipe = writeTestRecipe(folder_, "ValueSource", R"({"count": 5})");
    const auto program = startWithTestNodes({recipe, "--json"});
    EXPECT_TRUE(terminal_.waitFor(std::regex("queues.*\r\033\\[K.*queues.*\r\033\\[K.*queues")));
    program->sendSignal(SIGINT);
    const ProgramResult result = program->wait();
    EXPECT_EQ(result.exitCode, 0);
    const std::string text = terminal_.readToEnd();
    EXPECT_TRUE(endsWith(text, clearLine)) << text;
    EXPECT_EQ(text.find('\n'), std::string::npos) << text;
    // The result is on standard output, by itself.
    EXPECT_EQ(result.out.front(), '{');
}

TEST_F(LiveLine, CountsTheConnectionsOfTheGraph) {
    writePictures(folder_, "images", 1);
    const std::string recipe = writeReplayRecipe(folder_, R"("sourcePath": "images")");
    const auto program = start({recipe});
    EXPECT_TRUE(terminal_.waitFor(std::regex("  1 frames  0\\.0 /s  0 errors  queues 0 of [1-9]")));
    program->sendSignal(SIGTERM);
    EXPECT_EQ(program->wait().exitCode, 0);
}

// Nobody reads what the run writes, until its queue has been seen to be full.
TEST_F(LiveLine, ShowsThatTheQueueOfTheWriterIsFull) {
    std::filesystem::create_directory(folder_ / "out");
    const std::string values = folder_ / "out/values.jsonl";
    ASSERT_EQ(::mkfifo(values.c_str(), 0600), 0);
    const std::string recipe = writeTestRecipe(folder_, "ValueSource");
    const auto program = startWithTestNodes({recipe, "--out", folder_ / "out"});
    FifoReader reader(values);
    EXPECT_TRUE(terminal_.waitFor(std::regex("queues 4[0-9]{3} of 4112")));
    program->sendSignal(SIGINT);
    static_cast<void>(reader.readToEnd());
    EXPECT_EQ(program->wait().exitCode, 0);
}

TEST_F(LiveLine, MakesRoomForALogLine) {
    writePictures(folder_, "images", 3);
    std::filesystem::resize_file(folder_ / "images/a02.png", 40);
    const std::string recipe = writeReplayRecipe(
        folder_, R"("sourcePath": "images", "numberOfImages": 3, "framesPerSecond": 100,
                    "runContinuously": true)");
    const auto program = start({recipe});
    EXPECT_TRUE(terminal_.waitFor(std::regex("queues [0-9]+ of [0-9]+\r\033\\[Kwarning: ")));
    program->sendSignal(SIGINT);
    EXPECT_EQ(program->wait().exitCode, 0);
}

TEST_F(LiveLine, MakesRoomForTheMessageOfARunThatFails) {
    std::filesystem::create_directory(folder_ / "out");
    const std::string values = folder_ / "out/values.jsonl";
    ASSERT_EQ(::mkfifo(values.c_str(), 0600), 0);
    const std::string recipe = writeTestRecipe(folder_, "ValueSource");
    const auto program = startWithTestNodes({recipe, "--out", folder_ / "out"});
    {
        const FifoReader reader(values);
        EXPECT_TRUE(terminal_.waitFor(std::regex("queues")));
    }
    EXPECT_EQ(program->wait().exitCode, 1);
    const std::string text = terminal_.readToEnd();
    const std::string end =
        std::string(clearLine) + "orlix: " + values + ": can not write: Broken pipe\n";
    EXPECT_TRUE(endsWith(text, end)) << text;
}

TEST_F(LiveLine, QuietRunHasNone) {
    const std::string recipe = writeTestRecipe(folder_, "ValueSource", R"({"count": 5})");
    const auto program = startWithTestNodes({recipe, "--quiet", "--seconds", "0.5"});
    EXPECT_EQ(program->wait().exitCode, 0);
    EXPECT_EQ(terminal_.readToEnd(), "");
}

TEST_F(LiveLine, IsCutToTheWidthOfTheTerminal) {
    terminal_.setColumns(30);
    const std::string recipe = writeTestRecipe(folder_, "ValueSource", R"({"count": 5})");
    const auto program = startWithTestNodes({recipe});
    EXPECT_TRUE(terminal_.waitFor(std::regex("\r\033\\[K[^\r]{29}\r\033\\[K[^\r]{29}\r")));
    program->sendSignal(SIGINT);
    EXPECT_EQ(program->wait().exitCode, 0);
}

TEST_F(LiveLine, ATerminalThatCanNotClearALineGetsNone) {
    for (const char* const type : {"dumb", ""}) {
        Terminal terminal;
        terminal.setType(type);
        const std::string recipe = writeTestRecipe(folder_, "ValueSource", R"({"count": 5})");
        Program program(orlixFile(),
                        {"run", recipe, "--seconds", "0.5", "--package", testPackage("testnodes")},
                        std::string(), &terminal);
        terminal.closeChildEnd();
        EXPECT_EQ(program.wait().exitCode, 0);
        EXPECT_EQ(terminal.readToEnd(), "");
    }
}

TEST_F(LiveLine, OnlyATerminalGetsOne) {
    const std::string recipe = writeTestRecipe(folder_, "ValueSource", R"({"count": 5})");
    EXPECT_EQ(runWithTestNodes({"run", recipe, "--seconds", "0.5"}).err, "");
}

}  // namespace
}  // namespace Orlix::Host::Testing
