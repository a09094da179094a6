// IPort, the way to the device's bytes. The user of a map implements it (or CPortImpl) and connects
// it; the map also offers its port nodes through it.
#pragma once

#include "genapi/ibase.h"

namespace GenApi {

// The map calls with its lock held, one call at a time for each map. Whatever Read and Write throw
// reaches the caller of the map unchanged.
class GENAPI_API IPort : virtual public IBase {
public:
    // Address and length in bytes. The buffer holds zeros before the call.
    virtual void Read(void* pBuffer, std::int64_t Address, std::int64_t Length) = 0;
    virtual void Write(const void* pBuffer, std::int64_t Address, std::int64_t Length) = 0;
    ~IPort() override = default;
};

}  // namespace GenApi
