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

// Exact.
std::string textOf(double number) {
    char text[40];
    return {text, std::to_chars(std::begin(text), std::end(text), number).ptr};
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
        return textOf(number->GetValue());
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
std::string normalize(GenApi::INode& node, const std::string& value) {
    switch (node.GetPrincipalInterfaceType()) {
        case GenApi::intfIFloat: {
            const auto number = GenApi::FloatOfText(value);
            return number ? textOf(*number) : value;
        }
        case GenApi::intfIBoolean: {
            const auto truth = GenApi::BooleanOfText(value);
            return truth ? std::to_string(*truth) : value;
        }
        case GenApi::intfIInteger: {
            const auto number =
                GenApi::IntegerOfText(value, GenApi::CIntegerPtr(&node)->GetRepresentation());
            return number ? std::to_string(*number) : value;
        }
        case GenApi::intfIEnumeration:
            return std::string(GenApi::EntryOfText(value));
        case GenApi::intfIRegister: {
            const auto bytes = GenApi::BytesOfText(value);
            return bytes ? std::string(bytes->begin(), bytes->end()) : value;
        }
        default:
            return value;
    }
}

bool readsAs(GenApi::INode& node, const std::string& value) {
    if (node.GetPrincipalInterfaceType() == GenApi::intfIFloat) {
        const auto wanted = GenApi::FloatOfText(value);
        return wanted && isClose(GenApi::CFloatPtr(&node)->GetValue(), *wanted);
    }
    return normalize(node, readFeature(node)) == normalize(node, value);
}

}  // namespace Orlix
