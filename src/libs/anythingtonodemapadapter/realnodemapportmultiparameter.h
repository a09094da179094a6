// The port object behind the one port node that all parameters of a node share: every parameter's
// block lies at addresses of its own. Every call comes under the node's lock.
#pragma once

#include "anythingtonodemapadapter/multiparameterportdemultiplexer.h"
#include "anythingtonodemapadapter/nodemapportconnector.h"
#include "gcbase/gcstring.h"
#include "genapi/portimpl.h"

namespace GenApi {
class INodeMap;
}

namespace AnythingToNodeMapAdapter::Detail {

// Connects itself to the node map, which outlives the connection: release() ends it. Addresses that
// belong to nobody read as zeros and swallow writes.
class ANYTHINGTONODEMAPADAPTER_API CRealNodeMapPortMultiParameter : public CNodeMapPortConnector,
                                                                    public GenApi::CPortImpl {
public:
    CRealNodeMapPortMultiParameter(GenApi::INodeMap* nodeMap, const GenICam::gcstring& portName);

    void Read(void* buffer, std::int64_t address, std::int64_t length) override;
    void Write(const void* buffer, std::int64_t address, std::int64_t length) override;
    [[nodiscard]] GenApi::EAccessMode GetAccessMode() const override { return GenApi::RW; }

    void invalidate(CBasicNodeMapPort& port) override;
    void connect(CBasicNodeMapPort* port) override;
    void disconnect(CBasicNodeMapPort* port) override;

    // All parameters are connected: from now on addresses are answered.
    void open();
    // Takes this object off its node map and forgets all parameters, for good.
    void release();

private:
    GenApi::INodeMap* nodeMap_;
    GenICam::gcstring portName_;
    CMultiParameterPortDemultiplexer demultiplexer_;
};

}  // namespace AnythingToNodeMapAdapter::Detail
