#include "anythingtonodemapadapter/adapter_impl.h"

#include <utility>

#include "anythingtonodemapadapter/enumentrynodemapport.h"
#include "anythingtonodemapadapter/realnodemapportsingleparameter.h"
#include "genapi/inodemap.h"
#include "genapi/nodemapfactory.h"

namespace AnythingToNodeMapAdapter {

void CAnythingToNodeMapAdapterBase::CAnythingToNodeMapAdapterBaseImpl::generateDescription(
    gcstring& out, const gcstring& portName, const gcstring& prefix,
    Detail::DescriptionPurpose purpose) {
    out = Detail::writeDescription(ports, portName, prefix, purpose);
}

CAnythingToNodeMapAdapter::CAnythingToNodeMapAdapterImpl::CAnythingToNodeMapAdapterImpl(
    const gcstring& deviceName)
    : nodeMap(deviceName),
      fallbackNodeMap(GenApi::CNodeMapFactory::CreateEmptyNodeMap(deviceName)) {}

CAnythingToNodeMapAdapter::CAnythingToNodeMapAdapterImpl::~CAnythingToNodeMapAdapterImpl() {
    if (sharedPort) {
        sharedPort->release();
        sharedPort.reset();
    }
    fallbackNodeMap._Destroy();
    nodeMap._Destroy();
}

void CAnythingToNodeMapAdapter::CAnythingToNodeMapAdapterImpl::store(
    const gcstring& name, std::shared_ptr<Detail::CBasicNodeMapPort> port) {
    std::shared_ptr<Detail::CBasicNodeMapPort>& slot = ports[name];
    if (slot) {
        slot->detach();
    }
    slot = std::move(port);
}

void CAnythingToNodeMapAdapter::CAnythingToNodeMapAdapterImpl::observeEntriesOf(
    const gcstring& enumName) {
    for (const auto& [name, port] : ports) {
        auto* entry = dynamic_cast<Detail::CEnumEntryNodeMapPort*>(port.get());
        if (entry != nullptr && entry->getEnumName() == enumName) {
            entry->observe();
        }
    }
}

void CAnythingToNodeMapAdapter::CAnythingToNodeMapAdapterImpl::createNodeMap(
    GenApi::CLock* lock, const gcstring& portName, const gcstring& prefix) {
    // Disconnecting calls the old map, so that it must live until all is connected to the new one.
    const GenApi::CNodeMapRef oldNodeMap = nodeMap;
    gcstring description;
    generateDescription(description, portName, prefix, Detail::DescriptionPurpose::NodeMap);
    nodeMap._Attach(load(description, lock));
    disconnectAll();
    if (portName.empty()) {
        connectOwn();
    } else {
        connectShared(portName);
    }
}

GenApi::CNodeMapRef CAnythingToNodeMapAdapter::CAnythingToNodeMapAdapterImpl::load(
    const gcstring& description, GenApi::CLock* lock) const {
    GenApi::CNodeMapFactory factory(GenApi::ContentType_Xml, description.c_str(),
                                    description.length(), GenApi::CacheUsage_Ignore, false);
    const gcstring deviceName = nodeMap._GetDeviceName();
    return lock != nullptr ? factory.CreateNodeMap(*lock, deviceName, true)
                           : factory.CreateNodeMap(deviceName, true);
}

void CAnythingToNodeMapAdapter::CAnythingToNodeMapAdapterImpl::disconnectAll() {
    if (sharedPort) {
        sharedPort->release();
    }
    for (const auto& [name, port] : ports) {
        port->detach();
    }
    sharedPort.reset();
}

void CAnythingToNodeMapAdapter::CAnythingToNodeMapAdapterImpl::connectShared(
    const gcstring& portName) {
    sharedPort = std::make_shared<Detail::CRealNodeMapPortMultiParameter>(nodeMap._Ptr(), portName);
    for (const auto& [name, port] : ports) {
        if (port->registerLength() > 0) {
            sharedPort->connect(port.get());
            port->setConnector(sharedPort);
        }
    }
    sharedPort->open();
}

void CAnythingToNodeMapAdapter::CAnythingToNodeMapAdapterImpl::connectOwn() {
    for (const auto& [name, port] : ports) {
        if (port->registerLength() > 0) {
            auto realPort =
                std::make_shared<Detail::CRealNodeMapPortSingleParameter>(nodeMap._Ptr());
            realPort->connect(port.get());
            port->setConnector(std::move(realPort));
        }
    }
}

}  // namespace AnythingToNodeMapAdapter
