// A typed holder of a value with reflection by Variant: a node's input or output of one job.
// Values go in and out as COWPtr handles, so nothing is copied that nobody writes to. A property
// with a mutex of its own is safe from any thread; one without belongs to one thread at a time,
// which for those of a node is the thread that runs its job.
#pragma once

#include <memory>
#include <utility>

#include "orlixdataprocessingcore/api.h"
#include "orlixdataprocessingcore/threading/recursivemutex.h"
#include "orlixdataprocessingcore/utils/cowptr.h"
#include "orlixdataprocessingcore/utils/typeinfo.h"
#include "orlixdataprocessingcore/utils/variant.h"

namespace Orlix::DataProcessing::Utils {

// Reading a property that holds no value throws PropertyException "Property is resetted.".
class ORLIXDATAPROCESSINGCORE_API IReadOnlyProperty {
public:
    virtual ~IReadOnlyProperty();
    // The type that the property holds, set or not.
    [[nodiscard]] virtual TypeInfo getValueType() const = 0;
    [[nodiscard]] virtual bool isSet() const = 0;
    // Shares the value; with a path, the value of the subproperty that it names.
    [[nodiscard]] virtual Variant getVariant(const gcstring& path = gcstring()) const = 0;

protected:
    IReadOnlyProperty() = default;
    IReadOnlyProperty(const IReadOnlyProperty&) = default;
    IReadOnlyProperty& operator=(const IReadOnlyProperty&) = default;
};

class ORLIXDATAPROCESSINGCORE_API IProperty : public virtual IReadOnlyProperty {
public:
    ~IProperty() override;
    // With an empty path replaces the value, sharing the Variant's; with a path, sets the
    // subproperty that it names on a private copy of the value.
    virtual void setVariant(const gcstring& path, const Variant& value) = 0;
};

class ORLIXDATAPROCESSINGCORE_API IResettableProperty : public virtual IProperty {
public:
    ~IResettableProperty() override;
    virtual void reset() = 0;
    // The value, which the property keeps only if it is not made to reset on get.
    [[nodiscard]] virtual Variant takeVariant() = 0;
    // The value, which the property lets go of in any case. An invalid Variant if there is none.
    [[nodiscard]] virtual Variant moveVariant() = 0;
    // As setVariant with an empty path, but the Variant lets go of the value. If that throws, it
    // still has it.
    virtual void takeOver(Variant&& value) = 0;
};

template <typename T>
class IReadOnlyPropertyT : public virtual IReadOnlyProperty {
public:
    [[nodiscard]] virtual COWPtr<T> getValue() const = 0;
};

// A null pointer or empty handle throws InvalidArgumentException "Invalid value pointer passed.".
template <typename T>
class IPropertyT : public virtual IReadOnlyPropertyT<T>, public virtual IProperty {
public:
    virtual void setValue(COWPtr<T> value) = 0;           // shares
    virtual void setValue(const T* value) = 0;            // copies
    virtual void setValue(std::unique_ptr<T> value) = 0;  // takes over
    virtual void setValue(const T& value) = 0;            // copies
};

template <typename T>
class IResettablePropertyT : public virtual IPropertyT<T>, public virtual IResettableProperty {
public:
    // As getValue; with resetOnGet the property lets go of the value, so that the caller can
    // write to it without a clone.
    [[nodiscard]] virtual COWPtr<T> takeValue() = 0;
};

template <typename T>
class ResettableProperty final : public IResettablePropertyT<T> {
public:
    explicit ResettableProperty(bool resetOnGet = false) : resetOnGet_(resetOnGet) {}
    // A leaf lock: no value is destroyed and no foreign code runs while it is held, except for the
    // setter of a subproperty.
    explicit ResettableProperty(std::unique_ptr<Threading::RecursiveMutex> mutex,
                                bool resetOnGet = false)
        : mutex_(std::move(mutex)), resetOnGet_(resetOnGet) {}
    // Copying shares the value, or resets this property as the other one is. The new property has
    // no mutex; an old one keeps its own.
    ResettableProperty(const ResettableProperty& other);
    ResettableProperty& operator=(const ResettableProperty& other);

    TypeInfo getValueType() const override { return TypeInfo::getTypeInfo<T>(false); }
    bool isSet() const override;
    Variant getVariant(const gcstring& path = gcstring()) const override;
    void setVariant(const gcstring& path, const Variant& value) override;
    void reset() override;
    Variant takeVariant() override;
    Variant moveVariant() override;
    void takeOver(Variant&& value) override;

    COWPtr<T> getValue() const override;
    COWPtr<T> takeValue() override;
    void setValue(COWPtr<T> value) override;
    void setValue(const T* value) override;
    void setValue(std::unique_ptr<T> value) override;
    void setValue(const T& value) override { setValue(&value); }

private:
    // Holds the mutex, if there is one, for a scope.
    class Guard;

    [[nodiscard]] COWPtr<T> share() const;
    // Puts another handle in the place of the present one, which the caller then lets go of.
    void swap(COWPtr<T>& value);
    void setSubproperty(const gcstring& path, const Variant& value);

    std::unique_ptr<Threading::RecursiveMutex> mutex_;
    COWPtr<T> value_;  // empty in the reset state
    bool resetOnGet_;
};

}  // namespace Orlix::DataProcessing::Utils

#include "orlixdataprocessingcore/utils/property_impl.h"
