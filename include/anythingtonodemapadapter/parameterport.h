// The common part of every parameter port: texts, observer, availability and writability. Derive
// from it for a port of a new kind; the headers beside it have the ready ones.
#pragma once

#include <utility>

#include "anythingtonodemapadapter/api.h"
#include "anythingtonodemapadapter/parameterports.h"
#include "gcbase/gcstring.h"

namespace AnythingToNodeMapAdapter {

using GenICam::gcstring;

// The describing texts of a parameter, in the order in which ports take them.
struct ParameterTexts {
    gcstring name;
    gcstring displayName;
    gcstring toolTip;
    gcstring description;
    gcstring visibility = "Expert";
};

// Implements the common part once for every interface `Interface`, which is a virtual base. Created
// by the node, never copied. The name is the node's name in the node map and the adapter's key.
template <typename Interface>
class ANYTHINGTONODEMAPADAPTER_API BasicParameterPort : public virtual Interface {
public:
    BasicParameterPort(const BasicParameterPort&) = delete;
    BasicParameterPort& operator=(const BasicParameterPort&) = delete;

    // Takes effect with the next description.
    virtual void setVisibility(const char* visibility) { visibility_ = visibility; }

    [[nodiscard]] const char* getName() const override { return name_.c_str(); }
    [[nodiscard]] const char* getDisplayName() const override { return displayName_.c_str(); }
    [[nodiscard]] const char* getDescription() const override { return description_.c_str(); }
    [[nodiscard]] const char* getToolTip() const override { return toolTip_.c_str(); }
    [[nodiscard]] const char* getVisibility() const override { return visibility_.c_str(); }
    void setObserver(IParameterPortObserver* observer) override { observer_ = observer; }

    // Tells the node map to read the parameter anew. For the owner, under the node's lock.
    void notify() {
        if (observer_ != nullptr) {
            observer_->onParameterChanged(*this);
        }
    }

protected:
    explicit BasicParameterPort(ParameterTexts texts)
        : name_(std::move(texts.name)),
          displayName_(std::move(texts.displayName)),
          description_(std::move(texts.description)),
          toolTip_(std::move(texts.toolTip)),
          visibility_(std::move(texts.visibility)) {}

private:
    gcstring name_;
    gcstring displayName_;
    gcstring description_;
    gcstring toolTip_;
    gcstring visibility_;
    IParameterPortObserver* observer_ = nullptr;
};

// Adds the two run-time states, and whether each is served by a register. All four flags are false
// until the constructor of the concrete port sets them.
template <typename Interface>
class ANYTHINGTONODEMAPADAPTER_API BasicDataParameterPort : public BasicParameterPort<Interface> {
public:
    [[nodiscard]] bool isAvailable() const override { return available_; }
    [[nodiscard]] bool isWritable() const override { return writable_; }
    [[nodiscard]] bool hasAvailabilityRegister() const override { return hasAvailabilityRegister_; }
    [[nodiscard]] bool hasLockRegister() const override { return hasLockRegister_; }

    // For the owner, under the node's lock. The node map learns of a change only where a register
    // can show it.
    void setAvailable(bool value) { change(available_, value, hasAvailabilityRegister_); }
    void setWritable(bool value) { change(writable_, value, hasLockRegister_); }

protected:
    using BasicParameterPort<Interface>::BasicParameterPort;

    void setFlags(bool available, bool writable, bool hasAvailabilityRegister,
                  bool hasLockRegister) {
        available_ = available;
        writable_ = writable;
        hasAvailabilityRegister_ = hasAvailabilityRegister;
        hasLockRegister_ = hasLockRegister;
    }

private:
    void change(bool& flag, bool value, bool hasRegister) {
        const bool visible = flag != value && hasRegister;
        flag = value;
        if (visible) {
            this->notify();
        }
    }

    bool available_ = false;
    bool writable_ = false;
    bool hasAvailabilityRegister_ = false;
    bool hasLockRegister_ = false;
};

}  // namespace AnythingToNodeMapAdapter
