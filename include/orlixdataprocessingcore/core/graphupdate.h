// One pass of data through the graph, and the factory that makes them. An update is immutable and
// shared by every value of its pass; nodes treat it as opaque.
#pragma once

#include <cstdint>
#include <memory>

#include "orlixdataprocessingcore/api.h"

namespace Orlix::DataProcessing::Core {

class INode;

class ORLIXDATAPROCESSINGCORE_API IGraphUpdate {
public:
    virtual ~IGraphUpdate();

    // Position in the process-wide order of creation, from 1. Joins and outputs keep the order in
    // which a source hands its updates over, which is this one unless several threads do so.
    [[nodiscard]] virtual std::uint64_t getSequenceNumber() const noexcept = 0;
    // The update that this one was derived from, or null.
    [[nodiscard]] virtual std::shared_ptr<IGraphUpdate> getParent() const = 0;
};

class ORLIXDATAPROCESSINGCORE_API IUpdateFactory {
public:
    virtual ~IUpdateFactory();

    // Safe from any thread. node is the source of the pass and is not kept alive; parent may be
    // null.
    [[nodiscard]] virtual std::shared_ptr<IGraphUpdate> createUpdate(
        const INode* node, const std::shared_ptr<IGraphUpdate>& parent) = 0;
};

}  // namespace Orlix::DataProcessing::Core
