#include "anythingtonodemapadapter/integernodemapport.h"

#include "anythingtonodemapadapter/descriptiontext.h"

namespace AnythingToNodeMapAdapter::Detail {

namespace {

// The maximum lies before the minimum; descriptions already in use rely on it.
constexpr std::int64_t valueOffset = 0;
constexpr std::int64_t maxOffset = 8;
constexpr std::int64_t minOffset = 16;
constexpr std::int64_t incOffset = 24;
constexpr std::int64_t availabilityOffset = 32;
constexpr std::int64_t lockOffset = 40;
constexpr std::int64_t blockSize = 48;

}  // namespace

void CIntegerNodeMapPort::Read(void* buffer, std::int64_t address, std::int64_t length) {
    if (!port() || length != wordSize) {
        storeZeros(buffer, length);
        return;
    }
    switch (address) {
        case valueOffset:
            return storeWord(buffer, port()->getValue());
        case maxOffset:
            return storeWord(buffer, port()->getMax());
        case minOffset:
            return storeWord(buffer, port()->getMin());
        case incOffset:
            return storeWord(buffer, port()->getInc());
        case availabilityOffset:
            return storeFlag(buffer, port()->isAvailable());
        case lockOffset:
            return storeFlag(buffer, !port()->isWritable());
        default:
            return;
    }
}

void CIntegerNodeMapPort::Write(const void* buffer, std::int64_t address, std::int64_t length) {
    if (isWordWrite(port().get(), address, length)) {
        // The node map invalidates its own nodes after a write.
        port()->setValue(loadWord(buffer), true);
    }
}

void CIntegerNodeMapPort::generateNode(std::ostream& out, bool ownPort, const gcstring& portName,
                                       const gcstring& prefix, std::int64_t& address) {
    if (!port()) {
        return;
    }
    const Sign sign = port()->isSigned() ? Sign::Signed : Sign::Unsigned;
    NodeWriter writer(out, *port(), prefix + getName(), portName, address);
    writer.openValue("Integer", mergePriority(), dependencies("IsAvailable"),
                     dependencies("IsLocked"));
    writer.reference("pValue", "Value");
    writer.reference("pMin", "Min");
    writer.reference("pMax", "Max");
    writer.reference("pInc", "Inc");
    if (const gcstring unit = port()->getUnit(); !unit.empty()) {
        writer.element("Unit", unit);
    }
    writer.element("Representation", port()->getRepresentation());
    writer.elements("pSelected", dependencies("Selected"));
    writer.close("Integer");

    writer.valueRegister("Value", valueAccessMode(*port()), sign, dependencies("Invalidator"));
    writer.readOnlyRegister("Max", maxOffset, sign);
    writer.readOnlyRegister("Min", minOffset, sign);
    writer.readOnlyRegister("Inc", incOffset, sign);
    writer.stateRegisters(availabilityOffset, lockOffset, sign);
    if (ownPort) {
        writer.port();
    }
    address += blockSize;
}

}  // namespace AnythingToNodeMapAdapter::Detail
