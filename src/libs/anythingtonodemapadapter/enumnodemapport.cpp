#include "anythingtonodemapadapter/enumnodemapport.h"

#include "anythingtonodemapadapter/descriptiontext.h"
#include "anythingtonodemapadapter/enumentrynodemapport.h"

namespace AnythingToNodeMapAdapter::Detail {

void CEnumNodeMapPort::Read(void* buffer, std::int64_t address, std::int64_t length) {
    readWordBlock(port().get(), buffer, address, length, [this] { return port()->getValue(); });
}

void CEnumNodeMapPort::Write(const void* buffer, std::int64_t address, std::int64_t length) {
    if (isWordWrite(port().get(), address, length)) {
        port()->setValue(loadWord(buffer), true);
    }
}

void CEnumNodeMapPort::generateNode(std::ostream& out, bool ownPort, const gcstring& portName,
                                    const gcstring& prefix, std::int64_t& address) {
    if (!port()) {
        return;
    }
    NodeWriter writer(out, *port(), prefix + getName(), portName, address);
    writer.openValue("Enumeration", mergePriority(), dependencies("IsAvailable"),
                     dependencies("IsLocked"));
    for (const auto& entry : entries_) {
        entry->generateEntry(out, prefix);
    }
    writer.reference("pValue", "IntValue");
    writer.elements("pSelected", dependencies("Selected"));
    writer.close("Enumeration");

    writer.valueRegister("IntValue", valueAccessMode(*port()), Sign::Unsigned,
                         dependencies("Invalidator"));
    writer.stateRegisters(WordBlock::availabilityOffset, WordBlock::lockOffset, Sign::Unsigned);
    if (ownPort) {
        writer.port();
    }
    address += WordBlock::size;
}

void CEnumNodeMapPort::addEntry(std::shared_ptr<CEnumEntryNodeMapPort> entry) {
    entries_.push_back(std::move(entry));
}

}  // namespace AnythingToNodeMapAdapter::Detail
