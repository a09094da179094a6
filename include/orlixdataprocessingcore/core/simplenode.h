// A node that runs once for each job, with its pins bound to properties: the framework writes the
// input properties, calls execute() and reads the output properties.
//
//     class Invert : public SimpleNode {
//     public:
//         explicit Invert(const std::shared_ptr<IResourcePool>& pool) : SimpleNode(pool) {
//             setLock(std::make_shared<Threading::RecursiveCLock>());
//             createInput("Image", "Picture to invert", input_, Variant(Image()), false,
//             unlimitedJobs); createOutput("Image", "Inverted picture", output_, true,
//             unlimitedJobs);
//         }
//         ~Invert() override { cleanup(); }
//         void execute() override { ... }
#pragma once

#include <memory>

#include "orlixdataprocessingcore/api.h"
#include "orlixdataprocessingcore/core/nodebase.h"

namespace Orlix::DataProcessing::Utils {
class IProperty;
class IResettableProperty;
}  // namespace Orlix::DataProcessing::Utils

namespace Orlix::DataProcessing::Core {

class ORLIXDATAPROCESSINGCORE_API SimpleNode : public NodeBase {
public:
    ~SimpleNode() override;

    Utils::TypeInfo getTypeInfo(bool throwOnError) const override;
    const void* getRawPointer() const override;
    void* getRawPointer() override;

    bool isForwardingUpdates() const override;
    void cleanup() override;

protected:
    // One call of execute() between the bound properties. Final, since the framework runs the jobs
    // of a simple node without the map that this returns.
    JobResults run(const std::shared_ptr<IGraphUpdate>& update, PinValues inputs) final;

    explicit SimpleNode(const std::shared_ptr<IResourcePool>& pool);

    // The property lives as long as the node. A job without a value for an optional pin gets the
    // default. The type of the pin is that of the default value.
    void createInput(const gcstring& name, const gcstring& description, Utils::IProperty& property,
                     const Utils::Variant& defaultValue, bool optional, std::uint64_t maxJobCount);
    // The property is reset before each job; left unset, the job has no value for the pin.
    void createOutput(const gcstring& name, const gcstring& description,
                      Utils::IResettableProperty& property, bool optional,
                      std::uint64_t maxJobCount);

public:
    // One job. Called with the node's lock free; an exception fails this job only: its outputs
    // carry an error value, and the node's error set tells of it until a job succeeds.
    virtual void execute() = 0;
};

}  // namespace Orlix::DataProcessing::Core
