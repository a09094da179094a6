#include "orlixdataprocessingcore/core/simplenode.h"

#include "orlixdataprocessingcore/core/nodebase_impl.h"
#include "orlixdataprocessingcore/utils/property.h"

namespace Orlix::DataProcessing::Core {

SimpleNode::SimpleNode(const std::shared_ptr<IResourcePool>& pool) : NodeBase(pool) {
    impl().setSimple(*this);
}

SimpleNode::~SimpleNode() = default;

Utils::TypeInfo SimpleNode::getTypeInfo(bool throwOnError) const {
    return Utils::TypeInfo::getTypeInfo<SimpleNode>(throwOnError);
}

const void* SimpleNode::getRawPointer() const {
    return this;
}

void* SimpleNode::getRawPointer() {
    return this;
}

bool SimpleNode::isForwardingUpdates() const {
    return true;
}

// The properties belong to the derived class and end with it, so no job may begin after this.
void SimpleNode::cleanup() {
    NodeBase::cleanup();
    impl().bindings.clear();
}

JobResults SimpleNode::run(const std::shared_ptr<IGraphUpdate>& update, PinValues inputs) {
    JobResults results;
    impl().runSimple(inputs, results[update]);
    return results;
}

void SimpleNode::createInput(const gcstring& name, const gcstring& description,
                             Utils::IProperty& property, const Utils::Variant& defaultValue,
                             bool optional, std::uint64_t maxJobCount) {
    impl().inputs.add({name, description, defaultValue.getValueType(), optional, maxJobCount});
    impl().bindings.bindInput(name, property, defaultValue);
    impl().inputsChanged.emit();
}

void SimpleNode::createOutput(const gcstring& name, const gcstring& description,
                              Utils::IResettableProperty& property, bool optional,
                              std::uint64_t maxJobCount) {
    impl().outputs.add({name, description, property.getValueType(), optional, maxJobCount, {}});
    impl().bindings.bindOutput(name, property);
    impl().outputsChanged.emit();
}

}  // namespace Orlix::DataProcessing::Core
