// The program orlix: reads the command line, runs one command, and turns every failure into one
// message on stderr and exit code 1. It keeps the "C" locale, so that numbers read the same
// everywhere.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <cmath>
#include <csignal>
#include <functional>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "commands.h"
#include "console.h"
#include "gcbase/gcexception.h"
#include "orlixdataprocessingcore/utils/log.h"
#include "orlixhost/oneline.h"

namespace Orlix::App {
namespace {

constexpr const char* noOutput = "can not write to standard output";

// The command that the command line asks for, with its options.
struct CommandLine {
    CommonOptions common;
    RunCommandOptions run;
    std::string recipe;
    std::string target;
    std::string type;
    NodeMapOptions nodemap;
    std::vector<std::string> sets;
    bool json = false;
    std::function<void(Console&)> command;

    [[nodiscard]] Format format() const { return json ? Format::Json : Format::Text; }
};

std::string positiveSeconds(const std::string& text) {
    double value = 0;
    const bool isNumber = CLI::detail::lexical_cast(text, value);
    return isNumber && std::isfinite(value) && value > 0
               ? std::string()
               : "expected a number of seconds above 0, found \"" + text + "\"";
}

std::string positiveCount(const std::string& text) {
    std::uint64_t value = 0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (failure == std::errc::result_out_of_range) {
        return "the number " + text + " is too large";
    }
    const bool isCount = failure == std::errc() && end == text.data() + text.size();
    return isCount && value > 0 ? std::string()
                                : "expected a whole number above 0, found \"" + text + "\"";
}

std::string cameraCount(const std::string& text) {
    constexpr std::size_t most = 1000;
    std::size_t value = 0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool isCount = failure == std::errc() && end == text.data() + text.size();
    return isCount && value <= most ? std::string()
                                    : "expected a whole number from 0 to " + std::to_string(most) +
                                          ", found \"" + text + "\"";
}

std::string folderName(const std::string& text) {
    return text.empty() ? "expected the name of a folder, found \"\"" : std::string();
}

std::string fileName(const std::string& text) {
    return text.empty() ? "expected the name of a file, found \"\"" : std::string();
}

CLI::App* addCommand(CLI::App& app, CommandLine& line, const char* name, const char* description,
                     std::function<void(Console&)> command) {
    CLI::App* result = app.add_subcommand(name, description);
    result->allow_extras();  // refused with a message of our own
    result
        ->add_option("--package", line.common.packages,
                     "Package of nodes to load in place of the one beside the program")
        ->type_name("FILE")
        ->allow_extra_args(false);
    result->add_flag("--verbose", line.common.verbose,
                     "Show log lines as they come, also those for debugging");
    result->callback([&line, command = std::move(command)] { line.command = command; });
    return result;
}

void addSets(CLI::App* command, std::vector<std::string>& sets) {
    command->add_option("--set", sets, "Set a parameter; may be repeated")
        ->type_name("NODE.PARAM=VALUE")
        ->allow_extra_args(false);
}

void addCameraOptions(CLI::App* command, CommonOptions& common) {
    Host::CameraOptions& cameras = common.cameras;
    const auto noteChoice = [&common](const std::string&) { common.choosesEmulatedCameras = true; };
    command
        ->add_option("--emulated-cameras", cameras.emulatedCameras,
                     "Number of emulated cameras, 1 by default")
        ->type_name("N")
        ->check(cameraCount)
        ->each(noteChoice);
    command
        ->add_option(
            "--fault", cameras.faults,
            "What goes wrong with the emulated cameras: a fault script, or a file with one")
        ->type_name("SCRIPT|@FILE")
        ->each(noteChoice);
    command->add_flag_callback(
        "--no-real-cameras", [&cameras] { cameras.realCameras = Host::RealCameras::LeftOut; },
        "Don't look for cameras on the network and at USB ports");
}

void addInspectCommands(CLI::App& app, CommandLine& line) {
    auto* catalog = addCommand(app, line, "catalog", "List the nodes of the package",
                               [&](Console&) { showCatalog(line.common, line.format()); });
    catalog->add_flag("--json", line.json, "Print the package's own document");

    auto* params = addCommand(app, line, "params", "Print the parameters of a node", [&](Console&) {
        showParameters(line.common, line.type, line.format());
    });
    params->add_option("NODE", line.type, "Type of the node, as in the catalog")->required();
    params->add_flag("--json", line.json, "Print JSON");
    addCameraOptions(params, line.common);

    auto* nodemap =
        addCommand(app, line, "nodemap", "Print the feature tree of a GenICam description",
                   [&](Console&) { showNodeMap(line.nodemap, line.format()); });
    nodemap->add_option("FILE", line.nodemap.file, "Description, as XML or zipped")
        ->required()
        ->check(fileName);
    auto* json = nodemap->add_flag("--json", line.json, "Print JSON");
    nodemap
        ->add_option(
            "--memory", line.nodemap.memory,
            "Bytes of the port, all zero (64 KiB, growing as addressed), or a file of them")
        ->type_name("N|FILE");
    nodemap
        ->add_option("--steps", line.nodemap.steps,
                     "Run the steps of a file and print their results in place of the tree")
        ->type_name("FILE")
        ->excludes(json);

    auto* devices = addCommand(app, line, "devices", "List the cameras that can be used",
                               [&](Console&) { showDevices(line.common, line.format()); });
    devices->add_flag("--json", line.json, "Print JSON");
    addCameraOptions(devices, line.common);
}

void addRecipeCommands(CLI::App& app, CommandLine& line) {
    auto* validate =
        addCommand(app, line, "validate", "Check a recipe without running it",
                   [&](Console&) { validateRecipe(line.common, line.recipe, line.sets); });
    validate->add_option("RECIPE", line.recipe, "Recipe file")->required()->check(fileName);
    addSets(validate, line.sets);
    addCameraOptions(validate, line.common);

    auto* save =
        addCommand(app, line, "save", "Load a recipe into its nodes and save it anew",
                   [&](Console&) { saveRecipe(line.common, line.recipe, line.target, line.sets); });
    save->add_option("RECIPE", line.recipe, "Recipe file")->required()->check(fileName);
    save->add_option("-o,--output", line.target, "File to write; it is replaced as a whole")
        ->type_name("FILE")
        ->required()
        ->check(fileName);
    addSets(save, line.sets);
    addCameraOptions(save, line.common);
}

void addRunCommand(CLI::App& app, CommandLine& line) {
    RunCommandOptions& options = line.run;
    auto* run = addCommand(app, line, "run", "Run a recipe, until Ctrl-C if nothing else ends it",
                           [&](Console& console) {
                               options.format = line.format();
                               runRecipe(line.common, options, console);
                           });
    run->add_option("RECIPE", options.recipe, "Recipe file")->required()->check(fileName);
    addSets(run, options.sets);
    run->add_option("--arg", options.arguments, "Start argument; may be repeated")
        ->type_name("NAME=VALUE")
        ->allow_extra_args(false);
    run->add_option("--frames", options.run.frames,
                    "End after N values on the first open image output")
        ->type_name("N")
        ->check(positiveCount);
    run->add_option("--seconds", options.run.seconds, "End after S seconds")
        ->type_name("S")
        ->check(positiveSeconds);
    run->add_option("--idle", options.run.idle, "End when no value has come for S seconds")
        ->type_name("S")
        ->check(positiveSeconds);
    run->add_option("--out", options.run.outFolder,
                    "Write the values of all open outputs to a folder")
        ->type_name("DIR")
        ->check(folderName);
    addCameraOptions(run, line.common);
    run->add_flag("--recover", options.run.recover,
                  "A node that loses its camera goes on when one for it is there again");
    run->add_flag("--json", line.json, "Print the result as one JSON object, the last line");
    run->add_flag("--quiet", options.quiet, "No live line and no summary");
}

// Standard output may be a file on a full disk.
bool flushOutput() {
    std::cout.flush();
    return std::cout && std::fflush(stdout) == 0;
}

int execute(const CommandLine& line) {
    using DataProcessing::Utils::Severitiy;
    if (line.common.verbose) {
        DataProcessing::Utils::setLogLevel(Severitiy::Debug);
    }
    Console console(line.common.verbose ? Console::LogMode::ShowAtOnce
                                        : Console::LogMode::HoldBack);
    try {
        line.command(console);
        if (!flushOutput()) {
            throw GenICam::RuntimeException(noOutput, __FILE__, __LINE__);
        }
        console.start();
        return 0;
    } catch (const GenICam::GenericException& error) {
        console.showError(error.GetDescription());
    } catch (const std::exception& error) {
        console.showError(error.what());
    } catch (...) {
        console.showError("an exception of an unknown class");
    }
    return 1;
}

int refuse(const std::string& message) {
    std::cerr << "orlix: " << Host::oneLine(message) << "\n";
    return 1;
}

std::string namesOfCommands(const CLI::App& app) {
    std::string names;
    for (const CLI::App* command : app.get_subcommands(nullptr)) {
        names += (names.empty() ? "" : ", ") + command->get_name();
    }
    return names;
}

bool isOption(const std::string& text) {
    return text.size() > 1 && text.front() == '-';
}

struct Leftover {
    std::string text;
    bool isOption;
};

enum class Options { MayCome, HaveEnded };

// The first of what nothing has taken. Nothing behind "--", which is no part of it, is an option.
std::optional<Leftover> firstLeftover(const std::vector<std::string>& rest, Options options) {
    for (const std::string& text : rest) {
        if (text != "--") {
            return Leftover{text, options == Options::MayCome && isOption(text)};
        }
        options = Options::HaveEnded;
    }
    return std::nullopt;
}

std::string unexpectedBeforeCommand(const CLI::App& app) {
    const auto leftover = firstLeftover(app.remaining(), Options::MayCome);
    if (!leftover) {
        return {};
    }
    return leftover->isOption ? "there is no option " + leftover->text +
                                    " before a command; orlix --help lists them"
                              : "there is no command \"" + leftover->text + "\"; there are " +
                                    namesOfCommands(app);
}

std::string unexpectedOf(const CLI::App& app, const CLI::App& command) {
    auto leftover = firstLeftover(command.remaining(), Options::MayCome);
    if (!leftover) {
        // What follows its "--" when it has all its arguments is given back.
        leftover = firstLeftover(app.remaining(), Options::HaveEnded);
    }
    if (!leftover) {
        return {};
    }
    const std::string& name = command.get_name();
    return leftover->isOption
               ? "there is no option " + leftover->text + "; orlix " + name + " --help lists them"
               : "\"" + leftover->text + "\" is one argument too many; orlix " + name +
                     " --help tells what " + name + " takes";
}

// What the command line has that nothing takes, or empty.
std::string unexpected(const CLI::App& app, const std::vector<std::string>& arguments) {
    const auto commands = app.get_subcommands();
    const bool beginsWithCommand =
        !commands.empty() && arguments.front() == commands.front()->get_name();
    return beginsWithCommand ? unexpectedOf(app, *commands.front()) : unexpectedBeforeCommand(app);
}

// Without a "--" before the command, which ends the options of the program itself only.
std::vector<std::string> argumentsOf(const CLI::App& app, int argc, char** argv) {
    std::vector<std::string> arguments(argv + std::min(argc, 1), argv + argc);
    const auto commands = app.get_subcommands(nullptr);
    const bool isBeforeCommand =
        arguments.size() > 1 && arguments[0] == "--" &&
        std::any_of(commands.begin(), commands.end(),
                    [&](const CLI::App* command) { return command->get_name() == arguments[1]; });
    if (isBeforeCommand) {
        arguments.erase(arguments.begin());
    }
    return arguments;
}

int run(int argc, char** argv) {
    CLI::App app("Runs recipes of image processing nodes", "orlix");
    app.require_subcommand(0, 1);
    app.fallthrough(false);
    app.allow_extras();
    app.set_version_flag("--version", "orlix " ORLIX_VERSION, "Print the version");
    CommandLine line;
    addInspectCommands(app, line);
    addRecipeCommands(app, line);
    addRunCommand(app, line);
    const std::vector<std::string> arguments = argumentsOf(app, argc, argv);
    try {
        app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
    } catch (const CLI::Success& success) {
        const int code = app.exit(success);
        return flushOutput() ? code : refuse(noOutput);
    } catch (const CLI::ParseError& error) {
        return refuse(error.what());
    }
    if (const std::string message = unexpected(app, arguments); !message.empty()) {
        return refuse(message);
    }
    // Asked for only now, so that a command that is unknown has been named.
    return line.command ? execute(line) : refuse("a command is required; orlix --help lists them");
}

}  // namespace
}  // namespace Orlix::App

int main(int argc, char** argv) {
    // A file that may not grow further is an error of a write, with a message, and no signal.
    std::signal(SIGXFSZ, SIG_IGN);
    return Orlix::App::run(argc, argv);
}
