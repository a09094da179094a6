// What a node logs while the host calls it, told with the place: the node's own lines name neither
// the recipe nor the node nor what was asked of it.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "orlixdataprocessingcore/utils/logdiversion.h"

namespace Orlix::Host {

// Holds the lines of the calling thread back while it lives, and then passes them on unless they
// are dropped. Of one thread.
class NodeLines {
public:
    // Asked with every line for what is to stand before it; nothing may.
    using Place = std::function<std::string()>;

    explicit NodeLines(Place place = {});
    ~NodeLines();
    NodeLines(const NodeLines&) = delete;
    NodeLines& operator=(const NodeLines&) = delete;

    void drop() noexcept { lines_.clear(); }
    // Of the errors among the lines the messages that say more than the text, which is what became
    // of them.
    [[nodiscard]] std::vector<std::string> causesOf(const std::string& text) const;

private:
    std::vector<DataProcessing::Utils::LogLine> lines_;
    std::optional<DataProcessing::Utils::LogDiversion> diversion_;
};

}  // namespace Orlix::Host
