// Command parameters: an action of the node, and the question whether it still runs.
#pragma once

#include "anythingtonodemapadapter/parameterport.h"

namespace AnythingToNodeMapAdapter {

// Relays to `isExecutingQuery` and `executeAction` of `Owner`, which outlives the port. Write-only:
// a viewer can start the command but never asks whether it is done.
template <typename Owner, bool (Owner::*isExecutingQuery)() const, void (Owner::*executeAction)()>
class ANYTHINGTONODEMAPADAPTER_API CommandParameterPortRelay
    : public BasicDataParameterPort<ICommandParameterPort> {
public:
    CommandParameterPortRelay(Owner& owner, const gcstring& name, const gcstring& displayName,
                              const gcstring& toolTip, const gcstring& description,
                              const gcstring& visibility, bool available, bool writable,
                              bool hasAvailabilityRegister, bool hasLockRegister, bool writeOnly)
        : BasicDataParameterPort({name, displayName, toolTip, description, visibility}),
          writeOnly_(writeOnly),
          owner_(&owner) {
        setFlags(available, writable, hasAvailabilityRegister, hasLockRegister);
    }

    [[nodiscard]] std::uint64_t getSize() const override { return 0; }
    [[nodiscard]] bool isWriteOnly() const override { return writeOnly_; }
    [[nodiscard]] bool isExecuting() const override { return (owner_->*isExecutingQuery)(); }
    // A command has no value that could differ afterwards, so `silent` changes nothing.
    void execute(bool /*silent*/) override { (owner_->*executeAction)(); }

private:
    bool writeOnly_;
    Owner* owner_;
};

}  // namespace AnythingToNodeMapAdapter
