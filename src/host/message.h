// How the host raises its errors: one line of text that names the thing and the place.
#pragma once

#include <string>

#include "orlixhost/oneline.h"

namespace Orlix::Host {

// Throws RuntimeException with this text.
[[noreturn]] void fail(const std::string& message);

// The text of the exception that is being handled, on one line; for use inside a catch block.
[[nodiscard]] std::string currentMessage();

// A text in double quotes.
[[nodiscard]] inline std::string inQuotes(const std::string& text) {
    return "\"" + text + "\"";
}

// Runs the function; an exception of it leaves as RuntimeException with the place in front.
template <typename Function>
decltype(auto) withPlace(const std::string& place, Function&& function) {
    try {
        return function();
    } catch (...) {
        fail(place + ": " + currentMessage());
    }
}

}  // namespace Orlix::Host
