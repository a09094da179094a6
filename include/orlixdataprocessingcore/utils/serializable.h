// Something whose settings live in a store. The caller holds no lock of the object; the object
// keeps no pointer to the store beyond the call.
#pragma once

#include <memory>

#include "orlixdataprocessingcore/api.h"

namespace Orlix::DataProcessing::Core {
class ISettings;
}

namespace Orlix::DataProcessing::Utils {

// The order of the virtual operations is part of the interface.
class ORLIXDATAPROCESSINGCORE_API ISerializable {
public:
    virtual ~ISerializable();

    virtual void loadSettings(const std::shared_ptr<Core::ISettings>& ptrSettings) = 0;
    virtual void saveSettings(const std::shared_ptr<Core::ISettings>& ptrSettings) = 0;

protected:
    ISerializable() = default;
    ISerializable(const ISerializable&) = default;
    ISerializable& operator=(const ISerializable&) = default;
};

}  // namespace Orlix::DataProcessing::Utils
