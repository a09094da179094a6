// One entry of an enumeration parameter: a constant with a name and texts of its own.
#pragma once

#include <cstdint>

#include "anythingtonodemapadapter/parameterport.h"

namespace AnythingToNodeMapAdapter {

// T is the enumeration, or unsigned int. The visibility is "Expert" unless setVisibility changes
// it.
template <typename T>
class ANYTHINGTONODEMAPADAPTER_API EnumEntryParameterPort
    : public BasicDataParameterPort<IEnumEntryParameterPort> {
public:
    EnumEntryParameterPort(T value, const gcstring& name, const gcstring& displayName,
                           const gcstring& toolTip, const gcstring& description, bool available,
                           bool writable, bool hasAvailabilityRegister, bool hasLockRegister)
        : BasicDataParameterPort({name, displayName, toolTip, description}), value_(value) {
        setFlags(available, writable, hasAvailabilityRegister, hasLockRegister);
    }

    [[nodiscard]] std::uint64_t getSize() const override { return sizeof(T); }
    [[nodiscard]] std::int64_t getValue() const override {
        return static_cast<std::int64_t>(value_);
    }

private:
    T value_;
};

}  // namespace AnythingToNodeMapAdapter
