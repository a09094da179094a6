// One entry of an enumeration: an element within the enumeration, and an availability register of
// its own if its port has one.
#pragma once

#include "anythingtonodemapadapter/parameternodemapport.h"

namespace AnythingToNodeMapAdapter::Detail {

class ANYTHINGTONODEMAPADAPTER_API CEnumEntryNodeMapPort
    : public ParameterNodeMapPort<IEnumEntryParameterPort> {
public:
    CEnumEntryNodeMapPort(std::shared_ptr<IEnumEntryParameterPort> port, gcstring enumName,
                          std::int32_t mergePriority)
        : ParameterNodeMapPort(std::move(port), mergePriority), enumName_(std::move(enumName)) {}

    void Read(void* buffer, std::int64_t address, std::int64_t length) override;
    void Write(const void* buffer, std::int64_t address, std::int64_t length) override;
    // Writes the register alone; the element is written by the enumeration.
    void generateNode(std::ostream& out, bool ownPort, const gcstring& portName,
                      const gcstring& prefix, std::int64_t& address) override;
    [[nodiscard]] gcstring getPortName(const gcstring& prefix) const override;

    [[nodiscard]] const gcstring& getEnumName() const { return enumName_; }

    virtual void generateEntry(std::ostream& out, const gcstring& prefix);
    // Unique in the whole map, where entry names are unique only within their enumeration.
    [[nodiscard]] virtual gcstring getQualifiedName(const gcstring& prefix) const;

private:
    gcstring enumName_;
};

}  // namespace AnythingToNodeMapAdapter::Detail
