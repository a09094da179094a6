// CPortImpl, the base of ports that tell their map about changes of the device. It belongs to the
// user, not to the map.
#pragma once

#include <vector>

#include "genapi/iport.h"

namespace GenApi {

namespace Detail {
class NodeMap;
}

// Connecting it to a map makes the port node known here; disconnecting it, and the end of the map,
// make it forgotten. Its destructor takes it off the maps that still have it, so the only duty of
// the user is not to destroy port and map at the same time on two threads.
class GENAPI_API CPortImpl : public IPort {
public:
    CPortImpl();
    ~CPortImpl() override;
    // A connection belongs to one object.
    CPortImpl(const CPortImpl&) = delete;
    CPortImpl& operator=(const CPortImpl&) = delete;

    [[nodiscard]] EAccessMode GetAccessMode() const override { return RW; }

    // Invalidates the port node, and by it every register on it, in each map connected. Nothing
    // happens without one. Any thread may call while none connects or disconnects the port.
    void InvalidateNode();
    // The port node connected last; null without one.
    [[nodiscard]] INode* GetPortNode() const;

private:
    friend class Detail::NodeMap;
    void attach(INode* portNode);
    void detach(INode* portNode);

    std::vector<INode*> portNodes_;
};

}  // namespace GenApi
