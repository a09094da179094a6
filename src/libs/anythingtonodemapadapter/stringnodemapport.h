// The registers of a text parameter: the text, as long as its maximum, then availability and lock.
#pragma once

#include "anythingtonodemapadapter/parameternodemapport.h"

namespace AnythingToNodeMapAdapter::Detail {

class ANYTHINGTONODEMAPADAPTER_API CStringNodeMapPort
    : public ParameterNodeMapPort<IStringParameterPort> {
public:
    CStringNodeMapPort(std::shared_ptr<IStringParameterPort> port, std::int32_t mergePriority);

    void Read(void* buffer, std::int64_t address, std::int64_t length) override;
    void Write(const void* buffer, std::int64_t address, std::int64_t length) override;
    void generateNode(std::ostream& out, bool ownPort, const gcstring& portName,
                      const gcstring& prefix, std::int64_t& address) override;

private:
    [[nodiscard]] std::int64_t availabilityOffset() const { return stringLength_; }
    [[nodiscard]] std::int64_t lockOffset() const { return stringLength_ + wordSize; }

    std::int64_t stringLength_;
};

}  // namespace AnythingToNodeMapAdapter::Detail
