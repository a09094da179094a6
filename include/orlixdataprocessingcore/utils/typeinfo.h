// Run-time types that work across module borders: a type is identified by a text that the compiler
// produces, and the core keeps one record for each text. Records are made by static initialisers,
// never change and never go away, so a TypeInfo is a plain value that any thread may use.
//
//     class Camera : public AdvancedNode, public INodeMapContainer {
//         ORLIX_OBJECT(Camera)
//         ...
//     };
//     // in camera.cpp, bases that are themselves registered:
//     ORLIX_REGISTER_TYPE(Plugin::Camera, AdvancedNode, INodeMapContainer)
#pragma once

#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include "gcbase/gcstring.h"
#include "orlixdataprocessingcore/api.h"
#include "orlixdataprocessingcore/utils/iobject.h"
#include "orlixdataprocessingcore/utils/uuid.h"

namespace Orlix::DataProcessing::Utils {

using GenICam::gcstring;

class ITypeInfoData;
class ITypeRegistration;
class ITypeRegistrationSlot;
class PropertyInfo;
class Variant;

class ORLIXDATAPROCESSINGCORE_API TypeInfo {
public:
    // Makes a Variant with a default value of the type.
    using Factory = Variant (*)();
    using CastFunction = void* (*)(void*);

    // Names no type.
    TypeInfo() noexcept = default;
    explicit TypeInfo(const ITypeInfoData* data) noexcept : data_(data) {}

    // Whether this names a registered type. All other queries of an invalid one give nothing.
    [[nodiscard]] bool isValid() const noexcept { return data_ != nullptr; }
    // The text that identifies the type, such as "Orlix::DataProcessing::Core::Integer".
    [[nodiscard]] gcstring getIdentifier() const;
    [[nodiscard]] std::uint64_t getSize() const;
    // Null if the type has none.
    [[nodiscard]] const Uuid* getUuid() const;
    // Whether an object of this type is also one of `target`: the same type or one of its bases.
    [[nodiscard]] bool canConvert(const TypeInfo& target) const;
    // Throws RuntimeException that names the type if it has no default value.
    [[nodiscard]] Variant createDefault() const;

    // The property with that name, also of a base. Throws RuntimeException that names the type and
    // the property if there is none.
    [[nodiscard]] const PropertyInfo& getProperty(const gcstring& name) const;
    [[nodiscard]] std::vector<gcstring> getPropertyNames() const;
    // Cuts "a.b.c" into "a" and "b.c"; the second text is empty at the end of the path. Throws
    // InvalidArgumentException for a path with an empty element.
    [[nodiscard]] static std::pair<gcstring, gcstring> splitPath(const gcstring& path);

    // Copies the identifier of T with its terminator to `buffer` and stores its size, with the
    // terminator, in `*size`. With a null buffer it only stores the size.
    template <typename T>
    static void getTypeIdentifier(char* buffer, int* size);

    // The record of T; if T is not registered, an exception or an invalid TypeInfo.
    template <typename T>
    [[nodiscard]] static TypeInfo getTypeInfo(bool throwOnError);
    // The dynamic type of an object.
    template <typename T>
    [[nodiscard]] static TypeInfo getTypeInfo(const T* object, bool throwOnError = true);
    // The type with that identifier, or an invalid TypeInfo.
    [[nodiscard]] static TypeInfo find(const gcstring& identifier);

    // What ORLIX_REGISTER_TYPE runs. A failure is logged, and T stays unregistered; it never
    // throws. If the type is registered already, the first registration stays.
    template <typename T, typename... Bases>
    static bool registerType(Factory factory = nullptr, const Uuid* uuid = nullptr) noexcept;

    // The same for a type with an identity of its own, in the text form of Uuid.
    template <typename T, typename... Bases>
    static bool registerTypeWithUuid(const char* uuid, Factory factory = nullptr) noexcept;
    // A step of the registration: enters the record of Base into that of T. Throws
    // InvalidArgumentException for null, and RuntimeException if Base is not registered.
    template <typename T, typename Base>
    static void addBase(ITypeInfoData* data);

    friend bool operator==(const TypeInfo&, const TypeInfo&) noexcept = default;

private:
    template <typename T, typename... Bases>
    static void tryRegisterType(Factory factory, const Uuid* uuid);
    template <typename Function>
    static bool guardRegistration(Function tryRegister) noexcept;
    // Null if there is no memory for it.
    template <typename T>
    static ITypeRegistrationSlot* getSlot();
    // Static initialisers of different files run in no fixed order; this makes sure that the
    // core's own types are there before any type that builds on them.
    static void registerCoreTypes();
    static void logRegistrationFailure(const void* object, const char* message) noexcept;

    [[nodiscard]] static ITypeRegistration& getTypeRegistration();
    // `uuid` points at 16 bytes or is null. Null if there is no memory for it.
    [[nodiscard]] static ITypeInfoData* createTypeInfoData(const gcstring& identifier,
                                                           std::uint64_t size, Factory factory,
                                                           const std::uint8_t* uuid);
    static void destroyTypeInfoData(ITypeInfoData* data) noexcept;

    friend const void* type_cast(const void*, const TypeInfo&, const TypeInfo&);
    friend struct CoreTypes;

    const ITypeInfoData* data_ = nullptr;
};

// Takes the address of an object of the dynamic type `from` to that of its part of the type `to`,
// by the registered bases. Null if `to` is none of them.
[[nodiscard]] ORLIXDATAPROCESSINGCORE_API const void* type_cast(const void* pointer,
                                                                const TypeInfo& from,
                                                                const TypeInfo& to);
[[nodiscard]] ORLIXDATAPROCESSINGCORE_API void* type_cast(void* pointer, const TypeInfo& from,
                                                          const TypeInfo& to);

// The object as a T, by its registered dynamic type, or null. What dynamic_cast would be if it
// could be trusted across modules.
template <typename T>
[[nodiscard]] const T* object_cast(const IObject* object);
template <typename T>
[[nodiscard]] T* object_cast(IObject* object);

// The record of one type, made and owned by the core.
class ORLIXDATAPROCESSINGCORE_API ITypeInfoData {
public:
    virtual ~ITypeInfoData();

    // `isPrimary` tells that the base lies at the start of the object.
    virtual void addBase(bool isPrimary, const ITypeInfoData* baseData,
                         TypeInfo::CastFunction castFunction) = 0;
    // A name that is there already keeps its first property. Only before setData.
    virtual void addProperty(const PropertyInfo& property) = 0;

protected:
    ITypeInfoData() = default;
    ITypeInfoData(const ITypeInfoData&) = default;
    ITypeInfoData& operator=(const ITypeInfoData&) = default;
};

// The place of one type in the registry.
class ORLIXDATAPROCESSINGCORE_API ITypeRegistrationSlot {
public:
    virtual ~ITypeRegistrationSlot();

    // From now on the core owns the data. If the slot is filled already, its data stays and the
    // argument is destroyed.
    virtual void setData(ITypeInfoData* data) = 0;
    // Null until the type is registered.
    [[nodiscard]] virtual const ITypeInfoData* getData() const noexcept = 0;
};

class ORLIXDATAPROCESSINGCORE_API ITypeRegistration {
public:
    virtual ~ITypeRegistration();

    // The slot of that identifier, made at its first look-up; it lives as long as the process.
    [[nodiscard]] virtual ITypeRegistrationSlot* getSlot(const gcstring& identifier) = 0;
};

}  // namespace Orlix::DataProcessing::Utils

// Inside a class: implements the type support of IObject. Leaves the access at public.
#define ORLIX_OBJECT(Type)                                                                 \
public:                                                                                    \
    Orlix::DataProcessing::Utils::TypeInfo getTypeInfo(bool throwOnError) const override { \
        return Orlix::DataProcessing::Utils::TypeInfo::getTypeInfo<Type>(throwOnError);    \
    }                                                                                      \
    const void* getRawPointer() const override {                                           \
        return static_cast<const Type*>(this);                                             \
    }                                                                                      \
    void* getRawPointer() override {                                                       \
        return static_cast<Type*>(this);                                                   \
    }

// The same for a class that declares the three operations itself; in its source file, within the
// class's namespace.
#define ORLIX_DEFINE_OBJECT(Type)                                                       \
    Orlix::DataProcessing::Utils::TypeInfo Type::getTypeInfo(bool throwOnError) const { \
        return Orlix::DataProcessing::Utils::TypeInfo::getTypeInfo<Type>(throwOnError); \
    }                                                                                   \
    const void* Type::getRawPointer() const {                                           \
        return static_cast<const Type*>(this);                                          \
    }                                                                                   \
    void* Type::getRawPointer() {                                                       \
        return static_cast<Type*>(this);                                                \
    }

#define ORLIX_DETAIL_JOIN2(a, b) a##b
#define ORLIX_DETAIL_JOIN(a, b) ORLIX_DETAIL_JOIN2(a, b)

// At namespace scope of one source file: registers a type with its direct registered bases when
// the module is loaded. Bases of the same module must be registered further up in the same file.
#define ORLIX_REGISTER_TYPE(...)                                                          \
    [[maybe_unused]] static const bool ORLIX_DETAIL_JOIN(orlixTypeRegistered, __LINE__) = \
        Orlix::DataProcessing::Utils::TypeInfo::registerType<__VA_ARGS__>();

// The same for a type that has a Uuid, given first, as a text:
//     ORLIX_REGISTER_TYPE_WITH_UUID("846bca11-...", Camera, AdvancedNode, INodeMapContainer)
#define ORLIX_REGISTER_TYPE_WITH_UUID(uuid, ...)                                          \
    [[maybe_unused]] static const bool ORLIX_DETAIL_JOIN(orlixTypeRegistered, __LINE__) = \
        Orlix::DataProcessing::Utils::TypeInfo::registerTypeWithUuid<__VA_ARGS__>(uuid);

#include "orlixdataprocessingcore/utils/typeinfo_impl.h"
