// The registers of an integer parameter: value, range, increment, availability and lock.
#pragma once

#include "anythingtonodemapadapter/parameternodemapport.h"

namespace AnythingToNodeMapAdapter::Detail {

class ANYTHINGTONODEMAPADAPTER_API CIntegerNodeMapPort
    : public ParameterNodeMapPort<IIntegerParameterPort> {
public:
    CIntegerNodeMapPort(std::shared_ptr<IIntegerParameterPort> port, std::int32_t mergePriority)
        : ParameterNodeMapPort(std::move(port), mergePriority) {}

    void Read(void* buffer, std::int64_t address, std::int64_t length) override;
    void Write(const void* buffer, std::int64_t address, std::int64_t length) override;
    void generateNode(std::ostream& out, bool ownPort, const gcstring& portName,
                      const gcstring& prefix, std::int64_t& address) override;
};

}  // namespace AnythingToNodeMapAdapter::Detail
