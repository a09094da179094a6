#include "orlixdataprocessingcore/core/propertybindings.h"

#include <algorithm>

#include "orlixdataprocessingcore/core/nodelog.h"
#include "orlixdataprocessingcore/core/pinwalk.h"
#include "orlixdataprocessingcore/utils/property.h"

namespace Orlix::DataProcessing::Core {

namespace {

const gcstring wholeValue;
constexpr const char* resettingProperties = "resetting the properties of a job";

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

void PropertyBindings::prepare(PinValues& values) const {
    for (const Output& output : outputs_) {
        output.property->reset();
    }
    ValueWalk walk(values.begin(), values.end());
    for (const Input& input : inputs_) {
        const bool given = walk.goTo(input.pin) && walk.value().isValid();
        if (!given) {
            input.property->setVariant(wholeValue, input.defaultValue);
        } else if (input.resettable != nullptr) {
            input.resettable->takeOver(std::move(walk.value()));
        } else {
            input.property->setVariant(wholeValue, walk.value());
            walk.value().reset();
        }
    }
}

void PropertyBindings::collect(PinValues& values) const {
    WritingWalk walk(values);
    for (const Output& output : outputs_) {
        walk.at(output.pin) = output.property->moveVariant();
    }
}

void PropertyBindings::releaseInputs() const noexcept {
    guarded(this, resettingProperties, [&] {
        for (const Input& input : inputs_) {
            if (input.resettable != nullptr) {
                input.resettable->reset();
            }
        }
    });
}

void PropertyBindings::release() const noexcept {
    releaseInputs();
    guarded(this, resettingProperties, [&] {
        for (const Output& output : outputs_) {
            output.property->reset();
        }
    });
}

}  // namespace Orlix::DataProcessing::Core
