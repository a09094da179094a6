#include "orlixcamera/persistence/featurevalue.h"

#include <charconv>
#include <cmath>
#include <string_view>

#include "gcbase/gcexception.h"
#include "genapi/pointer.h"

namespace Orlix {

namespace {

// A float of four bytes holds seven digits.
constexpr double roundingOfDevices = 1e-6;

double parseFloat(GenApi::INode& node, const std::string& text) {
    double value = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || stop != end) {
        throw GenICam::InvalidArgumentException(
            ("\"" + text + "\" is no value of " + node.GetName().str() + ".").c_str(), __FILE__,
            __LINE__);
    }
    return value;
}

bool parseInteger(std::string_view text, std::int64_t& value) {
    const bool isHex = text.starts_with("0x") || text.starts_with("0X");
    text.remove_prefix(isHex ? 2 : 0);
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value, isHex ? 16 : 10);
    return error == std::errc() && stop == end && !text.empty();
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
           std::isfinite(parseFloat(node, value));
}

void writeFeature(GenApi::INode& node, const std::string& value) {
    const GenApi::CFloatPtr number(&node);
    if (node.GetPrincipalInterfaceType() == GenApi::intfIFloat && number.IsValid()) {
        number->SetValue(parseFloat(node, value));
    } else {
        GenApi::CValuePtr(&node)->FromString(GenICam::gcstring(value));
    }
}

bool readsAs(GenApi::INode& node, const std::string& value) {
    switch (node.GetPrincipalInterfaceType()) {
        case GenApi::intfIFloat: {
            const double wanted = parseFloat(node, value);
            const double found = GenApi::CFloatPtr(&node)->GetValue();
            return std::abs(found - wanted) <= roundingOfDevices * std::abs(wanted);
        }
        case GenApi::intfIBoolean:
            return GenApi::CBooleanPtr(&node)->GetValue() ==
                   (value == "1" || value == "true" || value == "True");
        default:
            break;
    }
    if (readFeature(node) == value) {
        return true;
    }
    // People write numbers in other ways than devices.
    std::int64_t wanted = 0;
    return node.GetPrincipalInterfaceType() == GenApi::intfIInteger &&
           parseInteger(value, wanted) && GenApi::CIntegerPtr(&node)->GetValue() == wanted;
}

}  // namespace Orlix
