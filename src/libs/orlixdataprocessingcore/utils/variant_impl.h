// Bodies of Variant's templates; included by its header only.
#pragma once

#include <new>
#include <type_traits>
#include <typeinfo>

#include "gcbase/gcexception.h"
#include "orlixdataprocessingcore/utils/cowptr.h"
#include "orlixdataprocessingcore/utils/variant.h"

namespace Orlix::DataProcessing::Utils {

inline Variant::Variant(const Variant& other) noexcept : wrapper_(other.wrapper_) {
    if (wrapper_ != nullptr) {
        wrapper_->addRef();
    }
}

inline Variant& Variant::operator=(const Variant& other) noexcept {
    return *this = Variant(other);
}

inline Variant& Variant::operator=(Variant&& other) noexcept {
    // The old value goes last, since its destructor may run foreign code.
    Variant taken(std::move(other));
    std::swap(wrapper_, taken.wrapper_);
    return *this;
}

inline Variant::~Variant() {
    reset();
}

inline void Variant::reset() noexcept {
    if (wrapper_ != nullptr) {
        std::exchange(wrapper_, nullptr)->release();
    }
}

template <typename T>
class Variant::DataWrapper final : public IDataWrapper {
public:
    // Copies or moves the value.
    template <typename V>
    DataWrapper(std::in_place_t, V&& value) : value_(makeValue(std::forward<V>(value))) {
        type_ = getTypeOf(value_);
        if (!value_.isValid()) {
            throw GenICam::BadAllocException("Could not allocate data.", __FILE__, __LINE__);
        }
    }
    // Shares the value.
    explicit DataWrapper(COWPtr<T>&& value) : value_(std::move(value)) {
        if (!value_.isValid()) {
            throw GenICam::InvalidArgumentException("Invalid data pointer passed.", __FILE__,
                                                    __LINE__);
        }
        type_ = getTypeOf(value_);
    }

    void addRef() noexcept override { count_.add(); }
    void release() noexcept override {
        if (count_.remove()) {
            delete this;
        }
    }
    std::uint64_t useCount() const noexcept override { return count_.get(); }
    IDataWrapper* clone() const override { return new DataWrapper(value_, type_); }
    const TypeInfo& getValueType() const noexcept override { return type_; }

    const void* getPointer(const TypeInfo& type) const override {
        const void* object = value_.getConst()->getRawPointer();
        return type == type_ ? object : type_cast(object, type_, type);
    }
    void* getWritablePointer(const TypeInfo& type) override {
        // A type that doesn't fit is no reason for a copy.
        if (getPointer(type) == nullptr) {
            return nullptr;
        }
        value_.makeWritable();
        // The copy of an object that is known by a base only is no more than that base.
        type_ = value_.getConst()->getTypeInfo(false);
        return type_cast(value_.operator->()->getRawPointer(), type_, type);
    }
    bool isExposedAs(const TypeInfo& type) const noexcept override {
        return !value_.casted_ && type == TypeInfo::getTypeInfo<T>(false);
    }
    COWPtrBase::IObjectWrapper* getObjectWrapper() const noexcept override {
        return value_.wrapper_;
    }
    COWPtrBase::IObjectWrapper* takeObjectWrapper() noexcept override {
        value_.object_ = nullptr;
        return std::exchange(value_.wrapper_, nullptr);
    }

private:
    friend class Variant;

    DataWrapper(const COWPtr<T>& value, const TypeInfo& type) : value_(value), type_(type) {}

    template <typename V>
    static COWPtr<T> makeValue(V&& value) {
        try {
            return COWPtr<T>::make(std::forward<V>(value));
        } catch (const std::bad_alloc&) {
            return COWPtr<T>();
        }
    }
    static TypeInfo getTypeOf(const COWPtr<T>& value) {
        if (!value.isValid()) {
            return TypeInfo();
        }
        const TypeInfo type = TypeInfo::getTypeInfo(value.getConst(), false);
        if (!type.isValid()) {
            throw GenICam::InvalidArgumentException("Type of passed data is not registered.",
                                                    __FILE__, __LINE__);
        }
        return type;
    }

    COWPtr<T> value_;
    TypeInfo type_;  // of the value's dynamic class
    Detail::ReferenceCount count_;
};

namespace Detail {

// A wrapper of a handle to share, or of a value behind std::in_place.
template <typename T, typename... Args>
Variant::IDataWrapper* makeDataWrapper(Args&&... args) {
    try {
        return new Variant::DataWrapper<T>(std::forward<Args>(args)...);
    } catch (const std::bad_alloc&) {
        throw GenICam::BadAllocException("Could not allocate data wrapper.", __FILE__, __LINE__);
    }
}

// The handle, too, needs memory, for its count; the pointer is owned whatever fails.
template <typename T>
Variant::IDataWrapper* makeDataWrapperOfPointer(T* value) {
    using Plain = std::remove_const_t<T>;
    try {
        COWPtr<Plain> handle(value);
        return new Variant::DataWrapper<Plain>(std::move(handle));
    } catch (const std::bad_alloc&) {
        throw GenICam::BadAllocException("Could not allocate data wrapper.", __FILE__, __LINE__);
    }
}

}  // namespace Detail

template <typename V>
requires VariantValue<std::remove_cvref_t<V>> Variant::Variant(V&& value)
    : wrapper_(
          Detail::makeDataWrapper<std::remove_cvref_t<V>>(std::in_place, std::forward<V>(value))) {}

template <VariantValue T>
Variant::Variant(T* value) {
    if (value == nullptr) {
        throw GenICam::InvalidArgumentException("Invalid data pointer passed.", __FILE__, __LINE__);
    }
    wrapper_ = Detail::makeDataWrapperOfPointer(value);
}

template <typename T>
Variant::Variant(COWPtr<T> value) : wrapper_(Detail::makeDataWrapper<T>(std::move(value))) {}

template <typename T>
COWPtr<T> Variant::getCOW(bool throwOnError) const {
    COWPtr<T> result;
    if (wrapper_ == nullptr) {
        if (throwOnError) {
            throw GenICam::RuntimeException("Variant is not valid.", __FILE__, __LINE__);
        }
        return result;
    }
    const TypeInfo type = TypeInfo::getTypeInfo<T>(false);
    const void* object = wrapper_->getPointer(type);
    if (object != nullptr) {
        if (COWPtrBase::IObjectWrapper* shared = wrapper_->getObjectWrapper()) {
            shared->addRef();
            // Writing goes through the handle, which clones a const object first.
            auto* plain = static_cast<T*>(const_cast<void*>(object));
            result = COWPtr<T>::adopt(shared, plain, !wrapper_->isExposedAs(type));
        }
    }
    if (!result.isValid() && throwOnError) {
        throw GenICam::RuntimeException("Could not cast variant data to requested type.", __FILE__,
                                        __LINE__);
    }
    return result;
}

template <typename T>
COWPtr<T> Variant::moveCOW() {
    COWPtr<T> result;
    if (wrapper_ == nullptr) {
        return result;
    }
    // As on nearly every pin: just a T, and nobody shares it.
    if (typeid(*wrapper_) == typeid(DataWrapper<T>)) {
        auto* exact = static_cast<DataWrapper<T>*>(wrapper_);
        if (exact->useCount() == 1) {
            result = std::move(exact->value_);
            wrapper_ = nullptr;
            exact->release();
            return result;
        }
    }
    if (wrapper_->useCount() == 1) {
        const TypeInfo type = TypeInfo::getTypeInfo<T>(false);
        const bool casted = !wrapper_->isExposedAs(type);
        if (const void* object = wrapper_->getPointer(type)) {
            if (COWPtrBase::IObjectWrapper* taken = wrapper_->takeObjectWrapper()) {
                result =
                    COWPtr<T>::adopt(taken, static_cast<T*>(const_cast<void*>(object)), casted);
            }
        }
    }
    if (!result.isValid()) {
        result = getCOW<T>(false);
    }
    if (result.isValid()) {
        reset();
    }
    return result;
}

namespace Detail {

// The type to ask a Variant for, or an invalid one.
template <typename T>
TypeInfo getRequestedType(bool throwOnError) {
    const TypeInfo type = TypeInfo::getTypeInfo<T>(false);
    if (!type.isValid() && throwOnError) {
        throw GenICam::RuntimeException("Requested type is not registered.", __FILE__, __LINE__);
    }
    return type;
}

template <typename P>
P* checkRequestedValue(P* value, bool throwOnError) {
    if (value == nullptr && throwOnError) {
        throw GenICam::RuntimeException("Could not cast variant value to requested type.", __FILE__,
                                        __LINE__);
    }
    return value;
}

}  // namespace Detail

template <typename T>
const T* Variant::get(bool throwOnError) const {
    const TypeInfo type = Detail::getRequestedType<T>(throwOnError);
    if (!type.isValid()) {
        return nullptr;
    }
    return Detail::checkRequestedValue(static_cast<const T*>(get(type, throwOnError)),
                                       throwOnError);
}

template <typename T>
T* Variant::get(bool throwOnError) {
    const TypeInfo type = Detail::getRequestedType<T>(throwOnError);
    if (!type.isValid()) {
        return nullptr;
    }
    return Detail::checkRequestedValue(static_cast<T*>(get(type, throwOnError)), throwOnError);
}

template <VariantValue T>
Variant Variant::createDefault() {
    return Variant(COWPtr<T>::make());
}

}  // namespace Orlix::DataProcessing::Utils
