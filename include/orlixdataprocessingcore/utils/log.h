// The log of all modules: one line per call, with a category and a severity, from any thread and
// under any lock. Lines go to stderr from severity Warning on, unless a program changes level or
// sink. A line that is filtered out costs one atomic read.
//
//     CatId getCatIdCamera() {
//         static const CatId id = getCatId("orlix.dataprocessing.vcell.Camera");
//         return id;
//     }
//     createLogEntry(Severitiy::Warning, getCatIdCamera(), "Camera %p: ...",
//                    static_cast<const void*>(this));
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "gcbase/gcstring.h"
#include "orlixdataprocessingcore/api.h"

namespace Orlix::DataProcessing::Utils {

// A smaller number is a graver line. The name is spelled as its users have it.
enum class Severitiy : std::int32_t {
    Error = 3,
    Warning = 4,
    Information = 5,
    Debug = 6,
    Trace = 7,
};

using CatId = std::uint64_t;

// The handle of a category, the same at every call with that name; never freed. To be kept in a
// function-local static by the one accessor of the category.
[[nodiscard]] ORLIXDATAPROCESSINGCORE_API CatId getCatId(const char* name);

// Writes one line with printf conventions. The format is a literal.
ORLIXDATAPROCESSINGCORE_API void createLogEntry(Severitiy severity, CatId category,
                                                const char* format, ...)
    __attribute__((format(printf, 3, 4)));

struct LogLine {
    Severitiy severity = Severitiy::Trace;
    GenICam::gcstring category;
    GenICam::gcstring text;
};

// Called with each line that passes the level, on the thread that logs and possibly on several at
// once; no lock of the log is held. What it throws reaches the code that logs.
using LogSink = std::function<void(const LogLine&)>;

// The gravest severity that is still left out is the one behind this; Warning at first.
ORLIXDATAPROCESSINGCORE_API void setLogLevel(Severitiy level) noexcept;
[[nodiscard]] ORLIXDATAPROCESSINGCORE_API Severitiy getLogLevel() noexcept;

// Replaces stderr; an empty function brings it back. A line in flight may still reach the old sink.
ORLIXDATAPROCESSINGCORE_API void setLogSink(LogSink sink);

// Diverts all lines of the process, of any severity, into a list while it lives, then restores the
// level and sink that it found. For tests; one at a time or properly nested.
class ORLIXDATAPROCESSINGCORE_API LogCapture {
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    [[nodiscard]] std::vector<LogLine> getLines() const;
    [[nodiscard]] std::vector<LogLine> getLines(const GenICam::gcstring& category) const;
    void clear();

private:
    struct State;
    std::shared_ptr<State> state_;
};

}  // namespace Orlix::DataProcessing::Utils
