#include "orlixdataprocessingcore/core/inputpins.h"

#include <algorithm>
#include <string>

#include "gcbase/gcexception.h"

namespace Orlix::DataProcessing::Core {

namespace {

class InputHandle final : public IHandle {};

std::string inQuotes(const gcstring& name) {
    return "\"" + name.str() + "\"";
}

}  // namespace

void InputPins::add(const InputDescriptor& descriptor) {
    std::lock_guard guard(mutex_);
    const auto same = [&](const Pin& pin) { return pin.descriptor.name == descriptor.name; };
    if (descriptor.name.empty() || std::any_of(pins_.begin(), pins_.end(), same)) {
        throw GenICam::InvalidArgumentException(
            ("Input " + inQuotes(descriptor.name) + " can't be made: the name is taken or empty.")
                .c_str(),
            __FILE__, __LINE__);
    }
    pins_.push_back(Pin{descriptor, nullptr, true});
}

void InputPins::remove(const gcstring& name) {
    std::lock_guard guard(mutex_);
    pins_.erase(find(name));
}

std::vector<InputDescriptor> InputPins::descriptors() const {
    std::lock_guard guard(mutex_);
    std::vector<InputDescriptor> result;
    result.reserve(pins_.size());
    for (const Pin& pin : pins_) {
        result.push_back(pin.descriptor);
    }
    return result;
}

std::uint64_t InputPins::smallestJobCount() const {
    std::lock_guard guard(mutex_);
    std::uint64_t smallest = unlimitedJobs;
    for (const Pin& pin : pins_) {
        smallest = std::min(smallest, pin.descriptor.maxJobCount);
    }
    return smallest;
}

std::shared_ptr<IHandle> InputPins::configure(const gcstring& name, const Utils::TypeInfo& type) {
    std::lock_guard guard(mutex_);
    Pin& pin = *find(name);
    if (pin.configuration) {
        throw GenICam::RuntimeException(
            ("Input " + inQuotes(name) + " is connected already.").c_str(), __FILE__, __LINE__);
    }
    if (!type.isValid() || !type.canConvert(pin.descriptor.type)) {
        throw GenICam::InvalidArgumentException(
            ("Input " + inQuotes(name) + " doesn't take values of this type.").c_str(), __FILE__,
            __LINE__);
    }
    pin.configuration = std::make_shared<InputHandle>();
    return pin.configuration;
}

gcstring InputPins::unconfigure(const std::shared_ptr<IHandle>& handle) {
    std::lock_guard guard(mutex_);
    const auto pin = std::find_if(pins_.begin(), pins_.end(), [&](const Pin& candidate) {
        return handle && candidate.configuration == handle;
    });
    if (pin == pins_.end()) {
        throw GenICam::InvalidArgumentException("The handle is of no connected input of this node.",
                                                __FILE__, __LINE__);
    }
    pin->configuration.reset();
    return pin->descriptor.name;
}

bool InputPins::isConfigured(const std::shared_ptr<IHandle>& handle) const {
    std::lock_guard guard(mutex_);
    return handle && std::any_of(pins_.begin(), pins_.end(),
                                 [&](const Pin& pin) { return pin.configuration == handle; });
}

bool InputPins::canConfigure(const gcstring& name) const {
    std::lock_guard guard(mutex_);
    return !find(name)->configuration;
}

bool InputPins::setAutoReset(const gcstring& name, bool enabled) {
    std::lock_guard guard(mutex_);
    Pin& pin = *find(name);
    const bool changed = pin.autoReset != enabled;
    pin.autoReset = enabled;
    return changed;
}

bool InputPins::isAutoReset(const gcstring& name) const {
    std::lock_guard guard(mutex_);
    return find(name)->autoReset;
}

std::vector<InputPins::Pin>::const_iterator InputPins::find(const gcstring& name) const {
    const auto pin = std::find_if(pins_.begin(), pins_.end(), [&](const Pin& candidate) {
        return candidate.descriptor.name == name;
    });
    if (pin == pins_.end()) {
        throw GenICam::InvalidArgumentException(
            ("There is no input " + inQuotes(name) + ".").c_str(), __FILE__, __LINE__);
    }
    return pin;
}

std::vector<InputPins::Pin>::iterator InputPins::find(const gcstring& name) {
    const auto& self = *this;
    return pins_.begin() + (self.find(name) - pins_.cbegin());
}

}  // namespace Orlix::DataProcessing::Core
