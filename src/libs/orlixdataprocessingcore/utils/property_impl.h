// Bodies of ResettableProperty; included by its header only.
#pragma once

#include <utility>

#include "gcbase/gcexception.h"
#include "orlixdataprocessingcore/utils/property.h"
#include "orlixdataprocessingcore/utils/propertyinfo.h"

namespace Orlix::DataProcessing::Utils {

template <typename T>
class ResettableProperty<T>::Guard {
public:
    explicit Guard(const ResettableProperty& property) : mutex_(property.mutex_.get()) {
        if (mutex_ != nullptr) {
            mutex_->lock();
        }
    }
    ~Guard() {
        if (mutex_ != nullptr) {
            mutex_->unlock();
        }
    }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;

private:
    Threading::RecursiveMutex* mutex_;
};

template <typename T>
ResettableProperty<T>::ResettableProperty(const ResettableProperty& other)
    : value_(other.share()), resetOnGet_(other.resetOnGet_) {}

template <typename T>
ResettableProperty<T>& ResettableProperty<T>::operator=(const ResettableProperty& other) {
    // One mutex after the other, never both. The former value goes with the end of this call.
    COWPtr<T> value = other.share();
    swap(value);
    return *this;
}

template <typename T>
bool ResettableProperty<T>::isSet() const {
    const Guard guard(*this);
    return value_.isValid();
}

template <typename T>
COWPtr<T> ResettableProperty<T>::share() const {
    const Guard guard(*this);
    return value_;
}

template <typename T>
inline void ResettableProperty<T>::swap(COWPtr<T>& value) {
    const Guard guard(*this);
    value_.swap(value);
}

template <typename T>
COWPtr<T> ResettableProperty<T>::getValue() const {
    COWPtr<T> value = share();
    if (!value.isValid()) {
        throw GenICam::PropertyException("Property is resetted.", __FILE__, __LINE__);
    }
    return value;
}

template <typename T>
COWPtr<T> ResettableProperty<T>::takeValue() {
    COWPtr<T> value;
    if (resetOnGet_) {
        swap(value);
    } else {
        value = share();
    }
    if (!value.isValid()) {
        throw GenICam::PropertyException("Property is resetted.", __FILE__, __LINE__);
    }
    return value;
}

template <typename T>
void ResettableProperty<T>::reset() {
    // Reset first: the end of the value may be foreign code that looks here.
    COWPtr<T> former;
    swap(former);
}

template <typename T>
void ResettableProperty<T>::setValue(COWPtr<T> value) {
    if (!value.isValid()) {
        throw GenICam::InvalidArgumentException("Invalid value pointer passed.", __FILE__,
                                                __LINE__);
    }
    swap(value);
}

template <typename T>
void ResettableProperty<T>::setValue(const T* value) {
    if (value == nullptr) {
        throw GenICam::InvalidArgumentException("Invalid value pointer passed.", __FILE__,
                                                __LINE__);
    }
    setValue(COWPtr<T>::make(*value));
}

template <typename T>
void ResettableProperty<T>::setValue(std::unique_ptr<T> value) {
    if (value == nullptr) {
        throw GenICam::InvalidArgumentException("Invalid value pointer passed.", __FILE__,
                                                __LINE__);
    }
    setValue(COWPtr<T>(std::move(value)));
}

template <typename T>
Variant ResettableProperty<T>::getVariant(const gcstring& path) const {
    const COWPtr<T> value = getValue();
    if (path.empty()) {
        return Variant(value);
    }
    const auto [name, rest] = TypeInfo::splitPath(path);
    const TypeInfo type = TypeInfo::getTypeInfo(value.getConst());
    return type.getProperty(name).getValue(*value, rest);
}

template <typename T>
Variant ResettableProperty<T>::takeVariant() {
    return Variant(takeValue());
}

template <typename T>
Variant ResettableProperty<T>::moveVariant() {
    COWPtr<T> value;
    swap(value);
    return value.isValid() ? Variant(std::move(value)) : Variant();
}

template <typename T>
void ResettableProperty<T>::takeOver(Variant&& value) {
    COWPtr<T> handle = value.template moveCOW<T>();
    if (!handle.isValid()) {
        setVariant(gcstring(), value);  // tells what is wrong with it
        return;
    }
    swap(handle);
}

template <typename T>
void ResettableProperty<T>::setVariant(const gcstring& path, const Variant& value) {
    if (!value.isValid()) {
        throw GenICam::InvalidArgumentException("Invalid variant passed.", __FILE__, __LINE__);
    }
    if (!path.empty()) {
        setSubproperty(path, value);
        return;
    }
    COWPtr<T> handle = value.getCOW<T>(false);
    if (!handle.isValid() && !value.getValueType().canConvert(getValueType())) {
        throw GenICam::RuntimeException("Could not cast variant data to requested type.", __FILE__,
                                        __LINE__);
    }
    if (!handle.isValid()) {
        // Of the right type, but not to be shared.
        throw GenICam::RuntimeException("Variant returned invalid value.", __FILE__, __LINE__);
    }
    setValue(std::move(handle));
}

template <typename T>
void ResettableProperty<T>::setSubproperty(const gcstring& path, const Variant& value) {
    const Guard guard(*this);
    if (!value_.isValid()) {
        throw GenICam::RuntimeException("Cannot set a subproperty of a resetted property.",
                                        __FILE__, __LINE__);
    }
    const auto [name, rest] = TypeInfo::splitPath(path);
    const TypeInfo type = TypeInfo::getTypeInfo(value_.getConst());
    const PropertyInfo& property = type.getProperty(name);
    property.setValue(*value_, rest, value);
}

}  // namespace Orlix::DataProcessing::Utils
