// What the camera library tells without a caller, and the text of what it caught.
#pragma once

#include <string>
#include <utility>

namespace Orlix::Detail {

// To the message sink.
void Tell(const std::string& message) noexcept;

// In a catch block only.
[[nodiscard]] std::string TextOfCurrentException();

// Calls what belongs to a user of the library, on a thread of the library: whatever it throws is
// told and ends here.
template <class Function>
void CallGuarded(const char* name, Function&& function) noexcept {
    try {
        std::forward<Function>(function)();
    } catch (...) {
        Tell(std::string("Exception caught in ") + name + ". Message: " + TextOfCurrentException());
    }
}

}  // namespace Orlix::Detail
