// The values of the chunk pins of one frame.
#include "camera/cameraimpl.h"
#include "camera/containers.h"
#include "camera/log.h"
#include "genapi/inode.h"
#include "genapi/inodemap.h"
#include "orlixcamera/grabresultptr.h"
#include "orlixcamera/nodeparameter.h"
#include "orlixdataprocessingcore/core/array.h"

namespace Plugin::OrlixVCellPackageBase {

namespace Core = Orlix::DataProcessing::Core;
namespace Utils = Orlix::DataProcessing::Utils;
using Utils::COWPtr;
using Utils::DateTime;
using Utils::Variant;
using namespace CameraLog;

namespace {

std::shared_ptr<Core::IError> makeReadError() {
    return std::make_shared<Core::InvalidValueError>("Failed to get chunk data value.",
                                                     DateTime::now());
}

// What there is for each kind of chunk: its feature, and the value that goes out. The default of an
// array's elements is that of the value: 0, false, 0.0 or an empty text.
struct IntegerReader {
    using Parameter = Orlix::CIntegerParameter;
    using Value = Core::Integer;
};
struct BooleanReader {
    using Parameter = Orlix::CBooleanParameter;
    using Value = Core::Boolean;
};
struct FloatReader {
    using Parameter = Orlix::CFloatParameter;
    using Value = Core::Float;
};
struct StringReader {
    using Parameter = Orlix::CStringParameter;
    using Value = Core::String;
};

// A value that can't be read travels as an error.
template <typename Reader>
typename Reader::Value readValue(const typename Reader::Parameter& parameter) {
    try {
        return typename Reader::Value(parameter.GetValue(false, false));
    } catch (...) {
        return typename Reader::Value(makeReadError());
    }
}

template <typename Reader>
void readNode(Variant& variant, GenApi::INode* node, std::size_t index, std::size_t count) {
    using Value = typename Reader::Value;
    const typename Reader::Parameter parameter(node);
    if (count <= 1) {
        variant = COWPtr<Value>::make(readValue<Reader>(parameter));
        return;
    }
    if (!variant.isValid()) {
        variant = COWPtr<Core::Array<Value>>::make(count, Value());
    }
    variant.get<Core::Array<Value>>(true)->at(index) = readValue<Reader>(parameter);
}

void readAnyNode(Variant& variant, GenApi::INode* node, std::size_t index, std::size_t count) {
    switch (node->GetPrincipalInterfaceType()) {
        case GenApi::intfIInteger:
            readNode<IntegerReader>(variant, node, index, count);
            break;
        case GenApi::intfIBoolean:
            readNode<BooleanReader>(variant, node, index, count);
            break;
        case GenApi::intfIFloat:
            readNode<FloatReader>(variant, node, index, count);
            break;
        case GenApi::intfIString:
            readNode<StringReader>(variant, node, index, count);
            break;
        default:
            break;
    }
}

// Anew for every pin, since pins may share a selector. A bad text may have left a property without
// a value.
void setSelector(GenApi::INodeMap& chunks, const PinMapping& mapping) {
    const auto name = mapping.properties.find(PinProperty::SelectorName);
    if (name == mapping.properties.end()) {
        return;
    }
    const auto& values = getValue(mapping.properties, PinProperty::SelectorValue);
    Orlix::CEnumParameter(chunks, name->second.at(0)).SetValue(values.at(0));
}

// The element is always the first: of several values the last one that was read stays there.
constexpr std::size_t elementIndex = 0;

Variant readPin(GenApi::INodeMap& chunks, const PinMapping& mapping) {
    setSelector(chunks, mapping);
    Variant variant;
    const auto& names = getValue(mapping.properties, PinProperty::ValueName);
    for (const gcstring& name : names) {
        if (GenApi::INode* node = chunks.GetNode(name)) {
            readAnyNode(variant, node, elementIndex, names.size());
        }
    }
    return variant;
}

}  // namespace

// A chunk never stops the acquisition: a pin that can't be read is left out or empty.
void Camera::readChunkValues(const Orlix::CGrabResultPtr& grabResult, Core::PinValues& outputs) {
    if (!grabResult.IsValid() || !grabResult->IsChunkDataAvailable()) {
        return;
    }
    GenApi::INodeMap& chunks = grabResult->GetChunkDataNodeMap();
    const Guard guard = lockNode();
    for (const auto& [name, mapping] : impl_->chunkPinMappings) {
        try {
            outputs[name] = readPin(chunks, mapping);
        } catch (...) {
            createLogEntry(Severitiy::Information, category(),
                           "Camera %p: Failed to get chunk data value for \"%s\" pin.",
                           static_cast<const void*>(this), name.c_str());
        }
    }
}

}  // namespace Plugin::OrlixVCellPackageBase
