// The registers of an enumeration parameter: integer value, availability and lock. Its entries are
// described within it.
#pragma once

#include <vector>

#include "anythingtonodemapadapter/parameternodemapport.h"

namespace AnythingToNodeMapAdapter::Detail {

class CEnumEntryNodeMapPort;

class ANYTHINGTONODEMAPADAPTER_API CEnumNodeMapPort
    : public ParameterNodeMapPort<IEnumParameterPort> {
public:
    CEnumNodeMapPort(std::shared_ptr<IEnumParameterPort> port, std::int32_t mergePriority)
        : ParameterNodeMapPort(std::move(port), mergePriority) {}

    void Read(void* buffer, std::int64_t address, std::int64_t length) override;
    void Write(const void* buffer, std::int64_t address, std::int64_t length) override;
    void generateNode(std::ostream& out, bool ownPort, const gcstring& portName,
                      const gcstring& prefix, std::int64_t& address) override;

    // Entries appear in the order in which they were added; the adapter serves their registers.
    void addEntry(std::shared_ptr<CEnumEntryNodeMapPort> entry);

private:
    std::vector<std::shared_ptr<CEnumEntryNodeMapPort>> entries_;
};

}  // namespace AnythingToNodeMapAdapter::Detail
