// INodeMap, the nodes of one device. CNodeMapFactory makes it, CNodeMapRef handles keep it alive,
// and every node, entry and port node belongs to it.
#pragma once

#include "genapi/inode.h"
#include "genapi/synch.h"

namespace GenApi {

class IPort;
struct LoadReport;

// Any thread may call. One recursive lock guards a map: its own, or the one given at creation. A
// call from outside takes it once. Maps share no state that changes.
class GENAPI_API INodeMap {
public:
    // Replaces the list by all nodes, in the description's order.
    virtual void GetNodes(NodeList_t& Nodes) const = 0;
    // Null if there is none. A prefix "Std::" or "Cust::" is accepted.
    [[nodiscard]] virtual INode* GetNode(const gcstring& Name) const = 0;
    [[nodiscard]] virtual std::uint64_t GetNumNodes() const = 0;
    // Drops all that is cached and fires all callbacks.
    virtual void InvalidateNodes() const = 0;
    // Connects the port to the port node of that name, or to the only one, or to the one called
    // "Device". Null disconnects: registers on it are then not available. False if there is no such
    // port node. The port must outlive the connection; CPortImpl takes care of that itself.
    virtual bool Connect(IPort* pPort, const gcstring& PortName) const = 0;
    virtual bool Connect(IPort* pPort) const = 0;
    [[nodiscard]] virtual gcstring GetDeviceName() const = 0;
    // Tells the map that ElapsedTime milliseconds went by: polled nodes that are due are
    // invalidated and their callbacks fire.
    virtual void Poll(std::int64_t ElapsedTime) = 0;
    [[nodiscard]] virtual CLock& GetLock() const = 0;
    // What the loader dropped or doubted.
    [[nodiscard]] virtual const LoadReport& GetLoadReport() const = 0;

    // Attributes of the description's root.
    [[nodiscard]] virtual gcstring GetModelName() const = 0;
    [[nodiscard]] virtual gcstring GetVendorName() const = 0;
    [[nodiscard]] virtual gcstring GetToolTip() const = 0;
    [[nodiscard]] virtual gcstring GetStandardNameSpace() const = 0;
    [[nodiscard]] virtual gcstring GetProductGuid() const = 0;
    [[nodiscard]] virtual gcstring GetVersionGuid() const = 0;
    // The schema decides the byte order of some transports. 1.1 where the description names none.
    [[nodiscard]] virtual Version_t GetSchemaVersion() const = 0;
    // MajorVersion, MinorVersion and SubMinorVersion of the description.
    [[nodiscard]] virtual Version_t GetDeviceVersion() const = 0;

    // Handles count themselves here; the last one to go destroys the map.
    virtual void AddReference() const noexcept = 0;
    virtual void RemoveReference() const noexcept = 0;

protected:
    virtual ~INodeMap() = default;
};

}  // namespace GenApi
