// The registers of a boolean parameter: value, availability and lock.
#pragma once

#include "anythingtonodemapadapter/parameternodemapport.h"

namespace AnythingToNodeMapAdapter::Detail {

class ANYTHINGTONODEMAPADAPTER_API CBooleanNodeMapPort
    : public ParameterNodeMapPort<IBooleanParameterPort> {
public:
    CBooleanNodeMapPort(std::shared_ptr<IBooleanParameterPort> port, std::int32_t mergePriority)
        : ParameterNodeMapPort(std::move(port), mergePriority) {}

    void Read(void* buffer, std::int64_t address, std::int64_t length) override;
    void Write(const void* buffer, std::int64_t address, std::int64_t length) override;
    void generateNode(std::ostream& out, bool ownPort, const gcstring& portName,
                      const gcstring& prefix, std::int64_t& address) override;
};

}  // namespace AnythingToNodeMapAdapter::Detail
