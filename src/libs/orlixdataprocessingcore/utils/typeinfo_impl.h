// Bodies of TypeInfo's templates: how a type names itself and enters the registry. Included by its
// header only; every module compiles them for its own types.
#pragma once

#include <atomic>
#include <cstring>
#include <exception>
#include <new>

#include "gcbase/gcexception.h"
#include "orlixdataprocessingcore/utils/typeinfo.h"

namespace Orlix::DataProcessing::Utils {

namespace Detail {

// From "... [with T = Name]" of one compiler or "... [T = Name]" of the other to "Name".
constexpr std::string_view cutTypeIdentifier(std::string_view signature) {
    constexpr std::string_view mark = "T = ";
    const std::size_t begin = signature.find(mark) + mark.size();
    return signature.substr(begin, signature.size() - 1 - begin);
}

// The end of a template argument list that starts behind `begin`: its closing bracket.
constexpr std::size_t findClosingBracket(std::string_view text, std::size_t begin) {
    std::size_t depth = 1;
    while (depth != 0) {
        depth += text[begin] == '<' ? 1U : 0U;
        depth -= text[begin] == '>' ? 1U : 0U;
        ++begin;
    }
    return begin - 1;
}

// An identifier in one spelling. Compilers differ in "> >" and ">>", and even one compiler writes
// the default allocator of a container in one place and leaves it out in another: here brackets
// are kept apart, and the allocator is left out.
template <std::size_t Capacity>
struct TypeIdentifier {
    constexpr explicit TypeIdentifier(std::string_view name) {
        constexpr std::string_view allocator = ", std::allocator<";
        for (std::size_t i = 0; i < name.size(); ++i) {
            if (name.substr(i).starts_with(allocator)) {
                i = findClosingBracket(name, i + allocator.size());
            } else if (!name.substr(i).starts_with(" >")) {
                append(name[i]);
            }
        }
    }
    constexpr void append(char character) {
        if (character == '>' && size != 0 && text[size - 1] == '>') {
            text[size++] = ' ';
        }
        text[size++] = character;
    }

    // With room for its terminator and, at the worst, a blank for each character.
    char text[2 * Capacity + 1]{};
    std::size_t size = 0;
};

// Whether the base B lies at the start of a T; judged by an address that is never accessed.
template <typename T, typename B>
bool isPrimaryBase() {
    alignas(T) static char place[sizeof(T)];
    T* object = reinterpret_cast<T*>(place);
    return reinterpret_cast<char*>(static_cast<B*>(object)) == place;
}

template <typename T>
concept HasProperties = requires(ITypeInfoData& data) {
    T::registerProperties(data);
};

// Whether T has properties only because its base B has them. They belong to the record of B: their
// functions want the address of the B in the object.
template <typename T, typename B>
constexpr bool inheritsProperties() {
    if constexpr (HasProperties<T> && HasProperties<B>) {
        return &T::registerProperties == &B::registerProperties;
    }
    return false;
}

template <typename T, typename B>
void* castToBase(void* object) {
    return static_cast<B*>(static_cast<T*>(object));
}

}  // namespace Detail

template <typename T>
void TypeInfo::getTypeIdentifier(char* buffer, int* size) {
    if (size == nullptr) {
        throw GenICam::InvalidArgumentException("Passed size is null.", __FILE__, __LINE__);
    }
    constexpr std::string_view name = Detail::cutTypeIdentifier(__PRETTY_FUNCTION__);
    static constexpr Detail::TypeIdentifier<name.size()> identifier(name);
    constexpr int needed = static_cast<int>(identifier.size) + 1;
    if (buffer == nullptr) {
        *size = needed;
        return;
    }
    if (*size < needed) {
        throw GenICam::InvalidArgumentException("Size is too small.", __FILE__, __LINE__);
    }
    std::memcpy(buffer, identifier.text, identifier.size + 1);
    *size = needed;
}

namespace Detail {

template <typename T>
gcstring getTypeIdentifierText() {
    int size = 0;
    TypeInfo::getTypeIdentifier<T>(nullptr, &size);
    std::vector<char> text(static_cast<std::size_t>(size));
    TypeInfo::getTypeIdentifier<T>(text.data(), &size);
    return gcstring(text.data());
}

}  // namespace Detail

template <typename T>
ITypeRegistrationSlot* TypeInfo::getSlot() {
    // Asked for again only after a look-up without memory.
    static std::atomic<ITypeRegistrationSlot*> known{nullptr};
    ITypeRegistrationSlot* slot = known.load(std::memory_order_acquire);
    if (slot == nullptr) {
        try {
            slot = getTypeRegistration().getSlot(Detail::getTypeIdentifierText<T>());
        } catch (const std::bad_alloc&) {
            return nullptr;
        }
        known.store(slot, std::memory_order_release);
    }
    return slot;
}

template <typename T>
TypeInfo TypeInfo::getTypeInfo(bool throwOnError) {
    // Data never changes once it is there, so the way to it is gone only until it is found: values
    // are asked for their type several times per frame.
    static std::atomic<const ITypeInfoData*> known{nullptr};
    if (const ITypeInfoData* data = known.load(std::memory_order_acquire)) {
        return TypeInfo(data);
    }
    const ITypeRegistrationSlot* slot = getSlot<T>();
    if (slot == nullptr) {
        if (throwOnError) {
            throw GenICam::RuntimeException("Could not get registered type.", __FILE__, __LINE__);
        }
        return TypeInfo();
    }
    const ITypeInfoData* data = slot->getData();
    if (data == nullptr && throwOnError) {
        throw GenICam::RuntimeException("The requested type is not registered.", __FILE__,
                                        __LINE__);
    }
    known.store(data, std::memory_order_release);
    return TypeInfo(data);
}

template <typename T>
TypeInfo TypeInfo::getTypeInfo(const T* object, bool throwOnError) {
    if (object == nullptr) {
        throw GenICam::InvalidArgumentException("No object passed.", __FILE__, __LINE__);
    }
    return object->getTypeInfo(throwOnError);
}

template <typename T, typename Base>
void TypeInfo::addBase(ITypeInfoData* data) {
    if (data == nullptr) {
        throw GenICam::InvalidArgumentException("No type info data passed.", __FILE__, __LINE__);
    }
    const ITypeRegistrationSlot* slot = getSlot<Base>();
    if (slot == nullptr) {
        throw GenICam::RuntimeException("Could not get registered type.", __FILE__, __LINE__);
    }
    const ITypeInfoData* baseData = slot->getData();
    if (baseData == nullptr) {
        throw GenICam::RuntimeException("Base type is not registered.", __FILE__, __LINE__);
    }
    // The record of the base holds the bases further up; type_cast walks on through it.
    data->addBase(Detail::isPrimaryBase<T, Base>(), baseData, &Detail::castToBase<T, Base>);
}

template <typename T, typename... Bases>
void TypeInfo::tryRegisterType(Factory factory, const Uuid* uuid) {
    ITypeRegistrationSlot* slot = getSlot<T>();
    if (slot == nullptr) {
        throw GenICam::RuntimeException("Could not get registered type.", __FILE__, __LINE__);
    }
    ITypeInfoData* data = createTypeInfoData(Detail::getTypeIdentifierText<T>(), sizeof(T), factory,
                                             uuid != nullptr ? uuid->getBytes().data() : nullptr);
    if (data == nullptr) {
        throw GenICam::RuntimeException("Could not create type info data.", __FILE__, __LINE__);
    }
    try {
        (addBase<T, Bases>(data), ...);
        if constexpr (Detail::HasProperties<T> &&
                      !(Detail::inheritsProperties<T, Bases>() || ...)) {
            T::registerProperties(*data);
        }
    } catch (...) {
        destroyTypeInfoData(data);
        throw;
    }
    slot->setData(data);
}

template <typename T, typename... Bases>
bool TypeInfo::registerType(Factory factory, const Uuid* uuid) noexcept {
    return guardRegistration([=] { tryRegisterType<T, Bases...>(factory, uuid); });
}

template <typename T, typename... Bases>
bool TypeInfo::registerTypeWithUuid(const char* uuid, Factory factory) noexcept {
    return guardRegistration([=] {
        const Uuid parsed{gcstring(uuid)};
        tryRegisterType<T, Bases...>(factory, &parsed);
    });
}

template <typename Function>
bool TypeInfo::guardRegistration(Function tryRegister) noexcept {
    static const char place = 0;  // stands for the registration in a log line
    try {
        registerCoreTypes();
        tryRegister();
        return true;
    } catch (const GenICam::GenericException& exception) {
        logRegistrationFailure(&place, exception.GetDescription());
    } catch (const std::exception& exception) {
        logRegistrationFailure(&place, exception.what());
    } catch (...) {
        logRegistrationFailure(&place, nullptr);
    }
    return false;
}

template <typename T>
const T* object_cast(const IObject* object) {
    if (object == nullptr) {
        return nullptr;
    }
    return static_cast<const T*>(type_cast(object->getRawPointer(), object->getTypeInfo(false),
                                           TypeInfo::getTypeInfo<T>(false)));
}

template <typename T>
T* object_cast(IObject* object) {
    if (object == nullptr) {
        return nullptr;
    }
    return static_cast<T*>(type_cast(object->getRawPointer(), object->getTypeInfo(false),
                                     TypeInfo::getTypeInfo<T>(false)));
}

}  // namespace Orlix::DataProcessing::Utils
