// A category of the parameter tree: it has children, but neither registers nor a port.
#pragma once

#include "anythingtonodemapadapter/parameternodemapport.h"

namespace AnythingToNodeMapAdapter::Detail {

class ANYTHINGTONODEMAPADAPTER_API CCategoryNodeMapPort
    : public ParameterNodeMapPort<ICategoryParameterPort> {
public:
    CCategoryNodeMapPort(std::shared_ptr<ICategoryParameterPort> port, std::int32_t mergePriority)
        : ParameterNodeMapPort(std::move(port), mergePriority) {}

    void Read(void* buffer, std::int64_t address, std::int64_t length) override;
    void Write(const void* buffer, std::int64_t address, std::int64_t length) override;
    void generateNode(std::ostream& out, bool ownPort, const gcstring& portName,
                      const gcstring& prefix, std::int64_t& address) override;
};

}  // namespace AnythingToNodeMapAdapter::Detail
