#include "orlixdataprocessingcore/core/propertybindings.h"

#include <algorithm>

#include "orlixdataprocessingcore/core/nodelog.h"
#include "orlixdataprocessingcore/utils/property.h"

namespace Orlix::DataProcessing::Core {

namespace {

const gcstring wholeValue;

template <typename Binding>
void insertSorted(std::vector<Binding>& bindings, Binding binding) {
    const auto position =
        std::lower_bound(bindings.begin(), bindings.end(), binding,
                         [](const Binding& a, const Binding& b) { return a.pin < b.pin; });
    bindings.insert(position, std::move(binding));
}

template <typename Binding>
void eraseNamed(std::vector<Binding>& bindings, const gcstring& pin) {
    std::erase_if(bindings, [&](const Binding& binding) { return binding.pin == pin; });
}

}  // namespace

void PropertyBindings::bindInput(const gcstring& pin, Utils::IProperty& property,
                                 const Utils::Variant& defaultValue) {
    insertSorted(
        inputs_,
        Input{pin, &property, dynamic_cast<Utils::IResettableProperty*>(&property), defaultValue});
}

void PropertyBindings::bindOutput(const gcstring& pin, Utils::IResettableProperty& property) {
    insertSorted(outputs_, Output{pin, &property});
}

void PropertyBindings::unbindInput(const gcstring& pin) {
    eraseNamed(inputs_, pin);
}

void PropertyBindings::unbindOutput(const gcstring& pin) {
    eraseNamed(outputs_, pin);
}

void PropertyBindings::clear() {
    inputs_.clear();
    outputs_.clear();
}

void PropertyBindings::prepare(const PinValues& values) const {
    for (const Output& output : outputs_) {
        output.property->reset();
    }
    auto value = values.begin();
    for (const Input& input : inputs_) {
        // Both sides ascend by name, so one walk finds every pin.
        while (value != values.end() && value->first < input.pin) {
            ++value;
        }
        const bool given =
            value != values.end() && value->first == input.pin && value->second.isValid();
        input.property->setVariant(wholeValue, given ? value->second : input.defaultValue);
    }
}

void PropertyBindings::collect(PinValues& values) const {
    for (auto& entry : values) {
        entry.second.reset();
    }
    auto hint = values.begin();
    for (const Output& output : outputs_) {
        while (hint != values.end() && hint->first < output.pin) {
            ++hint;
        }
        if (hint == values.end() || hint->first != output.pin) {
            hint = values.emplace_hint(hint, output.pin, Utils::Variant());
        }
        if (output.property->isSet()) {
            hint->second = output.property->getVariant(wholeValue);
        }
    }
}

void PropertyBindings::release() const noexcept {
    guarded(this, "resetting the properties of a job", [&] {
        for (const Input& input : inputs_) {
            if (input.resettable != nullptr) {
                input.resettable->reset();
            }
        }
        for (const Output& output : outputs_) {
            output.property->reset();
        }
    });
}

}  // namespace Orlix::DataProcessing::Core
