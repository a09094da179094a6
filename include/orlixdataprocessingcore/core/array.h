// A list of scalar values on a pin. Copies of an array share their elements until one of them is
// written. See value.h.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "orlixdataprocessingcore/api.h"
#include "orlixdataprocessingcore/core/boolean.h"
#include "orlixdataprocessingcore/core/float.h"
#include "orlixdataprocessingcore/core/integer.h"
#include "orlixdataprocessingcore/core/string.h"
#include "orlixdataprocessingcore/core/value.h"
#include "orlixdataprocessingcore/utils/cowptr.h"
#include "orlixdataprocessingcore/utils/typeinfo.h"
#include "orlixdataprocessingcore/utils/variant.h"

namespace Orlix::DataProcessing::Core {

// The element-blind view of an array. Element access throws RuntimeException "Array is in error
// state.", then InvalidArgumentException "Invalid index passed.".
class ORLIXDATAPROCESSINGCORE_API IArray : public IValue {
public:
    ~IArray() override;

    // 0 in the error state.
    [[nodiscard]] virtual std::size_t getSize() const = 0;
    [[nodiscard]] virtual TypeInfo getElementType() const = 0;
    // A copy of the element.
    [[nodiscard]] virtual Variant getElement(std::size_t index) const = 0;
    // Copies the value into the element; an empty Variant throws InvalidArgumentException.
    virtual void setElement(std::size_t index, const Variant& value) = 0;
    // Takes over the other's elements or error. Throws InvalidArgumentException if its element
    // type can't be converted to this array's.
    virtual void assign(const IArray& other) = 0;

protected:
    IArray() = default;
    IArray(const IArray&) = default;
    IArray(IArray&&) = default;
    IArray& operator=(const IArray&) = default;
    IArray& operator=(IArray&&) = default;
};

// T is Boolean, Integer, Float or String. Either in error, or with data, which may be empty.
template <typename T>
class Array final : public IArray {
    ORLIX_OBJECT(Array)

public:
    // Clones the vector that arrays share.
    struct VectorCloner {
        [[nodiscard]] static std::vector<T>* clone(const std::vector<T>& data) {
            return new std::vector<T>(data);
        }
    };

    Array() : Array(std::vector<T>()) {}
    explicit Array(std::vector<T> data);
    Array(std::size_t size, const T& value) : Array(std::vector<T>(size, value)) {}
    explicit Array(const std::shared_ptr<IError>& error);
    Array(const Array&) = default;
    Array(Array&&) noexcept = default;
    Array& operator=(const Array&) = default;
    Array& operator=(Array&&) noexcept = default;
    ~Array() override = default;

    bool hasError(bool includeElements) const override;
    std::shared_ptr<IError> getError(bool includeElements) const override;
    void setError(const std::shared_ptr<IError>& error) override;

    std::size_t getSize() const override;
    TypeInfo getElementType() const override { return elementType_; }
    Variant getElement(std::size_t index) const override;
    void setElement(std::size_t index, const Variant& value) override;
    void assign(const IArray& other) override;

    // The same checks, without a Variant; the non-const form makes the elements private first.
    [[nodiscard]] const T& at(std::size_t index) const;
    [[nodiscard]] T& at(std::size_t index);

private:
    void checkIndex(std::size_t index) const;
    void takeData(const IArray& other);

    TypeInfo elementType_;
    std::shared_ptr<IError> error_;
    COWPtr<std::vector<T>> data_;
};

}  // namespace Orlix::DataProcessing::Core

#include "orlixdataprocessingcore/core/array_impl.h"
