// The parameter set of an adapter, with and without its live map. Everything runs under the node's
// lock.
#pragma once

#include <memory>

#include "anythingtonodemapadapter/adapter.h"
#include "anythingtonodemapadapter/descriptiondocument.h"
#include "anythingtonodemapadapter/realnodemapportmultiparameter.h"
#include "genapi/nodemapref.h"

namespace AnythingToNodeMapAdapter {

class CAnythingToNodeMapAdapterBase::CAnythingToNodeMapAdapterBaseImpl {
public:
    virtual ~CAnythingToNodeMapAdapterBaseImpl() = default;

    void generateDescription(gcstring& out, const gcstring& portName, const gcstring& prefix,
                             Detail::DescriptionPurpose purpose);

    NodeMapPorts ports;
};

class CAnythingToNodeMapAdapter::CAnythingToNodeMapAdapterImpl
    : public CAnythingToNodeMapAdapterBaseImpl {
public:
    explicit CAnythingToNodeMapAdapterImpl(const gcstring& deviceName);
    // The maps go before the ports that they call.
    ~CAnythingToNodeMapAdapterImpl() override;

    // Takes the slot of that name; a port that was there is taken off the live map first.
    void store(const gcstring& name, std::shared_ptr<Detail::CBasicNodeMapPort> port);
    // For the entries of an enumeration that was replaced: a former wrapper of one ends with it,
    // and leaves the entry without an observer.
    void observeEntriesOf(const gcstring& enumName);
    void createNodeMap(GenApi::CLock* lock, const gcstring& portName, const gcstring& prefix);

    GenApi::CNodeMapRef nodeMap;
    GenApi::CNodeMapRef fallbackNodeMap;
    // Only where all parameters share one port.
    std::shared_ptr<Detail::CRealNodeMapPortMultiParameter> sharedPort;

private:
    [[nodiscard]] GenApi::CNodeMapRef load(const gcstring& description, GenApi::CLock* lock) const;
    void disconnectAll();
    void connectShared(const gcstring& portName);
    void connectOwn();
};

}  // namespace AnythingToNodeMapAdapter
