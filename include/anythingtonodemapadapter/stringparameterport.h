// Text parameters: StringParameterPortRelay over a getter and setter of the node, and
// StringParameterPort, which holds the text itself, for what a node shows and a user only reads.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "anythingtonodemapadapter/parameterport.h"

namespace AnythingToNodeMapAdapter {

namespace Detail {

// Fills `buffer` with the text, cut to `length`, and zero bytes behind it.
inline void copyPadded(const gcstring& text, char* buffer, std::size_t length) {
    const std::size_t count = std::min(text.length(), length);
    std::memcpy(buffer, text.c_str(), count);
    std::memset(buffer + count, 0, length - count);
}

}  // namespace Detail

// The policy of a text that nothing but the observer follows.
struct NoAction {
    template <typename Text>
    void operator()(const Text& /*changed*/) const noexcept {}
};

template <typename Text, typename ChangeAction>
class StringParameterPort;

// Holds its own text. `ChangeAction` is called with each new text before the observer. The maximum
// length is the size of the register that shows the text; a longer text is kept whole here.
template <typename ChangeAction>
class ANYTHINGTONODEMAPADAPTER_API StringParameterPort<gcstring, ChangeAction>
    : public BasicDataParameterPort<IStringParameterPort> {
public:
    StringParameterPort(const gcstring& value, int maximumLength, const gcstring& name,
                        const gcstring& displayName, const gcstring& toolTip,
                        const gcstring& description, const gcstring& visibility, bool available,
                        bool writable, bool hasAvailabilityRegister, bool hasLockRegister)
        : BasicDataParameterPort({name, displayName, toolTip, description, visibility}),
          value_(value),
          maximumLength_(maximumLength) {
        setFlags(available, writable, hasAvailabilityRegister, hasLockRegister);
    }

    [[nodiscard]] std::uint64_t getSize() const override {
        return static_cast<std::uint64_t>(maximumLength_);
    }

    void readValue(char* buffer, std::size_t length) const override {
        Detail::copyPadded(value_, buffer, length);
    }

    void writeValue(const char* value, bool silent) override {
        if (value_ == value) {
            return;
        }
        value_ = value;
        ChangeAction()(value_);
        if (!silent) {
            notify();
        }
    }

private:
    gcstring value_;
    std::int64_t maximumLength_;
};

// Relays to `getter` and `setter` of `Owner`, which outlives the port.
template <typename Owner, gcstring (Owner::*getter)() const, void (Owner::*setter)(const gcstring&)>
class ANYTHINGTONODEMAPADAPTER_API StringParameterPortRelay
    : public BasicDataParameterPort<IStringParameterPort> {
public:
    StringParameterPortRelay(Owner& owner, const gcstring& name, const gcstring& displayName,
                             const gcstring& toolTip, const gcstring& description,
                             const gcstring& visibility, bool available, bool writable,
                             bool hasAvailabilityRegister, bool hasLockRegister,
                             std::int64_t maximumLength)
        : BasicDataParameterPort({name, displayName, toolTip, description, visibility}),
          maximumLength_(maximumLength),
          owner_(&owner) {
        setFlags(available, writable, hasAvailabilityRegister, hasLockRegister);
    }

    [[nodiscard]] std::uint64_t getSize() const override {
        return static_cast<std::uint64_t>(maximumLength_);
    }

    void readValue(char* buffer, std::size_t length) const override {
        Detail::copyPadded((owner_->*getter)(), buffer, length);
    }

    void writeValue(const char* value, bool silent) override {
        const bool changes = !silent && !((owner_->*getter)() == value);
        (owner_->*setter)(gcstring(value));
        if (changes) {
            notify();
        }
    }

private:
    std::int64_t maximumLength_;
    Owner* owner_;
};

}  // namespace AnythingToNodeMapAdapter
