#include "orlixcamera/persistence/featurevalue.h"

#include <charconv>
#include <cmath>

#include "genapi/pointer.h"
#include "genapi/valuetext.h"

namespace Orlix {

namespace {

// A float of four bytes holds seven digits.
constexpr double roundingOfDevices = 1e-6;

bool isClose(double found, double wanted) {
    return std::abs(found - wanted) <= roundingOfDevices * std::abs(wanted);
}

// What tells about one frame is no state of the device.
bool isInChunk(GenApi::INode& feature) {
    GenApi::INode* node = &feature;
    GenApi::NodeList_t links;
    // As long as any chain of values is.
    for (int depth = 0; depth < 64; ++depth) {
        node->GetChildren(links, GenApi::ctReadingChildren);
        for (GenApi::INode* const link : links) {
            const GenApi::CPortConstructPtr port(link);
            if (port.IsValid() && port->IsChunkPort()) {
                return true;
            }
        }
        node->GetChildren(links, GenApi::ctWritingChildren);
        if (links.empty()) {
            return false;
        }
        node = links.front();
    }
    return false;
}

}  // namespace

bool isPersistable(GenApi::INode& node) {
    const GenApi::EInterfaceType type = node.GetPrincipalInterfaceType();
    const bool hasValue = type == GenApi::intfIInteger || type == GenApi::intfIBoolean ||
                          type == GenApi::intfIFloat || type == GenApi::intfIString ||
                          type == GenApi::intfIRegister || type == GenApi::intfIEnumeration;
    return hasValue && node.GetAccessMode() == GenApi::RW && !isInChunk(node);
}

std::string readFeature(GenApi::INode& node) {
    const GenApi::CFloatPtr number(&node);
    if (node.GetPrincipalInterfaceType() == GenApi::intfIFloat && number.IsValid()) {
        char text[40];
        const auto end = std::to_chars(std::begin(text), std::end(text), number->GetValue()).ptr;
        return {text, end};
    }
    return GenApi::CValuePtr(&node)->ToString().str();
}

bool canBeWritten(GenApi::INode& node, const std::string& value) {
    return node.GetPrincipalInterfaceType() != GenApi::intfIFloat ||
           GenApi::FloatOfText(value).has_value();
}

void writeFeature(GenApi::INode& node, const std::string& value) {
    GenApi::CValuePtr(&node)->FromString(GenICam::gcstring(value));
}

// People write values in other ways than devices.
bool readsAs(GenApi::INode& node, const std::string& value) {
    switch (node.GetPrincipalInterfaceType()) {
        case GenApi::intfIFloat: {
            const auto wanted = GenApi::FloatOfText(value);
            return wanted && isClose(GenApi::CFloatPtr(&node)->GetValue(), *wanted);
        }
        case GenApi::intfIBoolean:
            return GenApi::CBooleanPtr(&node)->GetValue() == GenApi::BooleanOfText(value);
        case GenApi::intfIInteger: {
            const GenApi::CIntegerPtr number(&node);
            return number->GetValue() == GenApi::IntegerOfText(value, number->GetRepresentation());
        }
        case GenApi::intfIEnumeration:
            return readFeature(node) == GenApi::EntryOfText(value);
        case GenApi::intfIRegister:
            return GenApi::BytesOfText(readFeature(node)) == GenApi::BytesOfText(value);
        default:
            return readFeature(node) == value;
    }
}

}  // namespace Orlix
