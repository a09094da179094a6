// The shared, copy-on-write handle that values travel in: every holder shares one object, and the
// first writer gets a private copy. Copying a handle is one atomic increment and never allocates.
//
// The count is atomic, so handles of one object may live on different threads; one handle belongs
// to one thread at a time. Reading through a non-const handle must go by getConst() or
// std::as_const, since every non-const access makes the object private first.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "gcbase/gcexception.h"
#include "orlixdataprocessingcore/api.h"
#include "orlixdataprocessingcore/utils/iobject.h"
#include "orlixdataprocessingcore/utils/typeinfo.h"

namespace Orlix::DataProcessing::Utils {

class ORLIXDATAPROCESSINGCORE_API COWPtrBase : public IObject {
public:
    class IObjectWrapper;
    template <typename T, typename U, typename Deleter, typename Cloner>
    class ObjectWrapper;
    template <typename T>
    class InlineObjectWrapper;

    ~COWPtrBase() override = default;

    // Whether the handle holds an object.
    [[nodiscard]] virtual bool isValid() const noexcept = 0;
    // Lets go of the object.
    virtual void reset() noexcept = 0;

protected:
    COWPtrBase() = default;
    COWPtrBase(const COWPtrBase&) = default;
    COWPtrBase(COWPtrBase&&) = default;
    COWPtrBase& operator=(const COWPtrBase&) = default;
    COWPtrBase& operator=(COWPtrBase&&) = default;
};

// The shared control object. It destroys itself and the object with the last reference. The order
// of the virtual operations is part of the interface.
class ORLIXDATAPROCESSINGCORE_API COWPtrBase::IObjectWrapper {
public:
    struct Clone {
        IObjectWrapper* wrapper = nullptr;  // owned by the caller, with a count of 1
        void* object = nullptr;             // as the type that the wrapper exposes
        bool isCastNeeded = false;          // the pointer has to be asked for with getPointer
    };

    virtual ~IObjectWrapper();
    // Whether the object may not be written, even by a sole holder.
    [[nodiscard]] virtual bool isConst() const noexcept = 0;
    virtual void addRef() noexcept = 0;
    virtual void release() noexcept = 0;
    [[nodiscard]] virtual std::uint64_t useCount() const noexcept = 0;
    [[nodiscard]] virtual Clone clone() const = 0;
    // The object as the given type, or null.
    [[nodiscard]] virtual void* getPointer(const TypeInfo& type) const = 0;

protected:
    IObjectWrapper() = default;
    IObjectWrapper(const IObjectWrapper&) = delete;
    IObjectWrapper& operator=(const IObjectWrapper&) = delete;
};

// Copies an object with its copy constructor.
template <typename T>
struct DefaultCloner {
    [[nodiscard]] static T* clone(const T& object) { return new T(object); }
};

template <typename T>
class COWPtr : public COWPtrBase {
public:
    using element_type = T;

    COWPtr() noexcept = default;
    COWPtr(std::nullptr_t) noexcept {}
    // Takes ownership, also if it throws. A const object is never written: the first write clones.
    // Throws InvalidArgumentException for a null pointer.
    template <typename D, typename Cloner = DefaultCloner<std::remove_const_t<D>>>
    requires std::convertible_to<D*, const T*>
    explicit COWPtr(D* object, Cloner cloner = Cloner());
    template <typename D>
    requires std::convertible_to<D*, const T*>
    explicit COWPtr(std::unique_ptr<D> object) : COWPtr(object.release()) {}
    COWPtr(const COWPtr& other) noexcept;
    COWPtr(COWPtr&& other) noexcept;
    COWPtr& operator=(const COWPtr& other) noexcept;
    COWPtr& operator=(COWPtr&& other) noexcept;
    ~COWPtr() override;

    // A new object, in one allocation with its count.
    template <typename... Args>
    [[nodiscard]] static COWPtr make(Args&&... args);
    // Takes over a reference to a control object and the address of its object as a T; `casted`
    // tells that this came from getPointer.
    [[nodiscard]] static COWPtr adopt(IObjectWrapper* wrapper, T* object, bool casted) noexcept {
        return COWPtr(wrapper, object, casted);
    }

    TypeInfo getTypeInfo(bool throwOnError) const override;
    const void* getRawPointer() const override { return this; }
    void* getRawPointer() override { return this; }

    [[nodiscard]] bool isValid() const noexcept override { return object_ != nullptr; }
    void reset() noexcept override;
    void swap(COWPtr& other) noexcept;
    explicit operator bool() const noexcept { return object_ != nullptr; }

    // The const forms read; the non-const forms make the object private first. Both throw
    // RuntimeException for an empty handle.
    const T& operator*() const;
    T& operator*();
    const T* operator->() const;
    T* operator->();
    // Reads without making the object private; null for an empty handle.
    [[nodiscard]] const T* getConst() const noexcept { return object_; }

    // Clones the object if another handle shares it or it is const. If that throws, the handle
    // still shares the old object.
    void makeWritable();

    // Whether both share one object.
    friend bool operator==(const COWPtr& a, const COWPtr& b) noexcept {
        return a.object_ == b.object_;
    }

private:
    friend class Variant;
    template <typename>
    friend class COWPtr;

    COWPtr(IObjectWrapper* wrapper, T* object, bool casted) noexcept
        : wrapper_(wrapper), object_(object), casted_(casted) {}
    [[nodiscard]] T* getPointerOf(const IObjectWrapper::Clone& clone) const;

    IObjectWrapper* wrapper_ = nullptr;
    T* object_ = nullptr;
    // The object was reached by getPointer, so that a clone must be cast again.
    bool casted_ = false;
};

}  // namespace Orlix::DataProcessing::Utils

#include "orlixdataprocessingcore/utils/cowptr_impl.h"
