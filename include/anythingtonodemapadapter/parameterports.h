// Interfaces of parameter ports: one configurable value of a node, as the adapter sees it. A node
// owns its ports by std::shared_ptr and shares them with its adapter. Ports have no lock: the
// owner's getters and setters take the node's lock, and the node map takes the very same one.
#pragma once

#include <cstddef>
#include <cstdint>

#include "anythingtonodemapadapter/api.h"

namespace AnythingToNodeMapAdapter {

class IBasicParameterPort;

// Told of changes that did not come through the node map. Runs on the thread that made the change,
// under whatever lock that thread holds. Never owned by the port.
class ANYTHINGTONODEMAPADAPTER_API IParameterPortObserver {
public:
    virtual void onParameterChanged(IBasicParameterPort& port) = 0;

protected:
    ~IParameterPortObserver() = default;
};

// What every parameter has. The texts live as long as the port.
class ANYTHINGTONODEMAPADAPTER_API IBasicParameterPort {
public:
    virtual ~IBasicParameterPort() = default;

    [[nodiscard]] virtual const char* getName() const = 0;
    [[nodiscard]] virtual const char* getDisplayName() const = 0;
    [[nodiscard]] virtual const char* getDescription() const = 0;
    [[nodiscard]] virtual const char* getToolTip() const = 0;
    [[nodiscard]] virtual const char* getVisibility() const = 0;
    // Bytes of the value; for a text its maximum length, 0 where there is no value.
    [[nodiscard]] virtual std::uint64_t getSize() const = 0;
    // One observer at a time: a new one replaces the former, null clears it.
    virtual void setObserver(IParameterPortObserver* observer) = 0;
};

// A branch of the parameter tree.
class ANYTHINGTONODEMAPADAPTER_API ICategoryParameterPort : public IBasicParameterPort {};

// What every parameter with a value or an action has.
class ANYTHINGTONODEMAPADAPTER_API IBasicDataParameterPort : public IBasicParameterPort {
public:
    [[nodiscard]] virtual bool isAvailable() const = 0;
    [[nodiscard]] virtual bool isWritable() const = 0;
    // Whether availability can change at run time and has a register of its own.
    [[nodiscard]] virtual bool hasAvailabilityRegister() const = 0;
    // The same for writability, whose inverse is the lock.
    [[nodiscard]] virtual bool hasLockRegister() const = 0;
};

// In all operations below, `silent` true means that the caller tells the node map itself. What an
// owner's setter throws passes through unchanged.

class ANYTHINGTONODEMAPADAPTER_API IIntegerParameterPort : public IBasicDataParameterPort {
public:
    [[nodiscard]] virtual const char* getRepresentation() const = 0;
    [[nodiscard]] virtual const char* getUnit() const = 0;
    [[nodiscard]] virtual bool isSigned() const = 0;
    [[nodiscard]] virtual std::int64_t getValue() const = 0;
    [[nodiscard]] virtual std::int64_t getMax() const = 0;
    [[nodiscard]] virtual std::int64_t getMin() const = 0;
    [[nodiscard]] virtual std::int64_t getInc() const = 0;
    virtual void setValue(std::int64_t value, bool silent) = 0;
};

class ANYTHINGTONODEMAPADAPTER_API IBooleanParameterPort : public IBasicDataParameterPort {
public:
    [[nodiscard]] virtual bool getValue() const = 0;
    virtual void setValue(bool value, bool silent) = 0;
};

class ANYTHINGTONODEMAPADAPTER_API IEnumParameterPort : public IBasicDataParameterPort {
public:
    [[nodiscard]] virtual std::int64_t getValue() const = 0;
    virtual void setValue(std::int64_t value, bool silent) = 0;
};

class ANYTHINGTONODEMAPADAPTER_API IEnumEntryParameterPort : public IBasicDataParameterPort {
public:
    // The entry's constant.
    [[nodiscard]] virtual std::int64_t getValue() const = 0;
};

class ANYTHINGTONODEMAPADAPTER_API IStringParameterPort : public IBasicDataParameterPort {
public:
    // Fills all of `buffer`: the text, cut to `length`, then zero bytes. A text that fills the
    // buffer has no terminator.
    virtual void readValue(char* buffer, std::size_t length) const = 0;
    // `value` ends in a zero byte.
    virtual void writeValue(const char* value, bool silent) = 0;
};

class ANYTHINGTONODEMAPADAPTER_API ICommandParameterPort : public IBasicDataParameterPort {
public:
    [[nodiscard]] virtual bool isWriteOnly() const = 0;
    [[nodiscard]] virtual bool isExecuting() const = 0;
    virtual void execute(bool silent) = 0;
};

}  // namespace AnythingToNodeMapAdapter
