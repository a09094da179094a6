// Short hands for tests of node-map ports: bytes in and out, and the text that a port generates.
#pragma once

#include <cstdint>
#include <cstring>
#include <memory>
#include <sstream>
#include <string>

#include "anythingtonodemapadapter/basicnodemapport.h"
#include "anythingtonodemapadapter/nodemapportconnector.h"
#include "gcbase/gcstring.h"

namespace AnythingToNodeMapAdapter::Test {

using GenICam::gcstring;

// What an untouched word of a buffer holds.
constexpr std::int64_t untouched = 0x7e7e7e7e7e7e7e7e;

// Anything with Read: a node-map port or a real port.
template <typename Port>
std::int64_t readWord(Port& port, std::int64_t address) {
    std::int64_t word = untouched;
    port.Read(&word, address, 8);
    return word;
}

template <typename Port>
void writeWord(Port& port, std::int64_t address, std::int64_t word) {
    port.Write(&word, address, 8);
}

template <typename Port>
std::string readBytes(Port& port, std::int64_t address, std::int64_t length) {
    std::string bytes(static_cast<std::size_t>(length), '~');
    port.Read(bytes.data(), address, length);
    return bytes;
}

// Counts how often a port tells the node map of a change.
class CountingConnector final : public Detail::CNodeMapPortConnector {
public:
    void invalidate(Detail::CBasicNodeMapPort& /*port*/) override { ++invalidations; }
    void connect(Detail::CBasicNodeMapPort* /*port*/) override {}
    void disconnect(Detail::CBasicNodeMapPort* /*port*/) override {}

    int invalidations = 0;
};

inline std::shared_ptr<CountingConnector> connectCounting(Detail::CBasicNodeMapPort& port) {
    auto connector = std::make_shared<CountingConnector>();
    port.setConnector(connector);
    return connector;
}

// The node's text in own-port mode, or with a shared port of that name.
inline std::string generate(Detail::CBasicNodeMapPort& port, const gcstring& sharedPort = "",
                            const gcstring& prefix = "", std::int64_t address = 0) {
    std::ostringstream out;
    const bool ownPort = sharedPort.empty();
    port.generateNode(out, ownPort, ownPort ? port.getPortName(prefix) : sharedPort, prefix,
                      address);
    return out.str();
}

// How far the node moves the address.
inline std::int64_t blockSize(Detail::CBasicNodeMapPort& port) {
    std::ostringstream out;
    std::int64_t address = 0;
    port.generateNode(out, false, "Port", "", address);
    return address;
}

}  // namespace AnythingToNodeMapAdapter::Test
