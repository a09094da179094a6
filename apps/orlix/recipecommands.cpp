// The commands that work on a recipe without running it: validate and save.
#include <csignal>
#include <iostream>
#include <utility>

#include "commands.h"
#include "orlixhost/paths.h"
#include "orlixhost/recipe.h"
#include "orlixhost/recipegraph.h"
#include "orlixhost/resourcepool.h"

namespace Orlix::App {

void ignoreLostReaders() {
    std::signal(SIGPIPE, SIG_IGN);
}

std::unique_ptr<Host::RecipeGraph> openGraph(const CommonOptions& options, Host::Recipe recipe,
                                             const std::vector<std::string>& sets) {
    auto graph = std::make_unique<Host::RecipeGraph>(std::move(recipe), loadPackages(options),
                                                     Host::createResourcePool(options.cameras));
    for (const std::string& assignment : sets) {
        graph->set(assignment);
    }
    graph->connect();
    return graph;
}

namespace {

std::string counted(std::size_t number, const std::string& thing) {
    return std::to_string(number) + " " + thing + (number == 1 ? "" : "s");
}

}  // namespace

void validateRecipe(const CommonOptions& options, const std::string& recipe,
                    const std::vector<std::string>& sets) {
    const auto graph = openGraph(options, Host::Recipe::load(recipe), sets);
    std::cout << recipe << " is valid: " << counted(graph->recipe().nodes().size(), "node") << ", "
              << counted(graph->recipe().connections().size(), "connection") << "; open outputs:";
    for (const Host::OpenOutput& output : graph->openOutputs()) {
        std::cout << " " << output.node << "." << output.pin;
    }
    std::cout << "\n";
}

void saveRecipe(const CommonOptions& options, const std::string& recipe, const std::string& target,
                const std::vector<std::string>& sets) {
    ignoreLostReaders();
    // Made absolute first, since a node's load may change the current directory.
    const std::string file = Host::absolutePath(target);
    const std::string basePath = Host::Recipe::basePathOf(file);
    openGraph(options, Host::Recipe::load(recipe), sets)->saved(basePath).save(file);
}

}  // namespace Orlix::App
