#include "anythingtonodemapadapter/descriptiontext.h"

#include <array>
#include <charconv>
#include <ostream>
#include <string_view>
#include <utility>

namespace AnythingToNodeMapAdapter::Detail {

namespace {

constexpr auto readOnly = "RO";
constexpr auto readWrite = "RW";

gcstring number(std::int64_t value, int base, const char* before) {
    std::array<char, 24> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value, base).ptr;
    gcstring text(before);
    return text += gcstring(std::string_view(digits.data(), end));
}

const char* blanks(Indent indent) {
    switch (indent) {
        case Indent::Node:
            return "    ";
        case Indent::Element:
            return "        ";
        case Indent::EntryElement:
            break;
    }
    return "            ";
}

void writeText(std::ostream& out, Indent indent, const char* element, const gcstring& text) {
    if (!text.empty()) {
        writeElement(out, indent, element, text);
    }
}

}  // namespace

gcstring decimal(std::int64_t value) {
    return number(value, 10, "");
}

gcstring hexadecimal(std::int64_t value) {
    return number(value, 16, "0x");
}

const char* mergeAttribute(std::int32_t mergePriority) {
    if (mergePriority == 0) {
        return "";
    }
    return mergePriority > 0 ? " MergePriority=\"+1\"" : " MergePriority=\"-1\"";
}

void writeElement(std::ostream& out, Indent indent, const char* element, const gcstring& text) {
    out << blanks(indent) << '<' << element << '>' << text << "</" << element << ">\n";
}

void writeElements(std::ostream& out, Indent indent, const char* element, const Names& texts) {
    for (const gcstring& text : texts) {
        writeElement(out, indent, element, text);
    }
}

void writeTexts(std::ostream& out, Indent indent, const IBasicParameterPort& parameter) {
    writeText(out, indent, "ToolTip", parameter.getToolTip());
    writeText(out, indent, "Description", parameter.getDescription());
    writeText(out, indent, "DisplayName", parameter.getDisplayName());
}

void writePort(std::ostream& out, const gcstring& portName, const gcstring& toolTip) {
    out << "    <Port Name = \"" << portName << "\">\n";
    writeElement(out, Indent::Element, "ToolTip", toolTip);
    out << "    </Port>\n";
}

NodeWriter::NodeWriter(std::ostream& out, const IBasicDataParameterPort& parameter, gcstring stem,
                       const gcstring& portName, std::int64_t start)
    : out_(out),
      parameter_(parameter),
      stem_(std::move(stem)),
      portName_(portName),
      start_(start) {}

void NodeWriter::open(const char* kind, std::int32_t mergePriority) {
    // The node bears the bare name; only what hangs below it bears the prefix too.
    out_ << "    <" << kind << " Name=\"" << parameter_.getName() << '"'
         << mergeAttribute(mergePriority) << ">\n";
    writeTexts(out_, Indent::Element, parameter_);
    element("Visibility", parameter_.getVisibility());
}

void NodeWriter::openValue(const char* kind, std::int32_t mergePriority, const Names& availability,
                           const Names& lock) {
    open(kind, mergePriority);
    this->availability(availability);
    this->lock(lock);
    element("Streamable", "Yes");
}

void NodeWriter::close(const char* kind) {
    out_ << "    </" << kind << ">\n";
}

void NodeWriter::availability(const Names& names) {
    if (parameter_.hasAvailabilityRegister()) {
        reference("pIsAvailable", "IsAvailable");
    } else {
        elements("pIsAvailable", names);
    }
}

void NodeWriter::lock(const Names& names) {
    if (parameter_.hasLockRegister()) {
        reference("pIsLocked", "IsLocked");
    } else {
        elements("pIsLocked", names);
    }
}

void NodeWriter::element(const char* element, const gcstring& text) {
    writeElement(out_, Indent::Element, element, text);
}

void NodeWriter::elements(const char* element, const Names& texts) {
    writeElements(out_, Indent::Element, element, texts);
}

void NodeWriter::reference(const char* element, const char* suffix) {
    writeElement(out_, Indent::Element, element, stem_ + suffix);
}

void NodeWriter::valueRegister(const char* suffix, const char* accessMode, Sign sign,
                               const Names& invalidators) {
    beginRegister("IntReg", suffix, 0, "8", accessMode);
    elements("pInvalidator", invalidators);
    endIntegerRegister(sign);
}

void NodeWriter::readOnlyRegister(const char* suffix, std::int64_t offset, Sign sign) {
    beginRegister("IntReg", suffix, offset, "8", readOnly);
    endIntegerRegister(sign);
}

void NodeWriter::availabilityRegister(std::int64_t offset, Sign sign) {
    if (parameter_.hasAvailabilityRegister()) {
        readOnlyRegister("IsAvailable", offset, sign);
    }
}

void NodeWriter::lockRegister(std::int64_t offset, Sign sign) {
    if (parameter_.hasLockRegister()) {
        readOnlyRegister("IsLocked", offset, sign);
    }
}

void NodeWriter::stateRegisters(std::int64_t availabilityOffset, std::int64_t lockOffset,
                                Sign sign) {
    availabilityRegister(availabilityOffset, sign);
    lockRegister(lockOffset, sign);
}

void NodeWriter::textRegister(std::int64_t length, const char* accessMode,
                              const Names& invalidators) {
    beginRegister("StringReg", "Value", 0, decimal(length), accessMode);
    elements("pInvalidator", invalidators);
    close("StringReg");
}

void NodeWriter::port() {
    writePort(out_, portName_,
              gcstring("Port node giving access to ") + parameter_.getName() + " parameter.");
}

void NodeWriter::beginRegister(const char* kind, const char* suffix, std::int64_t offset,
                               const gcstring& length, const char* accessMode) {
    out_ << "    <" << kind << " Name=\"" << stem_ << suffix << "\">\n";
    element("Visibility", parameter_.getVisibility());
    element("Address", hexadecimal(start_ + offset));
    element("Length", length);
    element("AccessMode", accessMode);
    element("pPort", portName_);
    element("Cachable", "NoCache");
}

void NodeWriter::endIntegerRegister(Sign sign) {
    element("Sign", sign == Sign::Signed ? "Signed" : "Unsigned");
    element("Endianess", "LittleEndian");
    close("IntReg");
}

const char* valueAccessMode(const IBasicDataParameterPort& parameter) {
    return parameter.hasLockRegister() || parameter.isWritable() ? readWrite : readOnly;
}

}  // namespace AnythingToNodeMapAdapter::Detail
