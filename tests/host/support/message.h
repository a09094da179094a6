// The text of the exception that a call throws, for exact comparison.
#pragma once

#include <string>

#include "gcbase/gcexception.h"

namespace Orlix::Host::Testing {

template <typename Call>
std::string messageOf(const Call& call) {
    try {
        call();
    } catch (const GenICam::RuntimeException& error) {
        return error.GetDescription();
    }
    return "nothing was thrown";
}

}  // namespace Orlix::Host::Testing
