#include "anythingtonodemapadapter/enumnodemapport.h"

#include "anythingtonodemapadapter/descriptiontext.h"
#include "anythingtonodemapadapter/enumentrynodemapport.h"

namespace AnythingToNodeMapAdapter::Detail {

void CEnumNodeMapPort::Read(void* buffer, std::int64_t address, std::int64_t length) {
    if (!port() || length != wordSize) {
        storeZeros(buffer, length);
        return;
    }
    switch (address) {
        case WordBlock::valueOffset:
            return storeWord(buffer, port()->getValue());
        case WordBlock::availabilityOffset:
            return storeFlag(buffer, port()->isAvailable());
        case WordBlock::lockOffset:
            return storeFlag(buffer, !port()->isWritable());
        default:
            return;
    }
}

void CEnumNodeMapPort::Write(const void* buffer, std::int64_t address, std::int64_t length) {
    if (port() && length == wordSize && address == WordBlock::valueOffset) {
        port()->setValue(loadWord(buffer), true);
    }
}

void CEnumNodeMapPort::generateNode(std::ostream& out, bool ownPort, const gcstring& portName,
                                    const gcstring& prefix, std::int64_t& address) {
    if (!port()) {
        return;
    }
    NodeWriter writer(out, *port(), prefix + getName(), portName, address);
    writer.open("Enumeration", mergePriority());
    writer.availability(dependencies("IsAvailable"));
    writer.lock(dependencies("IsLocked"));
    writer.element("Streamable", "Yes");
    for (const auto& entry : entries_) {
        entry->generateEntry(out, prefix);
    }
    writer.reference("pValue", "IntValue");
    writer.elements("pSelected", dependencies("Selected"));
    writer.close("Enumeration");

    writer.valueRegister("IntValue", valueAccessMode(*port()), Sign::Unsigned,
                         dependencies("Invalidator"));
    writer.availabilityRegister(WordBlock::availabilityOffset, Sign::Unsigned);
    writer.lockRegister(WordBlock::lockOffset, Sign::Unsigned);
    if (ownPort) {
        writer.port();
    }
    address += WordBlock::size;
}

void CEnumNodeMapPort::addEntry(std::shared_ptr<CEnumEntryNodeMapPort> entry) {
    entries_.push_back(std::move(entry));
}

}  // namespace AnythingToNodeMapAdapter::Detail
