#include "anythingtonodemapadapter/basicnodemapport.h"

#include <utility>

#include "anythingtonodemapadapter/nodemapportconnector.h"

namespace AnythingToNodeMapAdapter::Detail {

CBasicNodeMapPort::CBasicNodeMapPort(std::int32_t mergePriority) : mergePriority_(mergePriority) {}

CBasicNodeMapPort::~CBasicNodeMapPort() = default;

void CBasicNodeMapPort::generateAndRecord(std::ostream& out, bool ownPort, const gcstring& portName,
                                          const gcstring& prefix, std::int64_t& address) {
    const std::int64_t start = address;
    portName_ = ownPort ? getPortName(prefix) : gcstring();
    generateNode(out, ownPort, ownPort ? portName_ : portName, prefix, address);
    registerStart_ = start;
    registerLength_ = address - start;
    if (ownPort) {
        address = 0;
    }
}

gcstring CBasicNodeMapPort::getPortName(const gcstring& prefix) const {
    return prefix + getName() + "Port";
}

void CBasicNodeMapPort::addDependency(const gcstring& kind, const gcstring& name) {
    dependencies_[kind].push_back(name);
}

void CBasicNodeMapPort::detach() {
    // Taken out first: whatever disconnecting sets off finds the port unconnected.
    const std::shared_ptr<CNodeMapPortConnector> connector = std::move(connector_);
    connector_.reset();
    if (connector) {
        connector->disconnect(this);
    }
}

void CBasicNodeMapPort::setConnector(std::shared_ptr<CNodeMapPortConnector> connector) {
    connector_ = std::move(connector);
}

const std::vector<gcstring>& CBasicNodeMapPort::dependencies(const gcstring& kind) const {
    static const std::vector<gcstring> none;
    const auto found = dependencies_.find(kind);
    return found == dependencies_.end() ? none : found->second;
}

void CBasicNodeMapPort::invalidate() {
    if (connector_) {
        connector_->invalidate(*this);
    }
}

}  // namespace AnythingToNodeMapAdapter::Detail
