// IBoolean, the view of a node as a truth value. Errors and threads as for IValue.
#pragma once

#include "genapi/ivalue.h"

namespace GenApi {

// Its text is "1" or "0"; FromString takes "true" and "false" too, in any case.
class GENAPI_API IBoolean : virtual public IValue {
public:
    virtual void SetValue(bool Value, bool Verify = true) = 0;
    // True for the node's on value, false for any other.
    [[nodiscard]] virtual bool GetValue(bool Verify = false, bool IgnoreCache = false) const = 0;

    IBoolean& operator=(bool Value) {
        SetValue(Value);
        return *this;
    }
    bool operator()() const { return GetValue(); }

protected:
    IBoolean() = default;
    IBoolean(const IBoolean&) = default;
    IBoolean& operator=(const IBoolean&) = default;
};

}  // namespace GenApi
