// The inputs of one node: what they are called, what is connected, which keep their last value.
#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include "orlixdataprocessingcore/core/handle.h"
#include "orlixdataprocessingcore/core/inode.h"

namespace Orlix::DataProcessing::Core {

// Owned by the node; safe from any thread under a leaf lock of its own. Unknown names throw
// InvalidArgumentException.
class InputPins {
public:
    void add(const InputDescriptor& descriptor);
    void remove(const gcstring& name);
    [[nodiscard]] std::vector<InputDescriptor> descriptors() const;
    [[nodiscard]] std::uint64_t smallestJobCount() const;

    [[nodiscard]] std::shared_ptr<IHandle> configure(const gcstring& name,
                                                     const Utils::TypeInfo& type);
    // Gives the name of the pin that is free now.
    [[nodiscard]] gcstring unconfigure(const std::shared_ptr<IHandle>& handle);
    [[nodiscard]] bool isConfigured(const std::shared_ptr<IHandle>& handle) const;
    [[nodiscard]] bool canConfigure(const gcstring& name) const;

    // Whether something has changed.
    bool setAutoReset(const gcstring& name, bool enabled);
    [[nodiscard]] bool isAutoReset(const gcstring& name) const;

private:
    struct Pin {
        InputDescriptor descriptor;
        std::shared_ptr<IHandle> configuration;  // null while nothing is connected
        bool autoReset = true;
    };

    [[nodiscard]] std::vector<Pin>::const_iterator find(const gcstring& name) const;
    [[nodiscard]] std::vector<Pin>::iterator find(const gcstring& name);

    mutable std::mutex mutex_;
    std::vector<Pin> pins_;  // in the order of their declaration
};

}  // namespace Orlix::DataProcessing::Core
