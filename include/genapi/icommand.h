// ICommand, an action of the device. Errors and threads as for IValue.
#pragma once

#include "genapi/ivalue.h"

namespace GenApi {

class GENAPI_API ICommand : virtual public IValue {
public:
    // Starts the action and returns; AccessException unless the node is writable.
    virtual void Execute(bool Verify = true) = 0;
    // Asks the device, never a cache. A write-only command is done at once. The call that first
    // sees the end invalidates the node and fires its callbacks.
    [[nodiscard]] virtual bool IsDone(bool Verify = true) = 0;

    void operator()() { Execute(); }
};

}  // namespace GenApi
