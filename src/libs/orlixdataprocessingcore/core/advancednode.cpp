#include "orlixdataprocessingcore/core/advancednode.h"

#include "orlixdataprocessingcore/core/nodebase_impl.h"

namespace Orlix::DataProcessing::Core {

AdvancedNode::AdvancedNode(const std::shared_ptr<IResourcePool>& pool) : NodeBase(pool) {}

AdvancedNode::~AdvancedNode() = default;

Utils::TypeInfo AdvancedNode::getTypeInfo(bool throwOnError) const {
    return Utils::TypeInfo::getTypeInfo<AdvancedNode>(throwOnError);
}

const void* AdvancedNode::getRawPointer() const {
    return this;
}

void* AdvancedNode::getRawPointer() {
    return this;
}

void AdvancedNode::createOutput(const gcstring& name, const gcstring& description,
                                const Utils::TypeInfo& type, bool optional,
                                std::uint64_t maxJobCount) {
    impl().outputs.add({name, description, type, optional, maxJobCount, {}});
    impl().outputsChanged.emit();
}

void AdvancedNode::setUpdateGroup(const gcstring& output, const gcstring& group) {
    impl().outputs.setUpdateGroup(output, group);
}

bool AdvancedNode::waitUntilSpaceAvailable() const {
    return impl().waitUntilSpaceAvailable();
}

void AdvancedNode::createJob(const std::shared_ptr<IGraphUpdate>& update, PinValues values,
                             const JobFunction& function) {
    impl().createJob(SourceJob{update, std::move(values), function});
}

std::shared_ptr<IUpdateFactory> AdvancedNode::getUpdateFactory() const {
    return impl().updateFactory();
}

void AdvancedNode::takeOnlyUpdatesOfTheRun() {
    impl().takeOnlyUpdatesOfTheRun();
}

}  // namespace Orlix::DataProcessing::Core
