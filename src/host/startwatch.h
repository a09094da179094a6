// Finds out which node's start has failed, since the exception itself does not tell.
#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <vector>

#include "orlixdataprocessingcore/core/inode.h"

namespace Orlix::Host {

// Watches the nodes of a graph from before its start until it is destroyed; the nodes must live
// longer. Its slots only note what has happened, as slots may run on any thread.
class StartWatch {
public:
    explicit StartWatch(const std::vector<std::shared_ptr<DataProcessing::Core::INode>>& nodes);
    ~StartWatch();
    StartWatch(const StartWatch&) = delete;
    StartWatch& operator=(const StartWatch&) = delete;

    // The index of the node that has begun to start and never ran; the number of nodes if none has.
    [[nodiscard]] std::size_t failedNode() const;

private:
    struct Progress {
        std::atomic<bool> hasBegun{false};
        std::atomic<bool> hasRun{false};
    };

    std::vector<std::shared_ptr<Progress>> progress_;
    std::vector<DataProcessing::Utils::ScopedConnection> connections_;
};

}  // namespace Orlix::Host
