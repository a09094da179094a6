// IRegister, the view of a node as bytes at an address of its port. Errors and threads as for
// IValue. Its text is "0x" and the bytes in hexadecimal, in the order of their addresses.
#pragma once

#include "genapi/ivalue.h"

namespace GenApi {

class GENAPI_API IRegister : virtual public IValue {
public:
    // Length in bytes must be that of the register, else OutOfRangeException: one port access
    // serves the whole of it. The buffer is the caller's; null is an InvalidArgumentException.
    virtual void Set(const std::uint8_t* pBuffer, std::int64_t Length, bool Verify = true) = 0;
    virtual void Get(std::uint8_t* pBuffer, std::int64_t Length, bool Verify = false,
                     bool IgnoreCache = false) = 0;
    // In bytes.
    [[nodiscard]] virtual std::int64_t GetLength() = 0;
    // The sum of all its address terms.
    [[nodiscard]] virtual std::int64_t GetAddress() = 0;
};

}  // namespace GenApi
