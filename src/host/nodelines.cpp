#include "host/nodelines.h"

#include <algorithm>
#include <utility>

#include "orlixhost/oneline.h"

namespace Orlix::Host {
namespace {

namespace Utils = DataProcessing::Utils;

Utils::LogLine placed(Utils::LogLine line, const std::string& place) {
    if (!place.empty()) {
        line.text = GenICam::gcstring(place + ": " + line.text.str());
    }
    return line;
}

// Behind `Message: ` and without its quotes; empty without one.
std::string messageOf(const std::string& line) {
    static const std::string mark = "Message: ";
    const std::size_t found = line.find(mark);
    if (found == std::string::npos) {
        return {};
    }
    std::string message = line.substr(found + mark.size());
    if (message.size() > 1 && message.front() == '"' && message.back() == '"') {
        message = message.substr(1, message.size() - 2);
    }
    return oneLine(message);
}

}  // namespace

NodeLines::NodeLines(Place place) {
    diversion_.emplace([this, place = std::move(place)](const Utils::LogLine& line) {
        lines_.push_back(placed(line, place ? place() : std::string()));
    });
}

NodeLines::~NodeLines() {
    diversion_.reset();
    try {
        for (const Utils::LogLine& line : lines_) {
            Utils::createLogEntry(line.severity, Utils::getCatId(line.category.c_str()), "%s",
                                  line.text.c_str());
        }
    } catch (...) {
        // There is no memory left to tell of it.
    }
}

std::vector<std::string> NodeLines::causesOf(const std::string& text) const {
    std::vector<std::string> causes;
    for (const Utils::LogLine& line : lines_) {
        const std::string message = messageOf(line.text.str());
        const bool isNews = !message.empty() && message.find(text) == std::string::npos &&
                            text.find(message) == std::string::npos;
        if (line.severity == Utils::Severitiy::Error && isNews &&
            std::find(causes.begin(), causes.end(), message) == causes.end()) {
            causes.push_back(message);
        }
    }
    return causes;
}

}  // namespace Orlix::Host
