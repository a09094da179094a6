// Emulated cameras that a recipe has taken without asking for them. Such a one is there in every
// run, and a recipe that takes any camera takes it before a real one: who runs that wants to be
// told.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "orlixhost/api.h"

namespace Orlix::Host {

class RecipeGraph;

// The graph must outlive it. For one thread.
class ORLIXHOST_API UnaskedCameras {
public:
    // Notes what the settings of the nodes ask for now.
    explicit UnaskedCameras(const RecipeGraph& graph);

    // The friendly names of the emulated cameras that are in use while no setting is one of their
    // properties, as a device class or a serial number.
    [[nodiscard]] std::vector<std::string> names() const;

private:
    const RecipeGraph& graph_;
    std::set<std::string> settings_;  // those that are texts
};

}  // namespace Orlix::Host
