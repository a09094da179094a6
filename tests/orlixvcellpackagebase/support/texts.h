// What tests compare: log lines and exceptions as plain texts, system errors as their codes.
#pragma once

#include <cstdio>
#include <string>
#include <system_error>
#include <type_traits>
#include <vector>

#include "gcbase/gcexception.h"
#include "orlixdataprocessingcore/utils/log.h"

namespace Plugin::OrlixVCellPackageBase {

// The lines of one category, each as "<severity> <text>".
inline std::vector<std::string> getLines(const Orlix::DataProcessing::Utils::LogCapture& capture,
                                         const char* category) {
    std::vector<std::string> lines;
    for (const auto& line : capture.getLines(category)) {
        lines.push_back(std::to_string(static_cast<int>(line.severity)) + " " + line.text.c_str());
    }
    return lines;
}

// An address as the log shows it.
inline std::string toText(const void* address) {
    char text[32];
    std::snprintf(text, sizeof(text), "%p", address);
    return text;
}

// The description of the exception of class E that the call throws, or what() of a standard one;
// "no exception" without one.
template <typename E, typename Call>
std::string getFailure(Call call) {
    try {
        call();
        return "no exception";
    } catch (const E& exception) {
        if constexpr (std::is_base_of_v<GenICam::GenericException, E>) {
            return exception.GetDescription();
        } else {
            return exception.what();
        }
    }
}

// The code of the system error that the call raises; none without one.
template <typename Call>
std::error_code getErrorCode(Call call) {
    try {
        call();
        return {};
    } catch (const std::system_error& error) {
        return error.code();
    }
}

}  // namespace Plugin::OrlixVCellPackageBase
