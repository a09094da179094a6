// IValue, the text view that every node with a value has. Texts know no locale and read back:
// FromString(ToString()) leaves the value as it is, but for floats, whose text has the digits that
// their node asks for.
#pragma once

#include "genapi/ibase.h"

namespace GenApi {

// Any thread may call. Reading what is not readable and writing what is not writable raise
// AccessException before any port is touched; a text that means no value here raises
// InvalidArgumentException; a value out of range OutOfRangeException; what can not be worked out,
// as a division by zero or links in a circle, RuntimeException. Each names the node, the way to the
// one that failed, the value, the range and the cause. A port's own exception passes unchanged.
class GENAPI_API IValue : virtual public IBase {
public:
    [[nodiscard]] virtual INode* GetNode() = 0;
    [[nodiscard]] virtual gcstring ToString(bool Verify = false, bool IgnoreCache = false) = 0;
    // Verify also checks the range of numbers.
    virtual void FromString(const gcstring& ValueStr, bool Verify = true) = 0;
    // Whether the next read would be served without touching a port.
    [[nodiscard]] virtual bool IsValueCacheValid() const = 0;
};

}  // namespace GenApi
