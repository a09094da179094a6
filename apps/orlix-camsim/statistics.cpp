#include "statistics.h"

#include <utility>

namespace Orlix::Camsim {

std::string Statistics::ToJson() const {
    const std::pair<const char*, const Count&> counts[] = {
        {"commands", commands},
        {"failedCommands", failedCommands},
        {"repeatedCommands", repeatedCommands},
        {"ignoredDatagrams", ignoredDatagrams},
        {"controlLosses", controlLosses},
        {"frames", frames},
        {"packets", packets},
        {"bytes", bytes},
        {"droppedPackets", droppedPackets},
        {"duplicatedPackets", duplicatedPackets},
        {"movedPackets", movedPackets},
        {"resendRequests", resendRequests},
        {"resentPackets", resentPackets},
        {"deniedPackets", deniedPackets},
        {"sendErrors", sendErrors},
        {"testPackets", testPackets},
        {"events", events},
        {"eventRetries", eventRetries},
        {"lostEvents", lostEvents},
    };
    std::string text = "{";
    for (const auto& [name, count] : counts) {
        text += std::string(text.size() > 1 ? ", \"" : "\"") + name +
                "\": " + std::to_string(count.load());
    }
    return text + "}";
}

}  // namespace Orlix::Camsim
