// A source node: it produces jobs by itself, on threads of its own.
//
// Each turn of a source: waitUntilSpaceAvailable(), then createUpdate() of the factory, then
// createJob() with the values of that pass.
#pragma once

#include <memory>

#include "orlixdataprocessingcore/api.h"
#include "orlixdataprocessingcore/core/nodebase.h"

namespace Orlix::DataProcessing::Core {

class IUpdateFactory;

class ORLIXDATAPROCESSINGCORE_API AdvancedNode : public NodeBase {
public:
    ~AdvancedNode() override;

    Utils::TypeInfo getTypeInfo(bool throwOnError) const override;
    const void* getRawPointer() const override;
    void* getRawPointer() override;

protected:
    explicit AdvancedNode(const std::shared_ptr<IResourcePool>& pool);

    // Declares a pin; throws InvalidArgumentException for a name that exists.
    void createOutput(const gcstring& name, const gcstring& description,
                      const Utils::TypeInfo& type, bool optional, std::uint64_t maxJobCount);
    // Says that the pin never has a value in an update in which a pin of another group has one, so
    // that a graph refuses to join them. At first all pins are of the group "". Throws
    // InvalidArgumentException for an unknown name.
    void setUpdateGroup(const gcstring& output, const gcstring& group);

    // Blocks until the graph can take another job. False when no job can be offered: the node is
    // not started or is being stopped. Needs no lock of the node, and may be called with it held.
    [[nodiscard]] bool waitUntilSpaceAvailable() const;
    // Hands one set of values, keyed by pin, to the graph. Pins that are left out are told
    // downstream; values for pins that are not there are ignored. A function that is not empty is
    // run on a worker thread and makes the values from those given. Never blocks. Jobs offered to a
    // stopped node are dropped.
    void createJob(const std::shared_ptr<IGraphUpdate>& update, PinValues values,
                   const JobFunction& function);
    [[nodiscard]] std::shared_ptr<IUpdateFactory> getUpdateFactory() const;
    // From now on a run takes no job of an update that was made before it began. For a source whose
    // threads may come late with the values of an earlier run; to be called by the constructor.
    void takeOnlyUpdatesOfTheRun();
};

}  // namespace Orlix::DataProcessing::Core
