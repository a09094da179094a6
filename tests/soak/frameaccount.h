// What became of the frames of a run: at the cameras, and at the open outputs of the graph.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "orlixhost/runner.h"

namespace Orlix::DataProcessing::Core {
class INode;
}

namespace Soak {

// The counts of the camera object behind a node, over all devices that it had.
struct CameraCounts {
    std::int64_t sent = 0;
    std::int64_t delivered = 0;
    std::int64_t failed = 0;
    std::int64_t skipped = 0;
    std::int64_t lostForBuffer = 0;
    std::int64_t eventsLost = 0;
};

[[nodiscard]] CameraCounts readCameraCounts(Orlix::DataProcessing::Core::INode& node);

// One camera with the outputs that its values come to.
struct FrameAccount {
    std::string name;
    CameraCounts camera;
    // How often a run of the node ended: a frame that was handed over then can find it stopped.
    std::int64_t ends = 0;
    std::int64_t dropped = 0;  // by the graph, at most
    Orlix::Host::OutputReport images;
    Orlix::Host::OutputReport chunks;
    Orlix::Host::OutputReport events;
};

// A line for each sum that doesn't come out.
[[nodiscard]] std::vector<std::string> findMistakes(const FrameAccount& account);

}  // namespace Soak
