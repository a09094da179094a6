#include "anythingtonodemapadapter/booleannodemapport.h"

#include "anythingtonodemapadapter/descriptiontext.h"

namespace AnythingToNodeMapAdapter::Detail {

void CBooleanNodeMapPort::Read(void* buffer, std::int64_t address, std::int64_t length) {
    readWordBlock(port().get(), buffer, address, length,
                  [this] { return std::int64_t{port()->getValue()}; });
}

void CBooleanNodeMapPort::Write(const void* buffer, std::int64_t address, std::int64_t length) {
    if (isWordWrite(port().get(), address, length)) {
        port()->setValue(loadWord(buffer) != 0, true);
    }
}

void CBooleanNodeMapPort::generateNode(std::ostream& out, bool ownPort, const gcstring& portName,
                                       const gcstring& prefix, std::int64_t& address) {
    if (!port()) {
        return;
    }
    NodeWriter writer(out, *port(), prefix + getName(), portName, address);
    writer.openValue("Boolean", mergePriority(), dependencies("IsAvailable"),
                     dependencies("IsLocked"));
    writer.reference("pValue", "Value");
    writer.close("Boolean");

    writer.valueRegister("Value", valueAccessMode(*port()), Sign::Unsigned, {});
    writer.stateRegisters(WordBlock::availabilityOffset, WordBlock::lockOffset, Sign::Unsigned);
    if (ownPort) {
        writer.port();
    }
    address += WordBlock::size;
}

}  // namespace AnythingToNodeMapAdapter::Detail
