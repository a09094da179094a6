#include "console.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <utility>
#include <vector>

#include "orlixdataprocessingcore/utils/log.h"

namespace Orlix::App {
namespace {

using DataProcessing::Utils::LogLine;
using DataProcessing::Utils::Severitiy;

// Enough to see what went on, and a bound for a command that logs without end.
constexpr std::size_t maxHeldLines = 1000;
constexpr const char* clearLine = "\r\033[K";

const char* nameOf(Severitiy severity) {
    switch (severity) {
        case Severitiy::Error:
            return "error";
        case Severitiy::Warning:
            return "warning";
        case Severitiy::Information:
            return "information";
        case Severitiy::Debug:
            return "debug";
        default:
            return "trace";
    }
}

// The last column stays free: some terminals wrap as soon as it is filled.
std::string fitted(const std::string& text) {
    winsize size{};
    if (::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) {
        return text;
    }
    return text.substr(0, size.ws_col - 1U);
}

void write(const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), stderr);
}

}  // namespace

struct Console::State {
    void addLogLine(std::string line) {
        const std::lock_guard lock(mutex);
        if (mode == LogMode::ShowAtOnce) {
            write((hasLiveLine ? clearLine : "") + line);
            hasLiveLine = false;
        } else if (held.size() < maxHeldLines) {
            held.push_back(std::move(line));
        }
    }

    std::mutex mutex;
    LogMode mode = LogMode::HoldBack;
    std::vector<std::string> held;
    bool hasLiveLine = false;
};

Console::Console(LogMode mode) : state_(std::make_shared<State>()) {
    state_->mode = mode;
    DataProcessing::Utils::setLogSink([state = state_](const LogLine& line) {
        state->addLogLine(std::string(nameOf(line.severity)) + ": " + line.category.str() + ": " +
                          line.text.str() + "\n");
    });
}

Console::~Console() {
    DataProcessing::Utils::setLogSink({});
    showLiveLine({});
}

void Console::start() {
    const std::lock_guard lock(state_->mutex);
    state_->mode = LogMode::ShowAtOnce;
    for (const std::string& line : state_->held) {
        write(line);
    }
    state_->held.clear();
}

void Console::showLiveLine(const std::string& text) {
    const std::lock_guard lock(state_->mutex);
    if (state_->hasLiveLine || !text.empty()) {
        write(clearLine + fitted(text));
        std::fflush(stderr);
    }
    state_->hasLiveLine = !text.empty();
}

bool Console::canShowLiveLine() {
    const char* const kind = std::getenv("TERM");
    const bool canClear = kind != nullptr && *kind != '\0' && std::string(kind) != "dumb";
    return canClear && ::isatty(STDERR_FILENO) != 0;
}

void Console::showError(const std::string& message) {
    showLiveLine({});
    const std::lock_guard lock(state_->mutex);
    write("orlix: " + message + "\n");
}

}  // namespace Orlix::App
