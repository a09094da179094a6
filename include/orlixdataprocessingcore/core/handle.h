// Opaque proof of a configuration or an attachment; whoever holds it can undo it.
#pragma once

#include "orlixdataprocessingcore/api.h"

namespace Orlix::DataProcessing::Core {

class ORLIXDATAPROCESSINGCORE_API IHandle {
public:
    virtual ~IHandle();
};

}  // namespace Orlix::DataProcessing::Core
