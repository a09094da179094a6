#include "anythingtonodemapadapter/realnodemapportsingleparameter.h"

#include "anythingtonodemapadapter/basicnodemapport.h"
#include "genapi/inodemap.h"

namespace AnythingToNodeMapAdapter::Detail {

void CRealNodeMapPortSingleParameter::Read(void* buffer, std::int64_t address,
                                           std::int64_t length) {
    port_->Read(buffer, address, length);
}

void CRealNodeMapPortSingleParameter::Write(const void* buffer, std::int64_t address,
                                            std::int64_t length) {
    port_->Write(buffer, address, length);
}

void CRealNodeMapPortSingleParameter::invalidate(CBasicNodeMapPort& /*port*/) {
    // The port node serves this parameter alone, and every register on it depends on it.
    if (GetPortNode() != nullptr) {
        InvalidateNode();
    }
}

void CRealNodeMapPortSingleParameter::connect(CBasicNodeMapPort* port) {
    if (port == nullptr || nodeMap_ == nullptr) {
        return;
    }
    // Remembered first: the node map may read while it connects.
    port_ = port;
    connectedName_ = port->portName();
    nodeMap_->Connect(this, connectedName_);
}

void CRealNodeMapPortSingleParameter::disconnect(CBasicNodeMapPort* port) {
    if (port == nullptr || nodeMap_ == nullptr) {
        return;
    }
    nodeMap_->Connect(nullptr, connectedName_);
    port_ = nullptr;
}

}  // namespace AnythingToNodeMapAdapter::Detail
