// CEventAdapter, which delivers the messages of a device to a node map: the registers of an event's
// port show its message, and plain nodes with its EventID are invalidated.
#pragma once

#include <memory>
#include <vector>

#include "genapi/eventport.h"
#include "genapi/nodemapref.h"

namespace GenApi {

// Base of the adapters, one for each layout. Keeps its map alive. One thread at a time; the map may
// be used by others meanwhile. A message changes the map in one hold of its lock, and callbacks run
// as at the end of any call. Event ports keep the last message of their event.
class GENAPI_API CEventAdapter {
public:
    CEventAdapter(const CEventAdapter&) = delete;
    CEventAdapter& operator=(const CEventAdapter&) = delete;
    virtual ~CEventAdapter();

    // Connects a port of its own to each event port of the map; null detaches only.
    void AttachNodeMap(INodeMap* pNodeMap);
    // Disconnects them.
    void DetachNodeMap();
    // The ports are not available until their next message. May be called while another thread
    // delivers one.
    void ForgetMessages();

protected:
    CEventAdapter();
    // Makes one event known; true if a node has its id.
    bool deliver(std::uint64_t eventId, const std::uint8_t* bytes, std::int64_t length);

private:
    struct Receiver;

    CNodeMapRef map_;
    std::vector<Receiver> receivers_;  // by id
};

// The caller tells id and data of each event. Address 0 of the port is the first byte of the data.
class GENAPI_API CEventAdapterGeneric final : public CEventAdapter {
public:
    explicit CEventAdapterGeneric(INodeMap* pNodeMap = nullptr);
    // Length in bytes; a message without bytes may be null. True if a node has the id.
    bool DeliverMessage(std::uint64_t EventID, const std::uint8_t* pMessage, std::int64_t Length);
};

// EVENT_CMD and EVENTDATA_CMD of GigE Vision, header included, with block ids of 16 or 64 bits.
// Address 0 of the port is the first byte of the event behind that header.
class GENAPI_API CEventAdapterGEV final : public CEventAdapter {
public:
    explicit CEventAdapterGEV(INodeMap* pNodeMap = nullptr);
    // How many of its events some node has. A message that is cut off or of another kind is a
    // RuntimeException; the events before the cut are not delivered either.
    int DeliverMessage(const std::uint8_t* pMessage, std::int64_t Length);
};

// EVENT_CMD of USB3 Vision, header included. Address 0 of the port is the first byte behind it.
class GENAPI_API CEventAdapterU3V final : public CEventAdapter {
public:
    explicit CEventAdapterU3V(INodeMap* pNodeMap = nullptr);
    // As above.
    int DeliverMessage(const std::uint8_t* pMessage, std::int64_t Length);
};

}  // namespace GenApi
