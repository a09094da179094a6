// Brings nodes back to work that have lost their device: once a device is there that nobody uses, a
// lost node is stopped, freed, allocated anew and started, while all others go on. Driven by the
// thread that drives the graph.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "host/runstate.h"
#include "orlixdataprocessingcore/core/nodearguments.h"
#include "orlixdataprocessingcore/utils/signal.h"
#include "orlixhost/recipegraph.h"

namespace Orlix::Host {

// The graph must outlive this and be running. What goes wrong is a line of the log, once as long as
// it stays the same. The node is tried again with the next change of the devices and, since a
// device that is booting or that somebody else lets go of changes no list, after a while without
// one.
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
        std::chrono::milliseconds pause{};
        RunClock::time_point nextTry;
        std::string failure;  // that has been told
    };

    [[nodiscard]] bool isAnyDeviceFree() const;
    void tryAgain(std::size_t node, std::uint64_t changes);
    // Empty, or why it has failed; the node has no device then.
    [[nodiscard]] std::string bringBack(DataProcessing::Core::INode& node);

    RecipeGraph& graph_;
    const DataProcessing::Core::NodeArgumentCollection arguments_;
    std::vector<Watched> watched_;
    // Counted from 1 by the slot, which runs on any thread.
    std::atomic<std::uint64_t> changes_{1};
    DataProcessing::Utils::ScopedConnection connection_;
};

}  // namespace Orlix::Host
