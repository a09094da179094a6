// The commands that work on a recipe without running it: validate and save.
#include <filesystem>
#include <iostream>
#include <utility>

#include "commands.h"
#include "orlixhost/recipe.h"
#include "orlixhost/recipegraph.h"
#include "orlixhost/resourcepool.h"

namespace Orlix::App {

void validateRecipe(const CommonOptions& options, const std::string& recipe,
                    const std::vector<std::string>& sets) {
    Host::Recipe loaded = Host::Recipe::load(recipe);
    Host::RecipeGraph graph(std::move(loaded), loadPackages(options),
                            Host::createResourcePool(options.cameras));
    for (const std::string& assignment : sets) {
        graph.set(assignment);
    }
    graph.connect();
    std::cout << recipe << ": is valid: " << graph.recipe().nodes().size() << " nodes, "
              << graph.recipe().connections().size() << " connections; open outputs:";
    for (const Host::OpenOutput& output : graph.openOutputs()) {
        std::cout << " " << output.node << "." << output.pin;
    }
    std::cout << "\n";
}

void saveRecipe(const CommonOptions& options, const std::string& recipe, const std::string& target,
                const std::vector<std::string>& sets) {
    // Made absolute first, since a node's load may change the current directory.
    const std::filesystem::path file = std::filesystem::absolute(target);
    Host::Recipe loaded = Host::Recipe::load(recipe);
    Host::RecipeGraph graph(std::move(loaded), loadPackages(options),
                            Host::createResourcePool(options.cameras));
    for (const std::string& assignment : sets) {
        graph.set(assignment);
    }
    graph.connect();
    graph.saved(std::filesystem::weakly_canonical(file.parent_path()).string()).save(file.string());
}

}  // namespace Orlix::App
