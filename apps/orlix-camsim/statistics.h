// What the simulated camera did, counted exactly, so that a test can compare it with what the other
// end saw. Any thread may count and read.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

namespace Orlix::Camsim {

struct Statistics {
    using Count = std::atomic<std::uint64_t>;

    Count commands{0};           // datagrams that were taken as commands
    Count failedCommands{0};     // of these, answered with an error
    Count repeatedCommands{0};   // of these, answered a second time without being executed
    Count ignoredDatagrams{0};   // no commands at all, or came while the device was silent
    Count controlLosses{0};      // heartbeats that didn't come in time
    Count frames{0};             // sent, whole or in part
    Count packets{0};            // of frames, put on the wire; without those that were resent
    Count bytes{0};              // of these packets, with the headers of GVSP
    Count droppedPackets{0};     // left out by a fault, first passes and resends
    Count duplicatedPackets{0};  // sent twice
    Count movedPackets{0};       // sent behind later ones
    Count resendRequests{0};
    Count resentPackets{0};
    Count deniedPackets{0};  // asked for, but not available
    Count sendErrors{0};     // messages that the system refused
    Count testPackets{0};
    Count events{0};  // messages that were sent, each counted once
    Count eventRetries{0};
    Count lostEvents{0};  // never acknowledged

    // One line of JSON.
    [[nodiscard]] std::string ToJson() const;
};

}  // namespace Orlix::Camsim
