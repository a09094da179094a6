#include "anythingtonodemapadapter/realnodemapportmultiparameter.h"

#include "anythingtonodemapadapter/parameternodemapport.h"
#include "genapi/inodemap.h"

namespace AnythingToNodeMapAdapter::Detail {

CRealNodeMapPortMultiParameter::CRealNodeMapPortMultiParameter(GenApi::INodeMap* nodeMap,
                                                               const GenICam::gcstring& portName)
    : nodeMap_(nodeMap), portName_(portName) {
    nodeMap_->Connect(this, portName_);
}

void CRealNodeMapPortMultiParameter::Read(void* buffer, std::int64_t address, std::int64_t length) {
    const CParameterEntry* entry = demultiplexer_.find(address, length);
    if (entry != nullptr && entry->port != nullptr) {
        entry->port->Read(buffer, address - entry->start, length);
    } else {
        storeZeros(buffer, length);
    }
}

void CRealNodeMapPortMultiParameter::Write(const void* buffer, std::int64_t address,
                                           std::int64_t length) {
    const CParameterEntry* entry = demultiplexer_.find(address, length);
    if (entry != nullptr && entry->port != nullptr) {
        entry->port->Write(buffer, address - entry->start, length);
    }
}

void CRealNodeMapPortMultiParameter::invalidate(CBasicNodeMapPort& port) {
    // Invalidating the shared port node would invalidate every parameter.
    if (nodeMap_ == nullptr) {
        return;
    }
    if (GenApi::INode* node = nodeMap_->GetNode(port.getName())) {
        node->InvalidateNode();
    }
}

void CRealNodeMapPortMultiParameter::connect(CBasicNodeMapPort* port) {
    if (port != nullptr) {
        demultiplexer_.add(*port);
    }
}

void CRealNodeMapPortMultiParameter::disconnect(CBasicNodeMapPort* port) {
    if (port != nullptr) {
        demultiplexer_.remove(*port);
    }
}

void CRealNodeMapPortMultiParameter::open() {
    demultiplexer_.sort();
}

void CRealNodeMapPortMultiParameter::release() {
    if (nodeMap_ != nullptr) {
        nodeMap_->Connect(nullptr, portName_);
        nodeMap_ = nullptr;
    }
    demultiplexer_.clear();
}

}  // namespace AnythingToNodeMapAdapter::Detail
