#include "anythingtonodemapadapter/enumentrynodemapport.h"

#include <ostream>

#include "anythingtonodemapadapter/descriptiontext.h"

namespace AnythingToNodeMapAdapter::Detail {

void CEnumEntryNodeMapPort::Read(void* buffer, std::int64_t address, std::int64_t length) {
    if (!port() || length != wordSize) {
        storeZeros(buffer, length);
    } else if (address == 0) {
        storeFlag(buffer, port()->isAvailable());
    }
}

void CEnumEntryNodeMapPort::Write(const void* /*buffer*/, std::int64_t /*address*/,
                                  std::int64_t /*length*/) {}

void CEnumEntryNodeMapPort::generateNode(std::ostream& out, bool ownPort, const gcstring& portName,
                                         const gcstring& prefix, std::int64_t& address) {
    if (!port() || !port()->hasAvailabilityRegister()) {
        return;
    }
    NodeWriter writer(out, *port(), getQualifiedName(prefix), portName, address);
    writer.availabilityRegister(0, Sign::Unsigned);
    if (ownPort) {
        writer.port();
    }
    address += wordSize;
}

void CEnumEntryNodeMapPort::generateEntry(std::ostream& out, const gcstring& prefix) {
    if (!port()) {
        return;
    }
    // The blanks around the closing bracket belong to the format.
    out << "        <EnumEntry Name=\"" << getName() << '"' << mergeAttribute(mergePriority())
        << " > \n";
    writeTexts(out, Indent::EntryElement, *port());
    if (port()->hasAvailabilityRegister()) {
        writeElement(out, Indent::EntryElement, "pIsAvailable",
                     getQualifiedName(prefix) + "IsAvailable");
    } else {
        writeElements(out, Indent::EntryElement, "pIsAvailable", dependencies("IsAvailable"));
    }
    writeElement(out, Indent::EntryElement, "Value", decimal(port()->getValue()));
    out << "        </EnumEntry>\n";
}

gcstring CEnumEntryNodeMapPort::getPortName(const gcstring& prefix) const {
    return getQualifiedName(prefix) + "Port";
}

gcstring CEnumEntryNodeMapPort::getQualifiedName(const gcstring& prefix) const {
    return "EnumEntry_" + enumName_ + "_" + prefix + getName();
}

}  // namespace AnythingToNodeMapAdapter::Detail
