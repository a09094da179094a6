// Boolean parameters: a pair of getter and setter of the node.
#pragma once

#include "anythingtonodemapadapter/parameterport.h"

namespace AnythingToNodeMapAdapter {

// Relays to `getter` and `setter` of `Owner`, which outlives the port.
template <typename Owner, bool (Owner::*getter)() const, void (Owner::*setter)(bool)>
class ANYTHINGTONODEMAPADAPTER_API BooleanParameterPortRelay
    : public BasicDataParameterPort<IBooleanParameterPort> {
public:
    BooleanParameterPortRelay(Owner& owner, const gcstring& name, const gcstring& displayName,
                              const gcstring& toolTip, const gcstring& description,
                              const gcstring& visibility, bool available, bool writable,
                              bool hasAvailabilityRegister, bool hasLockRegister)
        : BasicDataParameterPort({name, displayName, toolTip, description, visibility}),
          owner_(&owner) {
        setFlags(available, writable, hasAvailabilityRegister, hasLockRegister);
    }

    [[nodiscard]] std::uint64_t getSize() const override { return 1; }
    [[nodiscard]] bool getValue() const override { return (owner_->*getter)(); }

    void setValue(bool value, bool silent) override {
        const bool changes = !silent && getValue() != value;
        (owner_->*setter)(value);
        if (changes) {
            notify();
        }
    }

private:
    Owner* owner_;
};

}  // namespace AnythingToNodeMapAdapter
