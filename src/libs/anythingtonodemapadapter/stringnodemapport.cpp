#include "anythingtonodemapadapter/stringnodemapport.h"

#include <algorithm>
#include <vector>

#include "anythingtonodemapadapter/descriptiontext.h"

namespace AnythingToNodeMapAdapter::Detail {

CStringNodeMapPort::CStringNodeMapPort(std::shared_ptr<IStringParameterPort> parameter,
                                       std::int32_t mergePriority)
    : ParameterNodeMapPort(std::move(parameter), mergePriority),
      stringLength_(port() ? static_cast<std::int64_t>(port()->getSize()) : 0) {}

void CStringNodeMapPort::Read(void* buffer, std::int64_t address, std::int64_t length) {
    if (port() && address == 0 && length >= 0 && length <= stringLength_) {
        port()->readValue(static_cast<char*>(buffer), static_cast<std::size_t>(length));
    } else if (port() && address == availabilityOffset() && length == wordSize) {
        storeFlag(buffer, port()->isAvailable());
    } else if (port() && address == lockOffset() && length == wordSize) {
        storeFlag(buffer, !port()->isWritable());
    } else {
        storeZeros(buffer, length);
    }
}

void CStringNodeMapPort::Write(const void* buffer, std::int64_t address, std::int64_t length) {
    if (!port() || address != 0 || length < 0 || length > stringLength_) {
        return;
    }
    const auto size = static_cast<std::size_t>(length);
    const char* text = static_cast<const char*>(buffer);
    if (size > 0 && std::memchr(text, 0, size) != nullptr) {
        port()->writeValue(text, true);
        return;
    }
    // A text that fills the register comes without its terminator.
    std::vector<char> terminated(size + 1);
    std::copy_n(text, size, terminated.data());
    port()->writeValue(terminated.data(), true);
}

void CStringNodeMapPort::generateNode(std::ostream& out, bool ownPort, const gcstring& portName,
                                      const gcstring& prefix, std::int64_t& address) {
    if (!port()) {
        return;
    }
    NodeWriter writer(out, *port(), prefix + getName(), portName, address);
    writer.openValue("String", mergePriority(), dependencies("IsAvailable"),
                     dependencies("IsLocked"));
    writer.reference("pValue", "Value");
    writer.close("String");

    writer.textRegister(stringLength_, valueAccessMode(*port()), dependencies("Invalidator"));
    writer.stateRegisters(availabilityOffset(), lockOffset(), Sign::Unsigned);
    if (ownPort) {
        writer.port();
    }
    address += stringLength_ + 2 * wordSize;
}

}  // namespace AnythingToNodeMapAdapter::Detail
