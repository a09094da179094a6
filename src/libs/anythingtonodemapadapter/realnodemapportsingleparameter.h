// The port object behind the port node of one parameter: hands the node map's byte accesses to the
// parameter's node-map port. Every call comes under the node's lock.
#pragma once

#include "anythingtonodemapadapter/nodemapportconnector.h"
#include "gcbase/gcstring.h"
#include "genapi/portimpl.h"

namespace GenApi {
class INodeMap;
}

namespace AnythingToNodeMapAdapter::Detail {

// The node map outlives every connection made here. A null node map or port makes connecting and
// disconnecting do nothing.
class ANYTHINGTONODEMAPADAPTER_API CRealNodeMapPortSingleParameter : public CNodeMapPortConnector,
                                                                     public GenApi::CPortImpl {
public:
    explicit CRealNodeMapPortSingleParameter(GenApi::INodeMap* nodeMap) : nodeMap_(nodeMap) {}

    // Only a connected object is called by the node map.
    void Read(void* buffer, std::int64_t address, std::int64_t length) override;
    void Write(const void* buffer, std::int64_t address, std::int64_t length) override;
    [[nodiscard]] GenApi::EAccessMode GetAccessMode() const override { return GenApi::RW; }

    void invalidate(CBasicNodeMapPort& port) override;
    void connect(CBasicNodeMapPort* port) override;
    void disconnect(CBasicNodeMapPort* port) override;

private:
    CBasicNodeMapPort* port_ = nullptr;
    GenApi::INodeMap* nodeMap_;
    // The port itself may bear another name by now, if a new description has been made.
    GenICam::gcstring connectedName_;
};

}  // namespace AnythingToNodeMapAdapter::Detail
