#include "anythingtonodemapadapter/commandnodemapport.h"

#include "anythingtonodemapadapter/descriptiontext.h"

namespace AnythingToNodeMapAdapter::Detail {

void CCommandNodeMapPort::Read(void* buffer, std::int64_t address, std::int64_t length) {
    readWordBlock(port().get(), buffer, address, length,
                  [this] { return std::int64_t{port()->isExecuting()}; });
}

void CCommandNodeMapPort::Write(const void* buffer, std::int64_t address, std::int64_t length) {
    if (isWordWrite(port().get(), address, length) && loadWord(buffer) != 0) {
        port()->execute(true);
    }
}

void CCommandNodeMapPort::generateNode(std::ostream& out, bool ownPort, const gcstring& portName,
                                       const gcstring& prefix, std::int64_t& address) {
    if (!port()) {
        return;
    }
    NodeWriter writer(out, *port(), prefix + getName(), portName, address);
    const bool writeOnly = port()->isWriteOnly();
    writer.open("Command", mergePriority());
    writer.availability(dependencies("IsAvailable"));
    if (writeOnly) {
        // Nobody can read such a command, so its lock has no register either.
        writer.elements("pIsLocked", dependencies("IsLocked"));
    } else {
        writer.lock(dependencies("IsLocked"));
    }
    writer.reference("pValue", "Value");
    writer.element("CommandValue", "1");
    writer.close("Command");

    writer.valueRegister("Value", writeOnly ? "WO" : "RW", Sign::Unsigned,
                         dependencies("Invalidator"));
    writer.availabilityRegister(WordBlock::availabilityOffset, Sign::Unsigned);
    if (!writeOnly) {
        writer.lockRegister(WordBlock::lockOffset, Sign::Unsigned);
    }
    if (ownPort) {
        writer.port();
    }
    address += WordBlock::size;
}

}  // namespace AnythingToNodeMapAdapter::Detail
