// What the program says about its command line.
#include <gtest/gtest.h>

#include <regex>

#include "host/support/recipes.h"

namespace Orlix::Host::Testing {
namespace {

TEST(BadUsage, IsOneMessage) {
    expectFailure(runOrlix({}), "a command is required; orlix --help lists them");
    expectFailure(
        runOrlix({"bogus"}),
        "there is no command \"bogus\"; there are catalog, params, nodemap, devices, validate, "
        "save, run");
    expectFailure(
        runOrlix({"bad\ncommand"}),
        "there is no command \"bad command\"; there are catalog, params, nodemap, devices, "
        "validate, save, run");
    expectFailure(runOrlix({"--json", "catalog"}),
                  "there is no option --json before a command; orlix --help lists them");
    expectFailure(runOrlix({"run", "r.json", "s.json"}),
                  "\"s.json\" is one argument too many; orlix run --help tells what run takes");
    expectFailure(runOrlix({"run", ""}), "RECIPE: expected the name of a file, found \"\"");
    expectFailure(runOrlix({"save", "r.json", "-o", ""}),
                  "--output: expected the name of a file, found \"\"");
    expectFailure(runOrlix({"run"}), "RECIPE is required");
    expectFailure(runOrlix({"params"}), "NODE is required");
    expectFailure(runOrlix({"run", "r.json", "--frames", "0"}),
                  "--frames: expected a whole number above 0, found \"0\"");
    expectFailure(runOrlix({"run", "r.json", "--frames", "-1"}),
                  "--frames: expected a whole number above 0, found \"-1\"");
    expectFailure(runOrlix({"run", "r.json", "--frames", "18446744073709551616"}),
                  "--frames: the number 18446744073709551616 is too large");
    expectFailure(runOrlix({"run", "r.json", "--out", ""}),
                  "--out: expected the name of a folder, found \"\"");
    expectFailure(runOrlix({"run", "r.json", "--seconds", "nan"}),
                  "--seconds: expected a number of seconds above 0, found \"nan\"");
    expectFailure(runOrlix({"run", "r.json", "--idle", "0"}),
                  "--idle: expected a number of seconds above 0, found \"0\"");
    for (const std::string count : {"-1", "1001", "two", ""}) {
        expectFailure(
            runOrlix({"run", "r.json", "--emulated-cameras", count}),
            "--emulated-cameras: expected a whole number from 0 to 1000, found \"" + count + "\"");
    }
    expectFailure(runOrlix({"run", "r.json", "--arg", "Mode"}), "--arg Mode: expected NAME=VALUE");
}

TEST(BadUsage, UnknownOptionIsNamed) {
    expectFailure(runOrlix({"run", "r.json", "--fast", "3"}),
                  "there is no option --fast; orlix run --help lists them");
}

TEST(BadUsage, WhatFollowsTheEndOfTheOptionsIsAnArgument) {
    expectFailure(runOrlix({"run", "r.json", "--", "--seconds", "1"}),
                  "\"--seconds\" is one argument too many; orlix run --help tells what run takes");
    expectFailure(runOrlix({"validate", "--", "-r.json"}),
                  "-r.json: can not read: No such file or directory");
    expectFailure(runOrlix({"validate", "-x", "--", "-x"}),
                  "there is no option -x; orlix validate --help lists them");
    expectFailure(
        runOrlix({"validate", "--", "-x", "-x"}),
        "\"-x\" is one argument too many; orlix validate --help tells what validate takes");
    expectFailure(runOrlix({"run", "r.json", "--fast", "--", "--fast"}),
                  "there is no option --fast; orlix run --help lists them");
}

TEST(BadUsage, CommandMayFollowTheEndOfTheOptions) {
    expectFailure(runOrlix({"--", "validate", "r.json"}),
                  "r.json: can not read: No such file or directory");
    expectFailure(runOrlix({"--"}), "a command is required; orlix --help lists them");
    const std::string commands = "catalog, params, nodemap, devices, validate, save, run";
    for (const char* const text : {"bogus", "--version"}) {
        expectFailure(runOrlix({"--", text}),
                      "there is no command \"" + std::string(text) + "\"; there are " + commands);
    }
    expectFailure(runOrlix({"bogus", "devices"}),
                  "there is no command \"bogus\"; there are " + commands);
}

TEST(BadUsage, HelpThatCanNotBeWrittenIsAFailure) {
    const std::string command = "'" + orlixFile() + "' --help > /dev/full";
    expectFailure(Program("/bin/sh", {"-c", command}).wait(), "can not write to standard output");
}

TEST(Usage, TellsItsVersion) {
    const ProgramResult result = runOrlix({"--version"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_TRUE(std::regex_match(result.out, std::regex("orlix [0-9]+\\.[0-9]+\\.[0-9]+\n")))
        << result.out;
}

}  // namespace
}  // namespace Orlix::Host::Testing
