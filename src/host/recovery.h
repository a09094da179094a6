// Brings nodes back to work that have lost their device: once a device is there that nobody uses, a
// lost node is stopped, freed, allocated anew and started, while all others go on. Driven by the
// thread that drives the graph.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

#include "orlixdataprocessingcore/core/nodearguments.h"
#include "orlixdataprocessingcore/utils/signal.h"
#include "orlixhost/recipegraph.h"

namespace Orlix::Host {

// The graph must outlive this and be running. What goes wrong is a line of the log, and the node is
// tried again with the next change of the devices.
class Recovery {
public:
    Recovery(RecipeGraph& graph, DataProcessing::Core::NodeArgumentCollection arguments);
    Recovery(const Recovery&) = delete;
    Recovery& operator=(const Recovery&) = delete;

    // To be called again and again; does nothing while no node has lost its device.
    void step();

private:
    struct Watched {
        bool isLost = false;
        std::uint64_t triedAt = 0;  // the number of changes then
    };

    [[nodiscard]] bool isAnyDeviceFree() const;
    [[nodiscard]] bool bringBack(std::size_t node);

    RecipeGraph& graph_;
    const DataProcessing::Core::NodeArgumentCollection arguments_;
    std::vector<Watched> watched_;
    // Counted from 1 by the slot, which runs on any thread.
    std::atomic<std::uint64_t> changes_{1};
    DataProcessing::Utils::ScopedConnection connection_;
};

}  // namespace Orlix::Host
