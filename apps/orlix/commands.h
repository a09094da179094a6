// The commands of the program. Each throws for a failure; main prints the one message.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "orlixhost/package.h"
#include "orlixhost/resourcepool.h"
#include "orlixhost/runner.h"

namespace Orlix::Host {
class Recipe;
class RecipeGraph;
}  // namespace Orlix::Host

namespace Orlix::App {

class Console;

enum class Format { Text, Json };

struct CommonOptions {
    // Packages in place of the one beside the program.
    std::vector<std::string> packages;
    bool verbose = false;
    // Of the pool that nodes are made with.
    Host::CameraOptions cameras{1, {}};
    // Whether somebody has asked for emulated cameras, or for none, in place of the one.
    bool choosesEmulatedCameras = false;
};

struct RunCommandOptions {
    std::string recipe;
    std::vector<std::string> sets;
    std::vector<std::string> arguments;
    Format format = Format::Text;
    bool quiet = false;
    Host::RunOptions run;
};

struct NodeMapOptions {
    std::string file;
    std::string memory;  // a number of bytes or a file
    std::string steps;   // a file; empty prints the tree
};

// A reader that goes away is an error of a write then, and no signal.
void ignoreLostReaders();
[[nodiscard]] Host::PackageList loadPackages(const CommonOptions& options);
// The recipe's nodes with their settings, those of `sets` included, connected and checked.
[[nodiscard]] std::unique_ptr<Host::RecipeGraph> openGraph(const CommonOptions& options,
                                                           Host::Recipe recipe,
                                                           const std::vector<std::string>& sets);

void showCatalog(const CommonOptions& options, Format format);
void showParameters(const CommonOptions& options, const std::string& type, Format format);
void showNodeMap(const NodeMapOptions& options, Format format);
void showDevices(const CommonOptions& options, Format format);
void validateRecipe(const CommonOptions& options, const std::string& recipe,
                    const std::vector<std::string>& sets);
void saveRecipe(const CommonOptions& options, const std::string& recipe, const std::string& target,
                const std::vector<std::string>& sets);
void runRecipe(const CommonOptions& options, RunCommandOptions command, Console& console);

}  // namespace Orlix::App
