// IInteger, the view of a node as a 64-bit integer with range and increment. Errors and threads as
// for IValue.
#pragma once

#include "genapi/ivalue.h"

namespace GenApi {

class GENAPI_API IInteger : virtual public IValue {
public:
    // Verify checks the range and the increment, which counts from the minimum. Without it a value
    // that the register can not hold still fails, and the access mode always counts.
    virtual void SetValue(std::int64_t Value, bool Verify = true) = 0;
    // Reading checks no range. IgnoreCache goes to the device.
    [[nodiscard]] virtual std::int64_t GetValue(bool Verify = false, bool IgnoreCache = false) = 0;
    // The range as the description or the device tells it now, in the node's unit, also where the
    // maximum lies below the minimum.
    [[nodiscard]] virtual std::int64_t GetMin() = 0;
    [[nodiscard]] virtual std::int64_t GetMax() = 0;
    [[nodiscard]] virtual std::int64_t GetInc() = 0;
    [[nodiscard]] virtual EIncMode GetIncMode() = 0;
    // The values of a list increment, ascending; empty otherwise.
    [[nodiscard]] virtual int64_autovector_t GetListOfValidValues() = 0;
    [[nodiscard]] virtual ERepresentation GetRepresentation() = 0;
    // The physical unit as text, possibly empty.
    [[nodiscard]] virtual gcstring GetUnit() = 0;
    // These narrow the range for the life of the map, they never widen it.
    virtual void ImposeMin(std::int64_t Value) = 0;
    virtual void ImposeMax(std::int64_t Value) = 0;

    IInteger& operator=(std::int64_t Value) {
        SetValue(Value);
        return *this;
    }
    std::int64_t operator()() { return GetValue(); }
    std::int64_t operator*() { return GetValue(); }

protected:
    IInteger() = default;
    IInteger(const IInteger&) = default;
    IInteger& operator=(const IInteger&) = default;
};

}  // namespace GenApi
