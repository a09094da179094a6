// IString, the view of a node as text. Errors and threads as for IValue.
#pragma once

#include "genapi/ivalue.h"

namespace GenApi {

class GENAPI_API IString : virtual public IValue {
public:
    // A text longer than GetMaxLength is an OutOfRangeException, never cut; a shorter one is filled
    // with zeros.
    virtual void SetValue(const gcstring& Value, bool Verify = true) = 0;
    // Up to the first zero, or the whole length.
    [[nodiscard]] virtual gcstring GetValue(bool Verify = false, bool IgnoreCache = false) = 0;
    // In bytes.
    [[nodiscard]] virtual std::int64_t GetMaxLength() = 0;

    IString& operator=(const gcstring& Value) {
        SetValue(Value);
        return *this;
    }
    gcstring operator()() { return GetValue(); }
    gcstring operator*() { return GetValue(); }

protected:
    IString() = default;
    IString(const IString&) = default;
    IString& operator=(const IString&) = default;
};

}  // namespace GenApi
