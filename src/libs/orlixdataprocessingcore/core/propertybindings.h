// Ties the pins of a node that runs once per job to its properties.
#pragma once

#include <vector>

#include "orlixdataprocessingcore/core/inode.h"

namespace Orlix::DataProcessing::Utils {
class IProperty;
class IResettableProperty;
}  // namespace Orlix::DataProcessing::Utils

namespace Orlix::DataProcessing::Core {

// Owned by the node. The tables change only while no job runs; the properties belong to the node
// class and must outlive their bindings.
class PropertyBindings {
public:
    void bindInput(const gcstring& pin, Utils::IProperty& property,
                   const Utils::Variant& defaultValue);
    void bindOutput(const gcstring& pin, Utils::IResettableProperty& property);
    void unbindInput(const gcstring& pin);
    void unbindOutput(const gcstring& pin);
    void clear();

    // Every input property gets its value, which leaves `values`, or its default;
    // every output property is reset.
    void prepare(PinValues& values) const;
    // Moves the outputs into `values`; one that was not set gives an invalid value.
    void collect(PinValues& values) const;
    // Let go of what the properties hold, so that no buffer waits in a node for the next job. After
    // collect() the outputs are empty already.
    void releaseInputs() const noexcept;
    void release() const noexcept;

private:
    struct Input {
        gcstring pin;
        Utils::IProperty* property;
        Utils::IResettableProperty* resettable;  // the same one, if it can be reset
        Utils::Variant defaultValue;
    };
    struct Output {
        gcstring pin;
        Utils::IResettableProperty* property;
    };

    // Both by ascending name, as the values of a job are.
    std::vector<Input> inputs_;
    std::vector<Output> outputs_;
};

}  // namespace Orlix::DataProcessing::Core
