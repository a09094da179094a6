// Takes the log lines of one thread out of the log, for somebody who calls foreign code and can say
// more than it does: whose line it is, and what was asked of it.
//
//     const LogDiversion diversion([&](const LogLine& line) { lines.push_back(line); });
//     node.loadSettings(settings);
#pragma once

#include "orlixdataprocessingcore/api.h"
#include "orlixdataprocessingcore/utils/log.h"

namespace Orlix::DataProcessing::Utils {

// Every line that the thread which has made it logs while it lives goes to the function in place of
// the sink, as far as the level lets it pass. To be destroyed by that thread; diversions of one
// thread end in the reverse order of their making. What the function itself logs goes to the
// diversion around it, or to the sink.
class ORLIXDATAPROCESSINGCORE_API LogDiversion {
public:
    explicit LogDiversion(LogSink sink);
    ~LogDiversion();
    LogDiversion(const LogDiversion&) = delete;
    LogDiversion& operator=(const LogDiversion&) = delete;

private:
    friend struct ActiveDiversion;

    const LogSink sink_;
    LogDiversion* const outer_;
};

}  // namespace Orlix::DataProcessing::Utils
