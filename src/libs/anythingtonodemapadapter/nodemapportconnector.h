// The real port that serves a node-map port, as the node-map port knows it. Shared by the node-map
// ports that it serves; called under the node's lock.
#pragma once

#include "anythingtonodemapadapter/api.h"

namespace AnythingToNodeMapAdapter::Detail {

class CBasicNodeMapPort;

class ANYTHINGTONODEMAPADAPTER_API CNodeMapPortConnector {
public:
    virtual ~CNodeMapPortConnector() = default;

    // Makes the node map forget what it knows of the port's parameter.
    virtual void invalidate(CBasicNodeMapPort& port) = 0;
    // From now on `port` answers; it outlives the connection.
    virtual void connect(CBasicNodeMapPort* port) = 0;
    virtual void disconnect(CBasicNodeMapPort* port) = 0;
};

}  // namespace AnythingToNodeMapAdapter::Detail
