// Recipes with a camera, run by the real program on emulated ones.
#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>

#include "host/support/program.h"
#include "host/support/recipes.h"
#include "host/support/temporaryfolder.h"

namespace Orlix::Host {
namespace {

using namespace Testing;

class CameraRun : public testing::Test {
protected:
    const TemporaryFolder folder_;
    const std::string recipe_ = folder_.write("r.json", R"({"version": 1, "nodes": [
        {"name": "Camera", "type": "Camera", "settings": {}}], "connections": []})");

    [[nodiscard]] ProgramResult run(std::vector<std::string> options) const {
        options.insert(options.begin(), {"run", recipe_});
        return runOrlix(options);
    }
};

TEST_F(CameraRun, GrabsFromTheEmulatedCameraWithoutAnyOption) {
    const ProgramResult result = run({"--frames", "10", "--json"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    const auto report = nlohmann::json::parse(linesOf(result.out).back());
    EXPECT_EQ(report["outputs"]["Camera.Image"]["frames"], 10);
    EXPECT_EQ(report["outputs"]["Camera.Image"]["errors"], 0);
}

// Nobody may take the pictures of an emulated camera for those of a real one.
TEST_F(CameraRun, EmulatedCameraThatNobodyHasAskedForIsTold) {
    EXPECT_EQ(run({"--frames", "1"}).err,
              "orlix: " + recipe_ +
                  ": takes the emulated camera EmulatedCamera (EMU-0001), since it asks for no "
                  "other; --emulated-cameras 0 leaves real ones only, 1 is without this line\n");
    for (const std::vector<std::string>& options :
         {std::vector<std::string>{"--emulated-cameras", "1"},
          std::vector<std::string>{"--fault", "frame 9: lost end"},
          std::vector<std::string>{"--set", "Camera.DeviceSelector=0", "--set",
                                   "Camera.DeviceChoose=1"}}) {
        std::vector<std::string> all = {"--frames", "1"};
        all.insert(all.end(), options.begin(), options.end());
        const ProgramResult result = run(all);
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_EQ(result.err, "") << options[0];
    }
    for (const char* property :
         {R"("DeviceClass": "OrlixEmulated")", R"("SerialNumber": "EMU-0001")"}) {
        const std::string asking = folder_.write(
            "asking.json", std::string(R"({"version": 1, "nodes": [{"name": "Camera", "type":
            "Camera", "settings": {"DeviceProperties": {)") +
                               property + "}}}], \"connections\": []}");
        EXPECT_EQ(runOrlix({"run", asking, "--frames", "1"}).err, "") << property;
    }
}

TEST_F(CameraRun, WithoutACameraTheRecipeCanNotAllocate) {
    expectFailure(
        run({"--frames", "1", "--emulated-cameras", "0"}),
        recipe_ + ": node \"Camera\": can not allocate: No suitable camera found to allocate.");
}

TEST_F(CameraRun, CameraInUseIsNamedWithItsHolder) {
    expectFailure(run({"--frames", "1", "--fault", "open: in use by \"line 4 (10.0.0.7)\""}),
                  recipe_ +
                      ": node \"Camera\": can not allocate: Device 'EmulatedCamera (EMU-0001)' is "
                      "in use by line 4 (10.0.0.7).");
}

TEST_F(CameraRun, RecipeForAnotherCameraTellsThatThereIsNone) {
    const std::vector<std::pair<std::string, std::string>> filters = {
        {R"("DeviceClass": "OrlixEmulated", "UserDefinedName": "line 4")",
         R"(DeviceClass = "OrlixEmulated", UserDefinedName = "line 4")"},
        {R"("NoSuchProperty": "x")", R"(NoSuchProperty = "x")"}};
    for (const auto& [properties, told] : filters) {
        const std::string recipe = folder_.write(
            "other.json", std::string(R"({"version": 1, "nodes": [{"name": "Camera", "type":
            "Camera", "settings": {"DeviceProperties": {)") +
                              properties + "}}}]}");
        expectFailure(runOrlix({"run", recipe, "--frames", "1", "--no-real-cameras"}),
                      recipe + ": node \"Camera\" (" + told +
                          "): can not allocate: No suitable camera found to allocate.");
    }
}

// Which the node skips without a word.
TEST_F(CameraRun, ConfigurationSetOfAMistypedNameIsNone) {
    const std::string recipe = folder_.write("typo.json", R"({"version": 1, "nodes": [
        {"name": "Camera", "type": "Camera", "settings": {
            "FeatureStreams": {"@cameraDevice": "Width\t64\n"}}}]})");
    for (const char* const command : {"run", "validate"}) {
        const ProgramResult result = runOrlix({command, recipe, "--no-real-cameras"});
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_EQ(result.err.find("orlix: " + recipe +
                                  ": node \"Camera\": unknown setting "
                                  "\"FeatureStreams.@cameraDevice\""),
                  0U)
            << result.err;
    }
}

// The texts of the node's messages, and the one that it only logs.
TEST_F(CameraRun, RejectedConfigurationSetIsToldWithNodeAndFeature) {
    const auto failureOf = [this](const char* set, const char* text) {
        const std::string recipe = folder_.write(
            "set.json", std::string(R"({"version": 1, "nodes": [{"name": "Camera", "type":
            "Camera", "settings": {"FeatureStreams": {")") +
                            set + "\": \"" + text + "\"}}}]}");
        const ProgramResult result =
            runOrlix({"run", recipe, "--frames", "1", "--no-real-cameras"});
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_EQ(result.out, "");
        const std::string place = "orlix: " + recipe + ": node \"Camera\": can not allocate: ";
        EXPECT_EQ(result.err.substr(0, place.size()), place);
        return result.err.substr(std::min(place.size(), result.err.size()));
    };
    const std::string device = "Failed to load feature streams from active configuration set. ";
    const std::string instance =
        "Failed to load camera feature stream from active configuration set. ";
    EXPECT_EQ(failureOf("@CameraDevice", "Width\\t99999999\\n"),
              device +
                  "The feature stream could not be loaded whole. Line 1, Width: Node 'Width' can "
                  "not take 99999999: its range is 1 to 4096.\n");
    EXPECT_EQ(failureOf("@CameraInstance", "Nothing\\t1\\n"),
              instance +
                  "The feature stream could not be loaded whole. Line 1, Nothing: there is no "
                  "such feature.\n");
}

// A bad text stops no run, but nobody should have to guess what is meant.
TEST_F(CameraRun, BadPinTextIsToldWithNodeAndParameter) {
    const std::string recipe = folder_.write("pins.json", R"({"version": 1, "nodes": [
        {"name": "Camera", "type": "Camera", "settings": {
            "EventConfiguration": ["rubbish"], "ChunkPinConfigurations": ["nonsense"]}}]})");
    const std::string line =
        "error: orlix.dataprocessing.vcell.Camera: " + recipe + ": node \"Camera\": ";
    const std::string text = ": Camera: (0,0): Error : Unexpected end of line. Expected dot.";
    for (const char* const command : {"validate", "run"}) {
        std::vector<std::string> arguments = {command, recipe, "--no-real-cameras"};
        if (std::string(command) == "run") {
            arguments.insert(arguments.end(), {"--frames", "1", "--emulated-cameras", "1"});
        }
        const ProgramResult result = runOrlix(arguments);
        EXPECT_EQ(result.exitCode, 0);
        const auto lines = linesOf(result.err);
        ASSERT_GE(lines.size(), 2U) << result.err;
        EXPECT_EQ(lines[0], line + "setting \"EventConfiguration[0]\"" + text);
        EXPECT_EQ(lines[1], line + "setting \"ChunkPinConfigurations[0]\"" + text);
    }
    const ProgramResult set =
        run({"--frames", "1", "--emulated-cameras", "1", "--set", "Camera.EventPinAdd=1", "--set",
             "Camera.EventPinConfiguration=rubbish"});
    EXPECT_EQ(set.exitCode, 0);
    const auto lines = linesOf(set.err);
    ASSERT_GE(lines.size(), 1U);
    EXPECT_EQ(lines[0], "error: orlix.dataprocessing.vcell.Camera: " + recipe_ +
                            ": node \"Camera\": parameter \"EventPinConfiguration\"" + text);
}

// A name that is taken, and an entry whose pin is there: the node itself is silent about both.
TEST_F(CameraRun, PinTextThatTheNodeLeavesOutIsTold) {
    const std::string chunk = "Image.Type=Float.ValueName=ChunkExposureTime";
    const std::string event = "E.Type=Integer.EventName=ExposureEnd.ValueName=EventExposureEnd";
    const auto told = [&](const std::string& parameter, const std::string& text) {
        return "warning: orlix.host.RecipeGraph: " + recipe_ + ": node \"Camera\": parameter \"" +
               parameter + "\": The node has not taken the text \"" + text + "\".";
    };
    const auto warningsOf = [&](const std::string& add, const std::vector<std::string>& texts) {
        std::vector<std::string> arguments = {"validate", recipe_, "--set", "Camera." + add + "=1"};
        for (const std::string& text : texts) {
            arguments.insert(arguments.end(), {"--set", "Camera." + text});
        }
        const ProgramResult result = runOrlix(arguments);
        EXPECT_EQ(result.exitCode, 0);
        std::vector<std::string> warnings = linesOf(result.err);
        std::erase_if(warnings,
                      [](const std::string& line) { return !line.starts_with("warning: "); });
        return warnings;
    };
    using Lines = std::vector<std::string>;
    EXPECT_EQ(warningsOf("ChunkPinAdd", {"ChunkPinValue=" + chunk}),
              Lines{told("ChunkPinValue", chunk)});
    EXPECT_EQ(warningsOf("ChunkPinAdd", {"ChunkPinValue=A" + chunk}), Lines());
    const std::string set = "EventPinConfiguration=";
    EXPECT_EQ(warningsOf("EventPinAdd", {set + event, set + event}), Lines()) << "it is there";
    EXPECT_EQ(warningsOf("EventPinAdd", {set + event, set + "F" + event}),
              Lines{told("EventPinConfiguration", "F" + event)});
}

TEST_F(CameraRun, FailedFramesAreImagesWithAnError) {
    const ProgramResult result = run({"--frames", "10", "--json", "--out", folder_ / "out",
                                      "--fault", "frame 3: missing packets 1; frame 5: lost end"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    const auto report = nlohmann::json::parse(linesOf(result.out).back());
    EXPECT_EQ(report["outputs"]["Camera.Image"]["frames"], 10);
    EXPECT_EQ(report["outputs"]["Camera.Image"]["errors"], 2);
    const std::string values = readFile(folder_ / "out/values.jsonl");
    EXPECT_NE(values.find("packets of the frame are missing."), std::string::npos) << values;
    EXPECT_NE(values.find("The end of the frame didn't come in time."), std::string::npos);
}

TEST_F(CameraRun, RunGoesOnWithoutACameraThatIsRemovedAndSaysSo) {
    const ProgramResult result = run({"--idle", "1", "--json", "--fault", "frame 5: unplug"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_NE(result.err.find("Host: Node \"Camera\": vCell has stopped working because the "
                              "camera has been disconnected."),
              std::string::npos)
        << result.err;
    const auto report = nlohmann::json::parse(linesOf(result.out).back());
    EXPECT_GE(report["outputs"]["Camera.Image"]["frames"], 4);
    EXPECT_LE(report["outputs"]["Camera.Image"]["frames"], 5);
}

TEST_F(CameraRun, WithRecoverACameraThatComesBackGoesOn) {
    const ProgramResult result =
        run({"--frames", "60", "--json", "--recover", "--fault", "frame 20: unplug for 30 ms"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_NE(result.err.find("Host: Node \"Camera\" has a device again."), std::string::npos)
        << result.err;
    const auto report = nlohmann::json::parse(linesOf(result.out).back());
    EXPECT_EQ(report["outputs"]["Camera.Image"]["frames"], 60);
}

TEST_F(CameraRun, WithRecoverAnotherCameraTakesOverAtOnce) {
    const ProgramResult result = run({"--frames", "30", "--json", "--recover", "--emulated-cameras",
                                      "2", "--fault", "once frame 20: unplug"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    const auto report = nlohmann::json::parse(linesOf(result.out).back());
    EXPECT_EQ(report["outputs"]["Camera.Image"]["frames"], 30);
}

// The camera is in the list all the time: no change of the list brings the next attempt.
TEST_F(CameraRun, WithRecoverACameraThatFailsAtFirstIsTriedAgain) {
    const auto script = [](const char* fault) {
        return std::string("camera 2 frame 5: unplug; camera 1 once ") + fault;
    };
    for (const char* fault :
         {"open: in use by \"x\"", "open: time out 50 ms", "start: time out 50 ms"}) {
        const ProgramResult result =
            run({"--frames", "30", "--json", "--recover", "--emulated-cameras", "2",
                 "--no-real-cameras", "--fault", script(fault)});
        EXPECT_EQ(result.exitCode, 0) << result.err;
        const auto report = nlohmann::json::parse(linesOf(result.out).back());
        EXPECT_EQ(report["outputs"]["Camera.Image"]["frames"], 30) << fault;
    }
}

TEST_F(CameraRun, WithRecoverARunEndsWhileTheCameraIsAway) {
    const ProgramResult result =
        run({"--idle", "0.5", "--json", "--recover", "--fault", "frame 5: unplug"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.err.find("has a device again"), std::string::npos) << result.err;
}

TEST_F(CameraRun, WhatARunTakesIsValidAndCanBeSaved) {
    const std::vector<std::string> set = {"--set", "Camera.DeviceSelector=0"};
    const auto execute = [&](std::vector<std::string> arguments, const char* cameras) {
        arguments.insert(arguments.end(), set.begin(), set.end());
        arguments.insert(arguments.end(), {"--emulated-cameras", cameras});
        return runOrlix(arguments).exitCode;
    };
    for (const auto& command :
         {std::vector<std::string>{"run", recipe_, "--frames", "1"},
          std::vector<std::string>{"validate", recipe_},
          std::vector<std::string>{"save", recipe_, "-o", folder_ / "saved.json"}}) {
        EXPECT_EQ(execute(command, "1"), 0) << command[0];
        EXPECT_EQ(execute(command, "0"), 1) << command[0];
    }
    EXPECT_EQ(runOrlix({"validate", recipe_, set[0], set[1]}).exitCode, 0) << "one is the default";
}

TEST_F(CameraRun, ParametersAreThoseOfANodeThatSeesTheCameras) {
    const auto maximum = [](const char* cameras) {
        const std::string json =
            runOrlix({"params", "Camera", "--json", "--emulated-cameras", cameras}).out;
        for (const auto& parameter : nlohmann::json::parse(json)) {
            if (parameter["name"] == "DeviceSelector") {
                return parameter["max"].dump();
            }
        }
        return std::string("none");
    };
    EXPECT_EQ(maximum("3"), "2");
    EXPECT_EQ(maximum("0"), "null");
}

// Not with what its list of devices happens to show.
TEST_F(CameraRun, NodeThatCanNotStartIsNamedWithItsOwnTextsOnly) {
    const ProgramResult result =
        run({"--frames", "1", "--emulated-cameras", "2", "--fault", "start: refuse"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(linesOf(result.err).size(), 1U) << result.err;
    EXPECT_EQ(result.err.find("orlix: " + recipe_ + ": node \"Camera\": can not start: "), 0U)
        << result.err;
}

TEST_F(CameraRun, MistakeInTheFaultsStopsTheCommandBeforeTheRun) {
    expectFailure(run({"--fault", "frame 1: exploded"}),
                  "--fault: Fault script, line 1, column 10: expected a fault, found 'exploded'.");
}

}  // namespace
}  // namespace Orlix::Host
