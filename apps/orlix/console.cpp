#include "console.h"

#include <unistd.h>

#include <cstdio>
#include <utility>

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

void write(const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), stderr);
}

}  // namespace

Console::Console(LogMode mode) : mode_(mode) {
    DataProcessing::Utils::setLogSink([this](const LogLine& line) {
        addLogLine(std::string(nameOf(line.severity)) + ": " + line.category.str() + ": " +
                   line.text.str() + "\n");
    });
}

Console::~Console() {
    DataProcessing::Utils::setLogSink({});
    showLiveLine({});
}

void Console::addLogLine(std::string line) {
    const std::lock_guard lock(mutex_);
    if (mode_ == LogMode::ShowAtOnce) {
        write((hasLiveLine_ ? clearLine : "") + line);
        hasLiveLine_ = false;
    } else if (held_.size() < maxHeldLines) {
        held_.push_back(std::move(line));
    }
}

void Console::start() {
    const std::lock_guard lock(mutex_);
    mode_ = LogMode::ShowAtOnce;
    for (const std::string& line : held_) {
        write(line);
    }
    held_.clear();
}

void Console::showLiveLine(const std::string& text) {
    const std::lock_guard lock(mutex_);
    if (hasLiveLine_ || !text.empty()) {
        write(clearLine + text);
        std::fflush(stderr);
    }
    hasLiveLine_ = !text.empty();
}

bool Console::isTerminal() {
    return ::isatty(STDERR_FILENO) != 0;
}

void Console::showError(const std::string& message) {
    showLiveLine({});
    const std::lock_guard lock(mutex_);
    write("orlix: " + message + "\n");
}

}  // namespace Orlix::App
