// A parameter port as the node map meets it: a small block of registers, read and written as bytes,
// and a piece of the description. Made and owned by the adapter; node code only adds dependencies.
// Everything here runs under the node's lock.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <map>
#include <memory>
#include <vector>

#include "anythingtonodemapadapter/api.h"
#include "gcbase/gcstring.h"

namespace AnythingToNodeMapAdapter::Detail {

using GenICam::gcstring;

class CNodeMapPortConnector;

// Life: created by the adapter; described once its block is known; connected once a real port
// serves it. A port without a block is never connected. Wrong addresses and lengths are no errors.
class ANYTHINGTONODEMAPADAPTER_API CBasicNodeMapPort {
public:
    // References to other nodes by kind: "Feature", "Selected", "Invalidator", "IsAvailable",
    // "IsLocked".
    using Dependencies = std::map<gcstring, std::vector<gcstring>>;

    virtual ~CBasicNodeMapPort();
    CBasicNodeMapPort(const CBasicNodeMapPort&) = delete;
    CBasicNodeMapPort& operator=(const CBasicNodeMapPort&) = delete;

    // Addresses are relative to the block.
    virtual void Read(void* buffer, std::int64_t address, std::int64_t length) = 0;
    virtual void Write(const void* buffer, std::int64_t address, std::int64_t length) = 0;
    // The parameter's name; empty without a parameter.
    [[nodiscard]] virtual const char* getName() const = 0;

    // Writes the node, its registers and, with `ownPort`, its port node. `address` is where the
    // block begins, and is moved behind it.
    virtual void generateNode(std::ostream& out, bool ownPort, const gcstring& portName,
                              const gcstring& prefix, std::int64_t& address) = 0;
    // The same, and keeps port name and block. With `ownPort` the port name is the port's own, and
    // `address` goes back to 0 for the next port.
    virtual void generateAndRecord(std::ostream& out, bool ownPort, const gcstring& portName,
                                   const gcstring& prefix, std::int64_t& address);
    // The name of this parameter's own port node.
    [[nodiscard]] virtual gcstring getPortName(const gcstring& prefix) const;

    // Duplicates are kept; the order of the calls is the order in the description.
    void addDependency(const gcstring& kind, const gcstring& name);
    // Takes the port off the real port that serves it, if any.
    void detach();

    [[nodiscard]] const gcstring& portName() const { return portName_; }
    [[nodiscard]] std::int64_t registerStart() const { return registerStart_; }
    [[nodiscard]] std::int64_t registerLength() const { return registerLength_; }
    [[nodiscard]] const std::shared_ptr<CNodeMapPortConnector>& connector() const {
        return connector_;
    }
    void setConnector(std::shared_ptr<CNodeMapPortConnector> connector);

protected:
    explicit CBasicNodeMapPort(std::int32_t mergePriority);

    [[nodiscard]] std::int32_t mergePriority() const { return mergePriority_; }
    // The names of one kind, empty if there are none.
    [[nodiscard]] const std::vector<gcstring>& dependencies(const gcstring& kind) const;
    // Tells the node map that the parameter has changed.
    void invalidate();

private:
    gcstring portName_;
    std::int64_t registerStart_ = 0;
    std::int64_t registerLength_ = 0;
    std::int32_t mergePriority_;
    Dependencies dependencies_;
    std::shared_ptr<CNodeMapPortConnector> connector_;
};

}  // namespace AnythingToNodeMapAdapter::Detail
