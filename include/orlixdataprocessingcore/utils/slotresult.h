// What came of the call of one slot: success, or the exception that it threw. Belongs to the
// thread that invoked the slot.
#pragma once

#include "orlixdataprocessingcore/utils/exceptionptr.h"

namespace Orlix::DataProcessing::Utils {

// The order of the virtual operations is part of the interface.
template <typename T>
class ISlotResult {
public:
    virtual ~ISlotResult() = default;
    [[nodiscard]] virtual bool isValid() const = 0;
    [[nodiscard]] virtual bool hasException() const = 0;
    // Delivers the result, or throws the exception that the slot threw.
    virtual T get() = 0;

protected:
    ISlotResult() = default;
    ISlotResult(const ISlotResult&) = delete;
    ISlotResult& operator=(const ISlotResult&) = delete;
};

template <typename T>
class ValueResult;

// Success of a slot that returns nothing.
template <>
class ValueResult<void> final : public ISlotResult<void> {
public:
    bool isValid() const override { return true; }
    bool hasException() const override { return false; }
    void get() override {}
};

// A slot's exception, which get() gives away: afterwards the result is not valid.
template <typename T>
class ExceptionResult final : public ISlotResult<T> {
public:
    // Throws InvalidArgumentException for a null pointer.
    explicit ExceptionResult(ExceptionPtr exception);

    bool isValid() const override { return !(exception_ == nullptr); }
    // Throws RuntimeException if the result is not valid.
    bool hasException() const override;
    T get() override;

private:
    ExceptionPtr exception_;
};

}  // namespace Orlix::DataProcessing::Utils

#include "orlixdataprocessingcore/utils/slotresult_impl.h"
