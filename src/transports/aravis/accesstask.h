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
};

}  // namespace Orlix::Aravis
