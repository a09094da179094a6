// IFloat, the view of a node as a floating-point number with a range. Errors and threads as for
// IValue.
#pragma once

#include "genapi/ivalue.h"

namespace GenApi {

class GENAPI_API IFloat : virtual public IValue {
public:
    // Verify checks the range; increments of floats are not checked. Values that are not finite are
    // refused always.
    virtual void SetValue(double Value, bool Verify = true) = 0;
    [[nodiscard]] virtual double GetValue(bool Verify = false, bool IgnoreCache = false) = 0;
    // In the node's unit.
    [[nodiscard]] virtual double GetMin() = 0;
    [[nodiscard]] virtual double GetMax() = 0;
    [[nodiscard]] virtual bool HasInc() = 0;
    [[nodiscard]] virtual EIncMode GetIncMode() = 0;
    // LogicalErrorException without an increment.
    [[nodiscard]] virtual double GetInc() = 0;
    [[nodiscard]] virtual double_autovector_t GetListOfValidValues() = 0;
    [[nodiscard]] virtual ERepresentation GetRepresentation() = 0;
    [[nodiscard]] virtual gcstring GetUnit() = 0;
    [[nodiscard]] virtual EDisplayNotation GetDisplayNotation() = 0;
    // All digits count, before and after the point.
    [[nodiscard]] virtual std::int64_t GetDisplayPrecision() = 0;
    virtual void ImposeMin(double Value) = 0;
    virtual void ImposeMax(double Value) = 0;

    IFloat& operator=(double Value) {
        SetValue(Value);
        return *this;
    }
    double operator()() { return GetValue(); }
    double operator*() { return GetValue(); }

protected:
    IFloat() = default;
    IFloat(const IFloat&) = default;
    IFloat& operator=(const IFloat&) = default;
};

}  // namespace GenApi
