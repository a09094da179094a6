// A recipe with life in it: its nodes, made by packages and loaded with their settings, and the
// graph that connects them.
//
// One thread builds and drives it. Nodes are loaded one after another, since a load changes the
// process's current directory; it is put back after each. All failures are RuntimeException with
// one line that begins with the recipe's name.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "orlixhost/api.h"
#include "orlixhost/package.h"
#include "orlixhost/recipe.h"

namespace Orlix::DataProcessing::Core {
class Graph;
class NodeArgumentCollection;
}  // namespace Orlix::DataProcessing::Core

namespace Orlix::Host {

// A pin that no connection takes.
struct OpenOutput {
    std::string node;
    std::string pin;
    bool isImage = false;
};

class ORLIXHOST_API RecipeGraph {
public:
    // Creates the nodes and loads their settings. A key of the settings that its node neither reads
    // nor writes is an error.
    RecipeGraph(Recipe recipe, const PackageList& packages, const Package::PoolPointer& pool);
    // Stops the graph and frees what is still allocated.
    ~RecipeGraph();
    RecipeGraph(const RecipeGraph&) = delete;
    RecipeGraph& operator=(const RecipeGraph&) = delete;

    // "Node.Parameter=Value". A text that the node doesn't take is a line of the log.
    void set(const std::string& assignment);
    // Makes the connections and checks the whole. Once, after the last change of the parameters,
    // since these decide which pins there are.
    void connect();

    [[nodiscard]] const Recipe& recipe() const noexcept { return recipe_; }
    // In the recipe's order of nodes and the nodes' order of pins.
    [[nodiscard]] std::vector<OpenOutput> openOutputs() const;
    [[nodiscard]] DataProcessing::Core::Graph& graph() noexcept { return *graph_; }
    // In the recipe's order.
    [[nodiscard]] const std::vector<Package::NodePointer>& nodes() const noexcept { return nodes_; }
    // What the nodes were created with.
    [[nodiscard]] DataProcessing::Core::IResourcePool& pool() const noexcept { return *pool_; }

    // Starts the graph. Throws RuntimeException that names the node that could not start, with its
    // text parameters; the graph is stopped then.
    void start(const DataProcessing::Core::NodeArgumentCollection& arguments);

    // The recipe with the settings that the nodes have now, for a file in that folder.
    [[nodiscard]] Recipe saved(const std::string& basePath) const;

private:
    void createNodes(const PackageList& packages);
    void loadSettings(std::size_t index);
    [[nodiscard]] std::string startedPlace(std::size_t index) const;
    [[nodiscard]] std::size_t indexOf(const std::string& name) const;

    Recipe recipe_;
    const Package::PoolPointer pool_;
    std::vector<Package::NodePointer> nodes_;
    std::vector<std::string> uuids_;
    // Behind the nodes, so that it is destroyed first.
    std::unique_ptr<DataProcessing::Core::Graph> graph_;
};

}  // namespace Orlix::Host
