// Bodies of ResettableProperty; included by its header only.
#pragma once

#include <utility>

#include "gcbase/gcexception.h"
#include "orlixdataprocessingcore/utils/property.h"
#include "orlixdataprocessingcore/utils/propertyinfo.h"

namespace Orlix::DataProcessing::Utils {

template <typename T>
ResettableProperty<T>::ResettableProperty(const ResettableProperty& other)
    : value_(other.value_), resetOnGet_(other.resetOnGet_) {}

template <typename T>
ResettableProperty<T>& ResettableProperty<T>::operator=(const ResettableProperty& other) {
    COWPtr<T> value = other.value_;
    std::swap(value_, value);
    return *this;
}

template <typename T>
COWPtr<T> ResettableProperty<T>::getValue() const {
    if (!value_.isValid()) {
        throw GenICam::PropertyException("Property is resetted.", __FILE__, __LINE__);
    }
    return value_;
}

template <typename T>
COWPtr<T> ResettableProperty<T>::takeValue() {
    if (!value_.isValid()) {
        throw GenICam::PropertyException("Property is resetted.", __FILE__, __LINE__);
    }
    return resetOnGet_ ? std::exchange(value_, COWPtr<T>()) : value_;
}

template <typename T>
void ResettableProperty<T>::reset() {
    // Reset first: the end of the value may be foreign code that looks here.
    const COWPtr<T> value = std::exchange(value_, COWPtr<T>());
}

template <typename T>
void ResettableProperty<T>::setValue(COWPtr<T> value) {
    if (!value.isValid()) {
        throw GenICam::InvalidArgumentException("Invalid value pointer passed.", __FILE__,
                                                __LINE__);
    }
    std::swap(value_, value);
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
    return value_.isValid() ? Variant(std::exchange(value_, COWPtr<T>())) : Variant();
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
