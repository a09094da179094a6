#include "genapi/portimpl.h"

#include <algorithm>

#include "genapi/inodemap.h"

namespace GenApi {

CPortImpl::CPortImpl() = default;

CPortImpl::~CPortImpl() {
    while (!portNodes_.empty()) {
        INode* node = portNodes_.back();
        node->GetNodeMap()->Connect(nullptr, node->GetName());
        // A map that did not know the connection any more must not keep this loop.
        detach(node);
    }
}

void CPortImpl::InvalidateNode() {
    // By index: a callback may connect or disconnect this port.
    for (std::size_t i = 0; i < portNodes_.size(); ++i) {
        portNodes_[i]->InvalidateNode();
    }
}

INode* CPortImpl::GetPortNode() const {
    return portNodes_.empty() ? nullptr : portNodes_.back();
}

void CPortImpl::attach(INode* portNode) {
    detach(portNode);
    portNodes_.push_back(portNode);
}

void CPortImpl::detach(INode* portNode) {
    portNodes_.erase(std::remove(portNodes_.begin(), portNodes_.end(), portNode), portNodes_.end());
}

}  // namespace GenApi
