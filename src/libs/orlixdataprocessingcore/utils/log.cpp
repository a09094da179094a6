#include "orlixdataprocessingcore/utils/log.h"

#include <spdlog/details/log_msg.h>
#include <spdlog/sinks/stdout_color_sinks.h>

#include <array>
#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <deque>
#include <mutex>
#include <string>
#include <utility>

#include "orlixdataprocessingcore/utils/logdiversion.h"

namespace Orlix::DataProcessing::Utils {

// The innermost one of a thread.
struct ActiveDiversion {
    static thread_local LogDiversion* current;

    // False if there is none.
    static bool take(const LogLine& line) {
        struct Restored {
            LogDiversion* const diversion = current;
            ~Restored() { current = diversion; }
        };
        const Restored restored;
        if (restored.diversion == nullptr) {
            return false;
        }
        current = restored.diversion->outer_;
        restored.diversion->sink_(line);
        return true;
    }
};

thread_local LogDiversion* ActiveDiversion::current = nullptr;

namespace {

// Made at first use and never destroyed: static initialisers and threads that outlive main log too.
struct LogState {
    std::atomic<Severitiy> level{Severitiy::Warning};
    std::mutex mutex;                          // guards what follows; not held while a sink writes
    std::deque<GenICam::gcstring> categories;  // a handle is an index
    std::shared_ptr<const LogSink> sink;       // null for stderr
};

LogState& getState() {
    static LogState& state = *new LogState();
    return state;
}

spdlog::level::level_enum getSpdlogLevel(Severitiy severity) {
    switch (severity) {
        case Severitiy::Error:
            return spdlog::level::err;
        case Severitiy::Warning:
            return spdlog::level::warn;
        case Severitiy::Information:
            return spdlog::level::info;
        case Severitiy::Debug:
            return spdlog::level::debug;
        default:
            return spdlog::level::trace;
    }
}

void writeToStderr(const LogLine& line) {
    static auto& sink = *new spdlog::sinks::stderr_color_sink_mt();
    sink.log(spdlog::details::log_msg(line.category.c_str(), getSpdlogLevel(line.severity),
                                      line.text.c_str()));
}

__attribute__((format(printf, 1, 0))) GenICam::gcstring formatText(const char* format,
                                                                   std::va_list arguments) {
    std::va_list again;
    va_copy(again, arguments);
    std::array<char, 512> buffer;
    const int length = std::vsnprintf(buffer.data(), buffer.size(), format, arguments);
    std::string text;
    if (length > 0) {
        const auto size = static_cast<std::size_t>(length);
        text.assign(buffer.data(), std::min(size, buffer.size() - 1));
        if (size >= buffer.size()) {
            text.resize(size);
            std::vsnprintf(text.data(), size + 1, format, again);
        }
    }
    va_end(again);
    return GenICam::gcstring(std::move(text));
}

std::shared_ptr<const LogSink> exchangeSink(std::shared_ptr<const LogSink> sink) {
    LogState& state = getState();
    const std::lock_guard<std::mutex> guard(state.mutex);
    return std::exchange(state.sink, std::move(sink));
}

}  // namespace

CatId getCatId(const char* name) {
    const GenICam::gcstring text(name);
    LogState& state = getState();
    const std::lock_guard<std::mutex> guard(state.mutex);
    for (std::size_t i = 0; i < state.categories.size(); ++i) {
        if (state.categories[i] == text) {
            return i;
        }
    }
    state.categories.push_back(text);
    return state.categories.size() - 1;
}

void createLogEntry(Severitiy severity, CatId category, const char* format, ...) {
    LogState& state = getState();
    if (severity > state.level.load(std::memory_order_relaxed)) {
        return;
    }
    LogLine line;
    line.severity = severity;
    std::va_list arguments;
    va_start(arguments, format);
    line.text = formatText(format, arguments);
    va_end(arguments);

    std::shared_ptr<const LogSink> sink;
    {
        const std::lock_guard<std::mutex> guard(state.mutex);
        sink = state.sink;
        if (category < state.categories.size()) {
            line.category = state.categories[category];
        }
    }
    if (ActiveDiversion::take(line)) {
        return;
    }
    if (sink != nullptr) {
        (*sink)(line);
    } else {
        writeToStderr(line);
    }
}

void setLogLevel(Severitiy level) noexcept {
    getState().level = level;
}

Severitiy getLogLevel() noexcept {
    return getState().level;
}

void setLogSink(LogSink sink) {
    exchangeSink(sink ? std::make_shared<const LogSink>(std::move(sink)) : nullptr);
}

LogDiversion::LogDiversion(LogSink sink)
    : sink_(std::move(sink)), outer_(std::exchange(ActiveDiversion::current, this)) {}

LogDiversion::~LogDiversion() {
    ActiveDiversion::current = outer_;
}

// Shared with the sink, which a line in flight may still use after the capture has ended.
struct LogCapture::State {
    mutable std::mutex mutex;
    std::vector<LogLine> lines;
    std::shared_ptr<const LogSink> previousSink;
    Severitiy previousLevel = Severitiy::Warning;
};

LogCapture::LogCapture() : state_(std::make_shared<State>()) {
    state_->previousLevel = getLogLevel();
    state_->previousSink =
        exchangeSink(std::make_shared<const LogSink>([state = state_](const LogLine& line) {
            const std::lock_guard<std::mutex> guard(state->mutex);
            state->lines.push_back(line);
        }));
    setLogLevel(Severitiy::Trace);
}

LogCapture::~LogCapture() {
    setLogLevel(state_->previousLevel);
    exchangeSink(std::move(state_->previousSink));
}

std::vector<LogLine> LogCapture::getLines() const {
    const std::lock_guard<std::mutex> guard(state_->mutex);
    return state_->lines;
}

std::vector<LogLine> LogCapture::getLines(const GenICam::gcstring& category) const {
    std::vector<LogLine> lines = getLines();
    std::erase_if(lines, [&](const LogLine& line) { return !(line.category == category); });
    return lines;
}

void LogCapture::clear() {
    const std::lock_guard<std::mutex> guard(state_->mutex);
    state_->lines.clear();
}

}  // namespace Orlix::DataProcessing::Utils
