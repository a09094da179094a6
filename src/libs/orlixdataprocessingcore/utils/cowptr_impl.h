// Bodies of COWPtr and its control objects; included by its header only.
#pragma once

#include <atomic>
#include <new>
#include <type_traits>
#include <utility>

#include "orlixdataprocessingcore/utils/cowptr.h"

namespace Orlix::DataProcessing::Utils {

namespace Detail {

// The object as the given type, by its dynamic type where it tells one.
template <typename T>
void* getPointerAs(T* object, const TypeInfo& type) {
    using Plain = std::remove_const_t<T>;
    if (object == nullptr) {
        return nullptr;
    }
    auto* plain = const_cast<Plain*>(object);
    if constexpr (std::derived_from<Plain, IObject>) {
        return type_cast(plain->getRawPointer(), plain->getTypeInfo(false), type);
    } else {
        return type_cast(static_cast<void*>(plain), TypeInfo::getTypeInfo<Plain>(false), type);
    }
}

// What every control object counts with. A writer that finds itself alone must see all that the
// former holders did, hence the acquire on reading and the release on letting go.
class ReferenceCount {
public:
    void add() noexcept { count_.fetch_add(1, std::memory_order_relaxed); }
    // True for the last reference. Beside a sole holder there is nobody who could add or remove
    // one, which spares it the exclusive access.
    [[nodiscard]] bool remove() noexcept {
        return get() == 1 || count_.fetch_sub(1, std::memory_order_acq_rel) == 1;
    }
    [[nodiscard]] std::uint64_t get() const noexcept {
        return count_.load(std::memory_order_acquire);
    }

private:
    std::atomic<std::uint64_t> count_{1};
};

}  // namespace Detail

// Holds a T and exposes it as U; T may be const.
template <typename T, typename U, typename Deleter, typename Cloner>
class COWPtrBase::ObjectWrapper final : public IObjectWrapper {
public:
    // Takes ownership unless it throws.
    explicit ObjectWrapper(T* object) : object_(object) {
        if (object == nullptr) {
            throw GenICam::InvalidArgumentException("No object passed.", __FILE__, __LINE__);
        }
    }
    ~ObjectWrapper() override { Deleter()(object_); }

    bool isConst() const noexcept override { return std::is_const_v<T>; }
    void addRef() noexcept override { count_.add(); }
    void release() noexcept override {
        if (count_.remove()) {
            delete this;
        }
    }
    std::uint64_t useCount() const noexcept override { return count_.get(); }
    Clone clone() const override;
    void* getPointer(const TypeInfo& type) const override {
        return Detail::getPointerAs(object_, type);
    }

private:
    Detail::ReferenceCount count_;
    T* object_;
};

template <typename T, typename U, typename Deleter, typename Cloner>
COWPtrBase::IObjectWrapper::Clone COWPtrBase::ObjectWrapper<T, U, Deleter, Cloner>::clone() const {
    // A cloner may give out a const object, which a writer can't use.
    using Copied = std::remove_pointer_t<decltype(Cloner::clone(std::as_const(*object_)))>;
    using CopyDeleter = std::default_delete<Copied>;
    try {
        std::unique_ptr<Copied> copy(Cloner::clone(std::as_const(*object_)));
        if (copy == nullptr) {
            throw GenICam::BadAllocException("Could not clone object.", __FILE__, __LINE__);
        }
        if (std::is_const_v<Copied>) {
            throw GenICam::RuntimeException("Cloned object is const but must not be.", __FILE__,
                                            __LINE__);
        }
        auto* wrapper = new ObjectWrapper<Copied, U, CopyDeleter, Cloner>(copy.get());
        auto* object = const_cast<std::remove_const_t<Copied>*>(copy.release());
        return {wrapper, static_cast<U*>(object), false};
    } catch (const std::bad_alloc&) {
        throw GenICam::BadAllocException("Could not clone object.", __FILE__, __LINE__);
    }
}

// Holds the object in one piece with the count.
template <typename T>
class COWPtrBase::InlineObjectWrapper final : public IObjectWrapper {
public:
    template <typename... Args>
    explicit InlineObjectWrapper(std::in_place_t, Args&&... args)
        : object_(std::forward<Args>(args)...) {}

    T* getObject() noexcept { return &object_; }

    bool isConst() const noexcept override { return false; }
    void addRef() noexcept override { count_.add(); }
    void release() noexcept override {
        if (count_.remove()) {
            delete this;
        }
    }
    std::uint64_t useCount() const noexcept override { return count_.get(); }
    Clone clone() const override {
        try {
            auto* copy = new InlineObjectWrapper(std::in_place, object_);
            return {copy, copy->getObject(), false};
        } catch (const std::bad_alloc&) {
            throw GenICam::BadAllocException("Could not clone object.", __FILE__, __LINE__);
        }
    }
    void* getPointer(const TypeInfo& type) const override {
        return Detail::getPointerAs(&object_, type);
    }

private:
    Detail::ReferenceCount count_;
    T object_;
};

template <typename T>
template <typename D, typename Cloner>
requires std::convertible_to<D*, const T*> COWPtr<T>::COWPtr(D* object, Cloner) {
    std::unique_ptr<D> guard(object);
    wrapper_ = new ObjectWrapper<D, T, std::default_delete<D>, Cloner>(object);
    object_ = const_cast<std::remove_const_t<D>*>(guard.release());
}

template <typename T>
COWPtr<T>::COWPtr(const COWPtr& other) noexcept
    : COWPtrBase(other), wrapper_(other.wrapper_), object_(other.object_), casted_(other.casted_) {
    if (wrapper_ != nullptr) {
        wrapper_->addRef();
    }
}

template <typename T>
COWPtr<T>::COWPtr(COWPtr&& other) noexcept
    : wrapper_(std::exchange(other.wrapper_, nullptr)),
      object_(std::exchange(other.object_, nullptr)),
      casted_(std::exchange(other.casted_, false)) {}

template <typename T>
COWPtr<T>& COWPtr<T>::operator=(const COWPtr& other) noexcept {
    return *this = COWPtr(other);
}

template <typename T>
COWPtr<T>& COWPtr<T>::operator=(COWPtr&& other) noexcept {
    // The old object goes with the temporary, after this handle is whole again: its destructor
    // may run foreign code.
    COWPtr taken(std::move(other));
    swap(taken);
    return *this;
}

template <typename T>
void COWPtr<T>::swap(COWPtr& other) noexcept {
    std::swap(wrapper_, other.wrapper_);
    std::swap(object_, other.object_);
    std::swap(casted_, other.casted_);
}

template <typename T>
COWPtr<T>::~COWPtr() {
    if (wrapper_ != nullptr) {
        wrapper_->release();
    }
}

template <typename T>
template <typename... Args>
COWPtr<T> COWPtr<T>::make(Args&&... args) {
    auto* wrapper = new InlineObjectWrapper<T>(std::in_place, std::forward<Args>(args)...);
    return COWPtr(wrapper, wrapper->getObject(), false);
}

template <typename T>
TypeInfo COWPtr<T>::getTypeInfo(bool throwOnError) const {
    return TypeInfo::getTypeInfo<COWPtr<T>>(throwOnError);
}

template <typename T>
void COWPtr<T>::reset() noexcept {
    *this = COWPtr();
}

template <typename T>
const T& COWPtr<T>::operator*() const {
    if (object_ == nullptr) {
        throw GenICam::RuntimeException("Cannot dereference a nullptr.", __FILE__, __LINE__);
    }
    return *object_;
}

template <typename T>
T& COWPtr<T>::operator*() {
    makeWritable();
    if (object_ == nullptr) {
        throw GenICam::RuntimeException("Cannot dereference a nullptr.", __FILE__, __LINE__);
    }
    return *object_;
}

template <typename T>
const T* COWPtr<T>::operator->() const {
    if (object_ == nullptr) {
        throw GenICam::RuntimeException("Cannot access nullptr object.", __FILE__, __LINE__);
    }
    return object_;
}

template <typename T>
T* COWPtr<T>::operator->() {
    makeWritable();
    if (object_ == nullptr) {
        throw GenICam::RuntimeException("Cannot access nullptr object.", __FILE__, __LINE__);
    }
    return object_;
}

template <typename T>
void COWPtr<T>::makeWritable() {
    if (wrapper_ == nullptr || (!wrapper_->isConst() && wrapper_->useCount() < 2)) {
        return;
    }
    const IObjectWrapper::Clone clone = wrapper_->clone();
    if (clone.wrapper == nullptr) {
        throw GenICam::RuntimeException("Could not clone object.", __FILE__, __LINE__);
    }
    COWPtr copy(clone.wrapper, nullptr, false);
    copy.object_ = getPointerOf(clone);
    copy.casted_ = casted_ || clone.isCastNeeded;
    *this = std::move(copy);
}

template <typename T>
T* COWPtr<T>::getPointerOf(const IObjectWrapper::Clone& clone) const {
    if (clone.wrapper->isConst()) {
        throw GenICam::RuntimeException("Cloned object is still const.", __FILE__, __LINE__);
    }
    T* object = static_cast<T*>(clone.object);
    if (casted_ || clone.isCastNeeded) {
        object = static_cast<T*>(clone.wrapper->getPointer(TypeInfo::getTypeInfo<T>(false)));
        if (object == nullptr) {
            throw GenICam::RuntimeException("Cannot cast pointer of cloned object to COW pointer.",
                                            __FILE__, __LINE__);
        }
    }
    if (object == nullptr) {
        throw GenICam::RuntimeException("Could not get pointer of cloned object.", __FILE__,
                                        __LINE__);
    }
    return object;
}

}  // namespace Orlix::DataProcessing::Utils
