// Enumeration parameters: a pair of getter and setter of the node over an enumeration. Their
// entries are ports of their own (enumentryparameterport.h).
#pragma once

#include <cstdint>
#include <string>
#include <type_traits>
#include <utility>

#include "anythingtonodemapadapter/parameterport.h"

namespace AnythingToNodeMapAdapter {

// For a value that no enumeration of 32 bits has: OutOfRangeException that names both.
[[noreturn]] ANYTHINGTONODEMAPADAPTER_API void throwNotOf32Bits(const gcstring& parameter,
                                                                const gcstring& value);

// Relays to `getter` and `setter` of `Owner`, which outlives the port. T is an enumeration or
// unsigned int, 32 bits wide. A value of more bits is refused: cut, it would be another one.
template <typename T, typename Owner, T (Owner::*getter)() const, void (Owner::*setter)(T)>
class ANYTHINGTONODEMAPADAPTER_API EnumParameterPortRelay
    : public BasicDataParameterPort<IEnumParameterPort> {
    static_assert(std::is_enum_v<T> || std::is_same_v<T, unsigned int>);
    static_assert(sizeof(T) == 4);

public:
    EnumParameterPortRelay(Owner& owner, const gcstring& name, const gcstring& displayName,
                           const gcstring& toolTip, const gcstring& description,
                           const gcstring& visibility, bool available, bool writable,
                           bool hasAvailabilityRegister, bool hasLockRegister)
        : BasicDataParameterPort({name, displayName, toolTip, description, visibility}),
          owner_(&owner) {
        setFlags(available, writable, hasAvailabilityRegister, hasLockRegister);
    }

    // For the node's own code: the value as what it is.
    [[nodiscard]] virtual T getTypedValue() const { return (owner_->*getter)(); }
    // A change made here reaches the node map.
    virtual void setTypedValue(T value) { setValue(static_cast<std::int64_t>(value), false); }

    [[nodiscard]] std::uint64_t getSize() const override { return sizeof(T); }

    [[nodiscard]] std::int64_t getValue() const override {
        return static_cast<std::int64_t>((owner_->*getter)());
    }

    void setValue(std::int64_t value, bool silent) override {
        if (!std::in_range<Number>(value)) {
            throwNotOf32Bits(getName(), std::to_string(value).c_str());
        }
        const bool changes = !silent && getValue() != value;
        (owner_->*setter)(static_cast<T>(value));
        if (changes) {
            notify();
        }
    }

private:
    using Number = typename std::conditional_t<std::is_enum_v<T>, std::underlying_type<T>,
                                               std::type_identity<T>>::type;

    Owner* owner_;
};

}  // namespace AnythingToNodeMapAdapter
