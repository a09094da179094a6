#include "genapi/eventadapter.h"

#include <algorithm>
#include <string>

#include "genapi/engineerror.h"
#include "genapi/iportconstruct.h"
#include "genapi/nodemap.h"

namespace GenApi {

namespace {

using Detail::NodeMap;

std::uint64_t bigEndian(const std::uint8_t* bytes, int count) {
    std::uint64_t value = 0;
    for (int i = 0; i < count; ++i) {
        value = value << 8 | bytes[i];
    }
    return value;
}

std::uint64_t littleEndian(const std::uint8_t* bytes, int count) {
    std::uint64_t value = 0;
    for (int i = count; i > 0; --i) {
        value = value << 8 | bytes[i - 1];
    }
    return value;
}

[[noreturn]] void refuse(const char* what, const std::string& why) {
    GENAPI_THROW(RuntimeException, std::string(what) + " event message: " + why);
}

void requireHeader(const char* what, const std::uint8_t* message, std::int64_t length,
                   std::int64_t header) {
    if (message == nullptr || length < header) {
        refuse(what, "it is shorter than its header.");
    }
}

// The bytes behind a header of which a number at some offset tells how many there are.
std::int64_t payloadOf(const char* what, std::uint64_t told, std::int64_t header,
                       std::int64_t length) {
    if (told > static_cast<std::uint64_t>(length - header)) {
        refuse(what, "it tells of " + std::to_string(told) + " bytes and has " +
                         std::to_string(length - header) + ".");
    }
    return static_cast<std::int64_t>(told);
}

}  // namespace

// A node that wants an event: a port of its own, or a plain node, which is invalidated.
struct CEventAdapter::Receiver {
    std::uint64_t eventId = 0;
    Detail::NodeId node = Detail::noNode;
    std::unique_ptr<CEventPort> port;
};

CEventAdapter::CEventAdapter() = default;

CEventAdapter::~CEventAdapter() {
    DetachNodeMap();
}

void CEventAdapter::AttachNodeMap(INodeMap* pNodeMap) {
    DetachNodeMap();
    if (NodeMap* const map = NodeMap::share(pNodeMap, map_)) {
        const NodeMap::Call call(*map);
        const auto& nodes = map->description().nodes;
        for (std::size_t i = 0; i < nodes.size(); ++i) {
            if (!nodes[i].hasEventId) {
                continue;
            }
            const auto id = static_cast<Detail::NodeId>(i);
            Receiver receiver{nodes[i].eventId, id, nullptr};
            if (nodes[i].kind == Detail::Kind::port) {
                receiver.port = std::make_unique<CEventPort>();
                map->connectPort(id, receiver.port.get());
            }
            receivers_.push_back(std::move(receiver));
        }
        std::stable_sort(receivers_.begin(), receivers_.end(),
                         [](const auto& a, const auto& b) { return a.eventId < b.eventId; });
    }
}

void CEventAdapter::DetachNodeMap() {
    // The ports disconnect themselves.
    receivers_.clear();
    map_._Destroy();
}

void CEventAdapter::ForgetMessages() {
    if (!map_) {
        return;
    }
    const NodeMap::Call call(NodeMap::behind(map_));
    for (const Receiver& receiver : receivers_) {
        if (receiver.port != nullptr) {
            receiver.port->DetachEvent();
        }
    }
}

bool CEventAdapter::deliver(std::uint64_t eventId, const std::uint8_t* bytes, std::int64_t length) {
    if (!map_) {
        GENAPI_THROW(RuntimeException, "Event adapter: no node map is attached.");
    }
    auto place = std::lower_bound(
        receivers_.begin(), receivers_.end(), eventId,
        [](const Receiver& receiver, std::uint64_t id) { return receiver.eventId < id; });
    const bool isKnown = place != receivers_.end() && place->eventId == eventId;
    NodeMap& map = NodeMap::behind(map_);
    const NodeMap::Call call(map);
    for (; place != receivers_.end() && place->eventId == eventId; ++place) {
        if (place->port != nullptr) {
            place->port->AttachEvent(bytes, length);
        } else {
            map.engine().invalidate(place->node);
        }
    }
    return isKnown;
}

CEventAdapterGeneric::CEventAdapterGeneric(INodeMap* pNodeMap) {
    AttachNodeMap(pNodeMap);
}

bool CEventAdapterGeneric::DeliverMessage(std::uint64_t EventID, const std::uint8_t* pMessage,
                                          std::int64_t Length) {
    constexpr std::uint8_t none = 0;
    return deliver(EventID, pMessage == nullptr && Length == 0 ? &none : pMessage, Length);
}

// ---- GigE Vision. The header has key, flags, command, length of the rest, request id. An event
// begins with its size or zero, its id, stream channel and block id (16 bits, or 64 behind
// padding), and a time stamp.

CEventAdapterGEV::CEventAdapterGEV(INodeMap* pNodeMap) {
    AttachNodeMap(pNodeMap);
}

int CEventAdapterGEV::DeliverMessage(const std::uint8_t* pMessage, std::int64_t Length) {
    constexpr std::int64_t headerLength = 8;
    constexpr std::uint8_t key = 0x42;
    constexpr std::uint8_t hasLongIds = 0x10;
    constexpr std::uint64_t eventCommand = 0x00C0;
    constexpr std::uint64_t eventDataCommand = 0x00C2;
    constexpr const char* what = "GigE Vision";

    requireHeader(what, pMessage, Length, headerLength);
    const std::uint64_t command = bigEndian(pMessage + 2, 2);
    if (pMessage[0] != key || (command != eventCommand && command != eventDataCommand)) {
        refuse(what, "it is neither EVENT_CMD nor EVENTDATA_CMD.");
    }
    const bool isLong = (pMessage[1] & hasLongIds) != 0;
    const std::int64_t smallest = isLong ? 24 : 16;
    const std::uint8_t* payload = pMessage + headerLength;
    const std::int64_t length = payloadOf(what, bigEndian(pMessage + 4, 2), headerLength, Length);
    // Event data of the old form is one event up to the end.
    const auto sizeAt = [&](std::int64_t offset) {
        const auto told = static_cast<std::int64_t>(isLong ? bigEndian(payload + offset, 2) : 0);
        if (told != 0) {
            return told;
        }
        return command == eventCommand ? smallest : length - offset;
    };
    for (std::int64_t offset = 0; offset < length; offset += sizeAt(offset)) {
        if (length - offset < smallest || sizeAt(offset) < smallest ||
            sizeAt(offset) > length - offset) {
            refuse(what,
                   "the event at offset " + std::to_string(headerLength + offset) + " is cut off.");
        }
    }
    int known = 0;
    for (std::int64_t offset = 0; offset < length; offset += sizeAt(offset)) {
        known += deliver(bigEndian(payload + offset + 2, 2), payload + offset, sizeAt(offset));
    }
    return known;
}

// ---- USB3 Vision. The header has prefix, flags, command, length of the rest, request id. The
// event has two bytes reserved, its id, a time stamp, and data up to the end.

CEventAdapterU3V::CEventAdapterU3V(INodeMap* pNodeMap) {
    AttachNodeMap(pNodeMap);
}

int CEventAdapterU3V::DeliverMessage(const std::uint8_t* pMessage, std::int64_t Length) {
    constexpr std::int64_t headerLength = 12;
    constexpr std::int64_t smallest = 12;
    constexpr std::uint64_t prefix = 0x45563355;
    constexpr std::uint64_t eventCommand = 0x0C00;
    constexpr const char* what = "USB3 Vision";

    requireHeader(what, pMessage, Length, headerLength);
    if (littleEndian(pMessage, 4) != prefix || littleEndian(pMessage + 6, 2) != eventCommand) {
        refuse(what, "it is no EVENT_CMD.");
    }
    const std::int64_t length =
        payloadOf(what, littleEndian(pMessage + 8, 2), headerLength, Length);
    if (length < smallest) {
        refuse(what, "the event is cut off.");
    }
    const std::uint8_t* event = pMessage + headerLength;
    return deliver(littleEndian(event + 2, 2), event, length) ? 1 : 0;
}

}  // namespace GenApi
