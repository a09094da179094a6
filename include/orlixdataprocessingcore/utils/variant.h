// Holds a value of any registered value class, for pins, arguments and reflection. Copying one is
// one atomic increment, moving is free; the value is shared copy-on-write between the Variant, its
// copies and all COWPtr handles to it. One Variant belongs to one thread at a time.
//
//     Variant value(COWPtr<Integer>::make(5));
//     if (const Integer* integer = value.get<Integer>(false)) ...  // reading through a const one
#pragma once

#include <cstdint>
#include <utility>

#include "orlixdataprocessingcore/api.h"
#include "orlixdataprocessingcore/utils/cowptr.h"
#include "orlixdataprocessingcore/utils/iobject.h"
#include "orlixdataprocessingcore/utils/typeinfo.h"

namespace Orlix::DataProcessing::Utils {

// What a Variant can be made of: an object that tells its type, but no handle to one.
template <typename T>
concept VariantValue = std::derived_from<T, IObject> && !std::derived_from<T, COWPtrBase>;

class ORLIXDATAPROCESSINGCORE_API Variant {
public:
    class IDataWrapper;
    template <typename T>
    class DataWrapper;

    // Without a value.
    Variant() noexcept = default;
    // All throw InvalidArgumentException if the dynamic type is not registered. The first two copy
    // or move the value; the others share it, and throw InvalidArgumentException for a null one.
    template <typename V>
    requires VariantValue<std::remove_cvref_t<V>>
    explicit Variant(V&& value);
    template <VariantValue T>
    explicit Variant(T* value);  // takes ownership, also if it throws
    template <typename T>
    Variant(COWPtr<T> value);  // NOLINT: a handle is as good as its Variant

    inline Variant(const Variant& other) noexcept;
    Variant(Variant&& other) noexcept : wrapper_(std::exchange(other.wrapper_, nullptr)) {}
    inline Variant& operator=(const Variant& other) noexcept;
    inline Variant& operator=(Variant&& other) noexcept;
    inline ~Variant();

    [[nodiscard]] bool isValid() const noexcept { return wrapper_ != nullptr; }
    // The dynamic type of the value; invalid without one.
    [[nodiscard]] TypeInfo getValueType() const;
    inline void reset() noexcept;

    // The value as the given type: null if there is none or it is no such type. With throwOnError,
    // a Variant without value throws. The non-const form makes the value private first.
    [[nodiscard]] const void* get(const TypeInfo& type, bool throwOnError) const;
    [[nodiscard]] void* get(const TypeInfo& type, bool throwOnError);
    // With throwOnError, never null: RuntimeException tells what was wrong.
    template <typename T>
    [[nodiscard]] const T* get(bool throwOnError) const;
    template <typename T>
    [[nodiscard]] T* get(bool throwOnError);
    // Shares the value.
    template <typename T>
    [[nodiscard]] COWPtr<T> getCOW(bool throwOnError) const;
    // As getCOW(false), and lets go of the value; a value of another type stays.
    template <typename T>
    [[nodiscard]] COWPtr<T> moveCOW();

    // Takes over a reference to a held value; for a module that holds values in a way of its own.
    [[nodiscard]] static Variant adopt(IDataWrapper* wrapper) noexcept {
        Variant result;
        result.wrapper_ = wrapper;
        return result;
    }
    // Makes a default value; for the registration of a type.
    template <VariantValue T>
    [[nodiscard]] static Variant createDefault();

private:
    // This Variant alone holds the returned wrapper.
    IDataWrapper* unshare();

    IDataWrapper* wrapper_ = nullptr;
};

// A held value. Reference counted; destroys itself with the last reference.
class ORLIXDATAPROCESSINGCORE_API Variant::IDataWrapper {
public:
    virtual ~IDataWrapper();
    virtual void addRef() noexcept = 0;
    virtual void release() noexcept = 0;
    [[nodiscard]] virtual std::uint64_t useCount() const noexcept = 0;
    // A second wrapper, with a count of 1, that shares the value.
    [[nodiscard]] virtual IDataWrapper* clone() const = 0;
    [[nodiscard]] virtual const TypeInfo& getValueType() const noexcept = 0;
    // The value as the given type, or null; the second makes it private to the wrapper first.
    [[nodiscard]] virtual const void* getPointer(const TypeInfo& type) const = 0;
    [[nodiscard]] virtual void* getWritablePointer(const TypeInfo& type) = 0;
    // Whether the clones of the control object are given out as exactly this type; a handle of any
    // other type has to cast them.
    [[nodiscard]] virtual bool isExposedAs(const TypeInfo& type) const noexcept = 0;
    // The control object of the value, for another handle, which adds its own reference. Null if
    // the value can't be shared.
    [[nodiscard]] virtual COWPtrBase::IObjectWrapper* getObjectWrapper() const noexcept = 0;
    // Gives its own reference to the control object away. Only by a sole holder, who then releases
    // the wrapper without using it any more. Null if the value can't be given away.
    [[nodiscard]] virtual COWPtrBase::IObjectWrapper* takeObjectWrapper() noexcept;

protected:
    IDataWrapper() = default;
    IDataWrapper(const IDataWrapper&) = delete;
    IDataWrapper& operator=(const IDataWrapper&) = delete;
};

}  // namespace Orlix::DataProcessing::Utils

namespace Orlix::DataProcessing::Core {
using Utils::COWPtr;
using Utils::TypeInfo;
using Utils::Variant;
}  // namespace Orlix::DataProcessing::Core

// As ORLIX_REGISTER_TYPE, for a value class that has a default constructor.
#define ORLIX_REGISTER_VALUE_TYPE(Type, ...)                                                   \
    [[maybe_unused]] static const bool ORLIX_DETAIL_JOIN(orlixTypeRegistered, __LINE__) =      \
        Orlix::DataProcessing::Utils::TypeInfo::registerType<Type __VA_OPT__(, ) __VA_ARGS__>( \
            &Orlix::DataProcessing::Utils::Variant::createDefault<Type>);

#include "orlixdataprocessingcore/utils/variant_impl.h"
