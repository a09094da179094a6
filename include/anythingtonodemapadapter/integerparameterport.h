// Integer parameters: a pair of getter and setter of the node, with range, increment and the words
// that tell a viewer how to show the number.
#pragma once

#include <cstdint>
#include <type_traits>
#include <utility>

#include "anythingtonodemapadapter/parameterport.h"

namespace AnythingToNodeMapAdapter {

// Range and representation are data for the node map; nothing here enforces them.
class ANYTHINGTONODEMAPADAPTER_API IntegerParameterPortBase
    : public BasicDataParameterPort<IIntegerParameterPort> {
public:
    [[nodiscard]] const char* getRepresentation() const override { return representation_.c_str(); }
    [[nodiscard]] const char* getUnit() const override { return unit_.c_str(); }
    [[nodiscard]] std::int64_t getMax() const override { return max_; }
    [[nodiscard]] std::int64_t getMin() const override { return min_; }
    [[nodiscard]] std::int64_t getInc() const override { return inc_; }
    [[nodiscard]] std::uint64_t getSize() const override { return sizeof(std::int64_t); }

    // For the owner of a list whose length bounds this selector; call notify() afterwards. Any
    // value is taken, also one below the minimum.
    void setMax(std::int64_t max) { max_ = max; }

protected:
    IntegerParameterPortBase(ParameterTexts texts, std::int64_t min, std::int64_t max,
                             std::int64_t inc, const gcstring& representation, const gcstring& unit)
        : BasicDataParameterPort(std::move(texts)),
          min_(min),
          max_(max),
          inc_(inc),
          representation_(representation),
          unit_(unit) {}

private:
    std::int64_t min_;
    std::int64_t max_;
    std::int64_t inc_;
    gcstring representation_;
    gcstring unit_;
};

// Relays to `getter` and `setter` of `Owner`, which outlives the port. T is std::int64_t or
// std::uint64_t.
template <typename T, typename Owner, T (Owner::*getter)() const, void (Owner::*setter)(T)>
class ANYTHINGTONODEMAPADAPTER_API IntegerParameterPortRelay : public IntegerParameterPortBase {
    static_assert(std::is_same_v<T, std::int64_t> || std::is_same_v<T, std::uint64_t>);

public:
    IntegerParameterPortRelay(Owner& owner, const gcstring& name, const gcstring& displayName,
                              const gcstring& toolTip, const gcstring& description,
                              const gcstring& visibility, bool available, bool writable,
                              bool hasAvailabilityRegister, bool hasLockRegister, std::int64_t min,
                              std::int64_t max, int inc, const gcstring& representation,
                              const gcstring& unit = "")
        : IntegerParameterPortBase({name, displayName, toolTip, description, visibility}, min, max,
                                   inc, representation, unit),
          owner_(&owner) {
        setFlags(available, writable, hasAvailabilityRegister, hasLockRegister);
    }

    [[nodiscard]] bool isSigned() const override { return std::is_signed_v<T>; }

    [[nodiscard]] std::int64_t getValue() const override {
        return static_cast<std::int64_t>((owner_->*getter)());
    }

    void setValue(std::int64_t value, bool silent) override {
        // The request counts, not what the setter makes of it.
        const bool changes = !silent && getValue() != value;
        (owner_->*setter)(static_cast<T>(value));
        if (changes) {
            notify();
        }
    }

private:
    Owner* owner_;
};

}  // namespace AnythingToNodeMapAdapter
