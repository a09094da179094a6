// The pieces that the description of every node is made of. The description is a file format:
// lines, order and blanks are fixed. Numbers never pass through the stream's own formatting, so
// that no locale can group their digits. Texts are written as they stand, without escaping.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <vector>

#include "anythingtonodemapadapter/parameterports.h"
#include "gcbase/gcstring.h"

namespace AnythingToNodeMapAdapter::Detail {

using GenICam::gcstring;
using Names = std::vector<gcstring>;

// How far a line is indented.
enum class Indent { Node = 4, Element = 8, EntryElement = 12 };

enum class Sign { Signed, Unsigned };

[[nodiscard]] gcstring decimal(std::int64_t value);
// Lower-case, behind "0x", without padding.
[[nodiscard]] gcstring hexadecimal(std::int64_t value);
// The attribute with its leading blank; only the sign of the priority counts, 0 gives nothing.
[[nodiscard]] const char* mergeAttribute(std::int32_t mergePriority);

// One line `<element>text</element>`.
void writeElement(std::ostream& out, Indent indent, const char* element, const gcstring& text);
void writeElements(std::ostream& out, Indent indent, const char* element, const Names& texts);
// Tool tip, description and display name, as far as they are not empty.
void writeTexts(std::ostream& out, Indent indent, const IBasicParameterPort& parameter);
void writePort(std::ostream& out, const gcstring& portName, const gcstring& toolTip);

// Writes one node with its registers and port, in the order of the calls. Lives for one
// generateNode call; refers to the stream, the parameter and the port name.
class NodeWriter {
public:
    // `stem` is what the names of registers begin with, `start` the address of the block.
    NodeWriter(std::ostream& out, const IBasicDataParameterPort& parameter, gcstring stem,
               const gcstring& portName, std::int64_t start);

    // The node's first line, texts and visibility.
    void open(const char* kind, std::int32_t mergePriority);
    // The same for a parameter with a value, up to and with its place in the stream of settings.
    void openValue(const char* kind, std::int32_t mergePriority, const Names& availability,
                   const Names& lock);
    void close(const char* kind);

    // A reference to the parameter's own register if it has one, else to each of `names`.
    void availability(const Names& names);
    void lock(const Names& names);
    void element(const char* element, const gcstring& text);
    void elements(const char* element, const Names& texts);
    // A reference to one of the node's own registers.
    void reference(const char* element, const char* suffix);

    void valueRegister(const char* suffix, const char* accessMode, Sign sign,
                       const Names& invalidators);
    void readOnlyRegister(const char* suffix, std::int64_t offset, Sign sign);
    // Only if the parameter has such a register.
    void availabilityRegister(std::int64_t offset, Sign sign);
    void lockRegister(std::int64_t offset, Sign sign);
    // Both, in their order.
    void stateRegisters(std::int64_t availabilityOffset, std::int64_t lockOffset, Sign sign);
    void textRegister(std::int64_t length, const char* accessMode, const Names& invalidators);
    // The port that serves this node alone.
    void port();

private:
    void beginRegister(const char* kind, const char* suffix, std::int64_t offset,
                       const gcstring& length, const char* accessMode);
    void endIntegerRegister(Sign sign);

    std::ostream& out_;
    const IBasicDataParameterPort& parameter_;
    gcstring stem_;
    const gcstring& portName_;
    std::int64_t start_;
};

// "RO" for a value that can never be written; a lock register shows at run time instead.
[[nodiscard]] const char* valueAccessMode(const IBasicDataParameterPort& parameter);

}  // namespace AnythingToNodeMapAdapter::Detail
