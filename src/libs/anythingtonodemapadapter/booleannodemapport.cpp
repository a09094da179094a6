#include "anythingtonodemapadapter/booleannodemapport.h"

#include "anythingtonodemapadapter/descriptiontext.h"

namespace AnythingToNodeMapAdapter::Detail {

void CBooleanNodeMapPort::Read(void* buffer, std::int64_t address, std::int64_t length) {
    if (!port() || length != wordSize) {
        storeZeros(buffer, length);
        return;
    }
    switch (address) {
        case WordBlock::valueOffset:
            return storeFlag(buffer, port()->getValue());
        case WordBlock::availabilityOffset:
            return storeFlag(buffer, port()->isAvailable());
        case WordBlock::lockOffset:
            return storeFlag(buffer, !port()->isWritable());
        default:
            return;
    }
}

void CBooleanNodeMapPort::Write(const void* buffer, std::int64_t address, std::int64_t length) {
    if (port() && length == wordSize && address == WordBlock::valueOffset) {
        port()->setValue(loadWord(buffer) != 0, true);
    }
}

void CBooleanNodeMapPort::generateNode(std::ostream& out, bool ownPort, const gcstring& portName,
                                       const gcstring& prefix, std::int64_t& address) {
    if (!port()) {
        return;
    }
    NodeWriter writer(out, *port(), prefix + getName(), portName, address);
    writer.open("Boolean", mergePriority());
    writer.availability(dependencies("IsAvailable"));
    writer.lock(dependencies("IsLocked"));
    writer.element("Streamable", "Yes");
    writer.reference("pValue", "Value");
    writer.close("Boolean");

    writer.valueRegister("Value", valueAccessMode(*port()), Sign::Unsigned, {});
    writer.availabilityRegister(WordBlock::availabilityOffset, Sign::Unsigned);
    writer.lockRegister(WordBlock::lockOffset, Sign::Unsigned);
    if (ownPort) {
        writer.port();
    }
    address += WordBlock::size;
}

}  // namespace AnythingToNodeMapAdapter::Detail
