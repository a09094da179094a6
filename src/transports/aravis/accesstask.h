// What the thread of a connection is to do. Shared by it and who waits; guarded by the connection.
#pragma once

#include <exception>

#include "aravis/connection.h"

namespace Orlix::Aravis {

struct Connection::Task {
    Action action;
    Purpose purpose = Purpose::Any;
    bool isDrop = false;  // done also after the loss
    bool isDone = false;
    std::exception_ptr failure;

    // Else it is the making or the end of a stream, which asks the camera as often as it likes.
    [[nodiscard]] bool IsAccess() const noexcept { return !isDrop && purpose != Purpose::Stream; }
};

}  // namespace Orlix::Aravis
