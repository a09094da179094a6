#include "anythingtonodemapadapter/adapter.h"

#include <utility>

#include "anythingtonodemapadapter/adapter_impl.h"
#include "anythingtonodemapadapter/booleannodemapport.h"
#include "anythingtonodemapadapter/categorynodemapport.h"
#include "anythingtonodemapadapter/commandnodemapport.h"
#include "anythingtonodemapadapter/enumentrynodemapport.h"
#include "anythingtonodemapadapter/enumnodemapport.h"
#include "anythingtonodemapadapter/integernodemapport.h"
#include "anythingtonodemapadapter/stringnodemapport.h"
#include "gcbase/gcexception.h"

namespace AnythingToNodeMapAdapter {

CAnythingToNodeMapAdapterBase::CAnythingToNodeMapAdapterBase(
    CAnythingToNodeMapAdapterBaseImpl* impl)
    : impl_(impl) {}

CAnythingToNodeMapAdapterBase::~CAnythingToNodeMapAdapterBase() = default;

void CAnythingToNodeMapAdapterBase::generateDescription(gcstring& out, const gcstring& portName,
                                                        const gcstring& prefix) {
    impl_->generateDescription(out, portName, prefix, Detail::DescriptionPurpose::LookAt);
}

// The template of the public overloads: `NodeMapPort` is what wraps a port of that kind.
template <typename NodeMapPort, typename Interface>
void CAnythingToNodeMapAdapter::add(std::shared_ptr<Interface> port, int mergePriority) {
    if (!port) {
        return;
    }
    auto created = std::make_shared<NodeMapPort>(port, mergePriority);
    NodeMapPort* observer = created.get();
    const bool isReplacement = findNodeMapPort(port->getName()) != nodeMapPortsEnd();
    impl_->store(port->getName(), std::move(created));
    // If the same port was there before, its former wrapper has just cleared the observer.
    port->setObserver(observer);
    if (isReplacement) {
        impl_->observeEntriesOf(port->getName());
    }
}

CAnythingToNodeMapAdapter::CAnythingToNodeMapAdapter(const gcstring& deviceName)
    : CAnythingToNodeMapAdapter(new CAnythingToNodeMapAdapterImpl(deviceName)) {}

CAnythingToNodeMapAdapter::CAnythingToNodeMapAdapter(CAnythingToNodeMapAdapterImpl* impl)
    : CAnythingToNodeMapAdapterBase(impl), impl_(impl) {}

CAnythingToNodeMapAdapter::~CAnythingToNodeMapAdapter() {
    delete impl_;
}

void CAnythingToNodeMapAdapter::addParameter(std::shared_ptr<ICategoryParameterPort> port,
                                             int mergePriority) {
    add<Detail::CCategoryNodeMapPort>(std::move(port), mergePriority);
}

void CAnythingToNodeMapAdapter::addParameter(std::shared_ptr<IIntegerParameterPort> port,
                                             int mergePriority) {
    add<Detail::CIntegerNodeMapPort>(std::move(port), mergePriority);
}

void CAnythingToNodeMapAdapter::addParameter(std::shared_ptr<IBooleanParameterPort> port,
                                             int mergePriority) {
    add<Detail::CBooleanNodeMapPort>(std::move(port), mergePriority);
}

void CAnythingToNodeMapAdapter::addParameter(std::shared_ptr<IEnumParameterPort> port,
                                             int mergePriority) {
    add<Detail::CEnumNodeMapPort>(std::move(port), mergePriority);
}

void CAnythingToNodeMapAdapter::addParameter(std::shared_ptr<IStringParameterPort> port,
                                             int mergePriority) {
    add<Detail::CStringNodeMapPort>(std::move(port), mergePriority);
}

void CAnythingToNodeMapAdapter::addParameter(std::shared_ptr<ICommandParameterPort> port,
                                             int mergePriority) {
    add<Detail::CCommandNodeMapPort>(std::move(port), mergePriority);
}

void CAnythingToNodeMapAdapter::addEnumEntry(const gcstring& enumName,
                                             std::shared_ptr<IEnumEntryParameterPort> entry,
                                             int mergePriority) {
    const auto found = findNodeMapPort(enumName);
    if (!entry || found == nodeMapPortsEnd()) {
        return;
    }
    const auto enumeration = std::dynamic_pointer_cast<Detail::CEnumNodeMapPort>(found->second);
    if (!enumeration) {
        return;
    }
    auto created = std::make_shared<Detail::CEnumEntryNodeMapPort>(entry, enumName, mergePriority);
    // The enumeration writes the entry's element, the map of ports serves its register.
    enumeration->addEntry(created);
    impl_->store(created->getQualifiedName(""), created);
    entry->setObserver(created.get());
}

NodeMapPorts::iterator CAnythingToNodeMapAdapter::findNodeMapPort(const gcstring& name) {
    return impl_->ports.find(name);
}

NodeMapPorts::iterator CAnythingToNodeMapAdapter::nodeMapPortsEnd() {
    return impl_->ports.end();
}

void CAnythingToNodeMapAdapter::addDependency(const gcstring& parameter, const gcstring& kind,
                                              const gcstring& name) {
    const auto found = findNodeMapPort(parameter);
    if (found == nodeMapPortsEnd()) {
        const gcstring text =
            "There is no parameter \"" + parameter + "\" that \"" + name + "\" could belong to.";
        throw GenICam::InvalidArgumentException(text.c_str(), __FILE__, __LINE__);
    }
    found->second->addDependency(kind, name);
}

GenApi::CNodeMapRef CAnythingToNodeMapAdapter::createNodeMap(GenApi::CLock* lock,
                                                             const gcstring& portName,
                                                             const gcstring& prefix) {
    impl_->createNodeMap(lock, portName, prefix);
    // The live map is fetched with getNodeMap().
    return GenApi::CNodeMapRef(impl_->nodeMap._GetDeviceName());
}

GenApi::INodeMap* CAnythingToNodeMapAdapter::getNodeMap() {
    return impl_->nodeMap._IsValid() ? impl_->nodeMap._Ptr() : impl_->fallbackNodeMap._Ptr();
}

}  // namespace AnythingToNodeMapAdapter
