// The command run: a recipe from its start to its orderly end.
#include <cstdio>
#include <iostream>
#include <utility>

#include "commands.h"
#include "console.h"
#include "gcbase/gcexception.h"
#include "orlixhost/recipegraph.h"
#include "orlixhost/resourcepool.h"
#include "orlixhost/unaskedcameras.h"
#include "signalwatch.h"

namespace Orlix::App {
namespace {

[[noreturn]] void fail(const std::string& message) {
    throw GenICam::RuntimeException(message.c_str(), __FILE__, __LINE__);
}

void addArguments(const std::vector<std::string>& texts, Host::RunOptions& options) {
    for (const std::string& text : texts) {
        const std::size_t equals = text.find('=');
        if (equals == std::string::npos || equals == 0) {
            fail("--arg " + text + ": expected NAME=VALUE");
        }
        options.arguments.emplace_back(text.substr(0, equals), text.substr(equals + 1));
    }
}

std::string liveLine(const Host::RunProgress& progress) {
    char text[160];
    std::snprintf(
        text, sizeof text, "%8.1f s  %llu frames  %.1f /s  %llu errors  queues %zu of %zu",
        progress.seconds, static_cast<unsigned long long>(progress.frames), progress.rate,
        static_cast<unsigned long long>(progress.errors), progress.queued, progress.capacity);
    return text;
}

void printReport(const Host::RunReport& report) {
    for (const Host::OutputReport& output : report.outputs) {
        std::printf("%s.%s: %llu frames, %llu errors, %.2f /s\n", output.node.c_str(),
                    output.pin.c_str(), static_cast<unsigned long long>(output.frames),
                    static_cast<unsigned long long>(output.errors), output.rate);
    }
    std::printf("%.3f s, %llu dropped\n", report.seconds,
                static_cast<unsigned long long>(report.dropped));
}

std::string unaskedNotice(const std::string& recipe, const std::string& camera) {
    return recipe + ": takes the emulated camera " + camera +
           ", since it asks for no other; --emulated-cameras 0 leaves real ones only, 1 is without "
           "this line";
}

}  // namespace

void runRecipe(const CommonOptions& options, RunCommandOptions command, Console& console) {
    addArguments(command.arguments, command.run);
    ignoreLostReaders();
    // Before the watch: a recipe that comes through a pipe may never end, but for a signal.
    Host::Recipe loaded = Host::Recipe::load(command.recipe);
    SignalWatch signals;
    const auto graph = openGraph(options, std::move(loaded), command.sets);
    Host::Runner runner(*graph, command.run);
    // Gone before the runner is, also when the run throws.
    const SignalHandler stopRun(signals, [&runner] { runner.requestStop(); });

    Host::RunObserver observer;
    const Host::UnaskedCameras unasked(*graph);
    observer.onStarted = [&] {
        console.start();
        if (!options.choosesEmulatedCameras) {
            for (const std::string& camera : unasked.names()) {
                console.showNotice(unaskedNotice(command.recipe, camera));
            }
        }
    };
    if (Console::canShowLiveLine() && !command.quiet) {
        observer.onProgress = [&console](const Host::RunProgress& progress) {
            console.showLiveLine(liveLine(progress));
        };
    }
    const Host::RunReport report = runner.run(observer);
    console.showLiveLine({});
    if (command.format == Format::Json) {
        std::cout << Host::reportAsJson(report) << "\n";
    } else if (!command.quiet) {
        printReport(report);
    }
}

}  // namespace Orlix::App
